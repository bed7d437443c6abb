#include "codesign/CmsMessage.h"

#include "codesign/ObjectIdentifiers.h"

namespace quorvane::codesign {

namespace {

constexpr std::size_t mostCertificates = 100;
constexpr std::size_t largestMessage = 1U << 20U; // bytes

// The object identifier of SEQUENCE { identifier, parameters }.
std::optional<ByteView> algorithmIdentifier(BerReader& reader)
{
    const auto algorithm = reader.next(berTag::sequence);
    if (!algorithm)
        return std::nullopt;
    const auto identifier = BerReader(algorithm->content).next(berTag::objectIdentifier);
    return identifier ? std::optional(identifier->content) : std::nullopt;
}

bool readSignerName(BerReader& reader, CmsSigner& signer)
{
    if (const auto key = reader.next(berTag::primitiveContext0)) {
        signer.keyIdentifier = key->content;
        return true;
    }
    const auto name = reader.next(berTag::sequence);
    if (!name)
        return false;
    BerReader parts(name->content);
    const auto issuer = parts.next(berTag::sequence);
    const auto serial = parts.next(berTag::integer);
    if (!issuer || !serial)
        return false;
    signer.issuer = issuer->whole;
    signer.serial = serial->whole;
    return true;
}

std::optional<CmsSigner> readSigner(ByteView contents)
{
    CmsSigner signer;
    BerReader reader(contents);
    if (!reader.next(berTag::integer) || !readSignerName(reader, signer))
        return std::nullopt;
    const auto hash = algorithmIdentifier(reader);
    signer.signedAttributes = reader.next(berTag::context0);
    const auto algorithm = algorithmIdentifier(reader);
    const auto signature = reader.next(berTag::octetString);
    if (!hash || !algorithm || !signature)
        return std::nullopt;
    signer.hash = hashAlgorithmOf(*hash);
    signer.keyKind = keyKindOf(*algorithm);
    signer.signature = signature->content;
    if (const auto attributes = reader.next(berTag::context1))
        signer.unsignedAttributes = attributes->content;
    return signer;
}

bool readContent(BerReader& reader, CmsMessage& message)
{
    const auto info = reader.next(berTag::sequence);
    if (!info)
        return false;
    BerReader parts(info->content);
    const auto type = parts.next(berTag::objectIdentifier);
    if (!type)
        return false;
    message.contentType = type->content;
    const auto wrapped = parts.next(berTag::context0);
    if (!wrapped)
        return parts.atEnd();
    const auto content = BerReader(wrapped->content).next();
    message.content = content ? octets(*content) : std::nullopt;
    return message.content.has_value();
}

bool readCertificates(BerReader& reader, CmsMessage& message)
{
    const auto set = reader.next(berTag::context0);
    BerReader certificates(set ? set->content : ByteView());
    while (!certificates.atEnd()) {
        const auto certificate = certificates.next();
        if (!certificate || message.certificates.size() == mostCertificates)
            return false;
        // The other choices are forms of certificates that signatures do not use.
        if (certificate->tag == berTag::sequence)
            message.certificates.push_back(certificate->whole);
    }
    return true;
}

bool readFirstSigner(BerReader& reader, CmsMessage& message)
{
    const auto set = reader.next(berTag::set);
    if (!set)
        return false;
    BerReader signers(set->content);
    if (signers.atEnd())
        return true;
    const auto first = signers.next(berTag::sequence);
    message.signer = first ? readSigner(first->content) : std::nullopt;
    return message.signer.has_value();
}

std::optional<ByteView> attributeValues(ByteView attributes, std::string_view objectIdentifier)
{
    BerReader reader(attributes);
    while (const auto attribute = reader.next(berTag::sequence)) {
        BerReader parts(attribute->content);
        const auto identifier = parts.next(berTag::objectIdentifier);
        const auto values = parts.next(berTag::set);
        if (identifier && values && identifier->content.text() == objectIdentifier)
            return values->content;
    }
    return std::nullopt;
}

} // namespace

std::optional<ByteView> CmsSigner::signedAttribute(std::string_view objectIdentifier) const
{
    return signedAttributes ? attributeValues(signedAttributes->content, objectIdentifier) : std::nullopt;
}

std::optional<ByteView> CmsSigner::unsignedAttribute(std::string_view objectIdentifier) const
{
    return attributeValues(unsignedAttributes, objectIdentifier);
}

std::optional<CmsMessage> parseCms(ByteView bytes)
{
    if (bytes.size() > largestMessage)
        return std::nullopt;
    const auto info = BerReader(bytes).next(berTag::sequence);
    BerReader infoParts(info ? info->content : ByteView());
    const auto type = infoParts.next(berTag::objectIdentifier);
    const auto wrapped = infoParts.next(berTag::context0);
    if (!type || type->content.text() != oid::signedData || !wrapped)
        return std::nullopt;
    const auto signedData = BerReader(wrapped->content).next(berTag::sequence);
    BerReader parts(signedData ? signedData->content : ByteView());
    CmsMessage message;
    if (!parts.next(berTag::integer) || !parts.next(berTag::set) || !readContent(parts, message)
        || !readCertificates(parts, message))
        return std::nullopt;
    parts.next(berTag::context1); // revocation lists, which are not used
    return readFirstSigner(parts, message) ? std::optional(std::move(message)) : std::nullopt;
}

} // namespace quorvane::codesign
