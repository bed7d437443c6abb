#pragma once

#include "codesign/Certificate.h"
#include "codesign/CmsMessage.h"

#include <optional>
#include <vector>

namespace quorvane::codesign {

// The certificates of a message that can be read.
std::vector<Certificate> certificatesOf(const CmsMessage& message);

// The certificate that the signer names; none when it is not among `certificates`.
std::optional<Certificate> certificateOf(
    const CmsSigner& signer, const std::vector<Certificate>& certificates);

// Checks that the owner of `certificate` signed `content`: by the digest among the signed attributes and the
// signature over those as they stand in the file, or by a signature over the content itself.
//
// The attributes are not encoded again: genuine signatures hold values in an order that encoding would
// change.
SignatureCheck checkSigner(const CmsSigner& signer, ByteView content, const Certificate& certificate);

} // namespace quorvane::codesign
