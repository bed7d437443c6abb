#include "codesign/SignedMessage.h"

#include "codesign/ObjectIdentifiers.h"

#include <algorithm>

namespace quorvane::codesign {

std::vector<Certificate> certificatesOf(const CmsMessage& message)
{
    std::vector<Certificate> certificates;
    for (const ByteView encoding : message.certificates) {
        if (const auto certificate = Certificate::parse(encoding))
            certificates.push_back(*certificate);
    }
    return certificates;
}

std::optional<Certificate> certificateOf(
    const CmsSigner& signer, const std::vector<Certificate>& certificates)
{
    const bool byKey = !signer.keyIdentifier.empty();
    const auto name = byKey ? std::nullopt : CertificateName::parse(signer.issuer, signer.serial);
    const auto found = std::find_if(certificates.begin(), certificates.end(), [&](const Certificate& one) {
        return byKey ? one.hasKeyIdentifier(signer.keyIdentifier) : name && one.isNamed(*name);
    });
    return found == certificates.end() ? std::nullopt : std::optional(*found);
}

SignatureCheck checkSigner(const CmsSigner& signer, ByteView content, const Certificate& certificate)
{
    if (!signer.hash || !signer.keyKind)
        return SignatureCheck::unsupported;
    if (!signer.signedAttributes)
        return certificate.verify(*signer.keyKind, *signer.hash, content, signer.signature);

    const auto values = signer.signedAttribute(oid::messageDigest);
    const auto digest = BerReader(values.value_or(ByteView())).next(berTag::octetString);
    if (!digest || !(hashOf(*signer.hash, content).view() == digest->content))
        return SignatureCheck::wrong;
    const ByteView standing = signer.signedAttributes->whole;
    Bytes attributes(standing.begin(), standing.end());
    attributes.front() = berTag::set; // the signature covers the set, not the tagged field around it
    return certificate.verify(*signer.keyKind, *signer.hash, attributes, signer.signature);
}

} // namespace quorvane::codesign
