#pragma once

#include "codesign/Certificate.h"
#include "codesign/CmsMessage.h"

#include <optional>
#include <vector>

namespace quorvane::codesign {

// The readable certificates of a message.
std::vector<Certificate> certificatesOf(const CmsMessage& message);

// The certificate that the signer names; none when it is not among `certificates`.
std::optional<Certificate> certificateOf(
    const CmsSigner& signer, const std::vector<Certificate>& certificates);

// Checks that the owner of `certificate` signed `content`: by the digest among the signed attributes and the
// signature over these as encoded in the file, or by a signature over the content itself.
//
// The attributes are not re-encoded: genuine signatures have values in an order that encoding would change.
SignatureCheck checkSigner(const CmsSigner& signer, ByteView content, const Certificate& certificate);

} // namespace quorvane::codesign
