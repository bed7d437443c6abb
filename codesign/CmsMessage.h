#pragma once

#include "codesign/Ber.h"
#include "codesign/Certificate.h"
#include "codesign/Hasher.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::codesign {

// The signer of a CMS message, undigested.
struct CmsSigner {
    ByteView issuer; // name and serial number of the signer's certificate, each as a whole element; or:
    ByteView serial;
    ByteView keyIdentifier;
    std::optional<HashAlgorithm> hash; // none for one that is not known here
    std::optional<KeyKind> keyKind; // of the key that signed; none for one that is not used here
    std::optional<BerElement> signedAttributes;
    ByteView unsignedAttributes;
    ByteView signature;

    // The contents of the set of values of a signed or unsigned attribute; none when there is none.
    std::optional<ByteView> signedAttribute(std::string_view objectIdentifier) const;
    std::optional<ByteView> unsignedAttribute(std::string_view objectIdentifier) const;
};

// A CMS message with signed data, taken apart but not judged. Views of the bytes it was parsed from.
struct CmsMessage {
    ByteView contentType;
    std::optional<Bytes> content; // none when the signed bytes are kept elsewhere
    std::vector<ByteView> certificates; // each a whole element
    std::optional<CmsSigner> signer; // the first; none when nobody signed
};

// None when the bytes are no such message, are more than a mebibyte, or carry more than a hundred
// certificates. Genuine messages take a few kilobytes.
std::optional<CmsMessage> parseCms(ByteView bytes);

} // namespace quorvane::codesign
