#pragma once

#include "codesign/Ber.h"
#include "codesign/Certificate.h"
#include "codesign/Hasher.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::codesign {

// The signer of a CMS message, parsed but not checked.
struct CmsSigner {
    ByteView issuer; // name and serial number of the signer's certificate, each as a complete element; or:
    ByteView serial;
    ByteView keyIdentifier;
    std::optional<HashAlgorithm> hash; // none when not supported
    std::optional<KeyKind> keyKind; // of the signing key; none when not supported
    std::optional<BerElement> signedAttributes;
    ByteView unsignedAttributes;
    ByteView signature;

    // The contents of the set of values of a signed or unsigned attribute; none when there is none.
    std::optional<ByteView> signedAttribute(std::string_view objectIdentifier) const;
    std::optional<ByteView> unsignedAttribute(std::string_view objectIdentifier) const;
};

// A CMS message with signed data, parsed but not checked. Views of the bytes it was parsed from.
struct CmsMessage {
    ByteView contentType;
    std::optional<Bytes> content; // none for a detached signature
    std::vector<ByteView> certificates; // each a complete element
    std::optional<CmsSigner> signer; // the first; none when there is none
};

// None when the bytes are not such a message, are more than a mebibyte, or contain more than a hundred
// certificates. Genuine messages take a few kilobytes.
std::optional<CmsMessage> parseCms(ByteView bytes);

} // namespace quorvane::codesign
