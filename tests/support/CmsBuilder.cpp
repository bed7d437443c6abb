#include "tests/support/CmsBuilder.h"

#include "tests/support/ByteWriter.h"

#include <algorithm>
#include <stdexcept>

#include <openssl/objects.h>

namespace quorvane::test {

namespace {

const char* const hashNames[] = {"", "SHA1", "SHA256", "SHA256", "SHA384"};
constexpr std::size_t listedLength = 20;

codesign::Bytes digest(const char* hash, codesign::ByteView data)
{
    codesign::Bytes value(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    EVP_Digest(data.data(), data.size(), value.data(), &length, EVP_get_digestbyname(hash), nullptr);
    value.resize(length);
    return value;
}

codesign::Bytes hashIdentifier(const std::string& hash)
{
    if (hash == "SHA1")
        return objectIdentifier("1.3.14.3.2.26");
    return objectIdentifier(hash == "SHA256" ? "2.16.840.1.101.3.4.2.1" : "2.16.840.1.101.3.4.2.2");
}

codesign::Bytes signatureOver(const Identity& signer, const char* hash, codesign::ByteView message)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    codesign::Bytes signature(static_cast<std::size_t>(EVP_PKEY_get_size(signer.key.get())));
    std::size_t length = signature.size();
    if (EVP_DigestSignInit(context.get(), nullptr, EVP_get_digestbyname(hash), nullptr, signer.key.get()) != 1
        || EVP_DigestSign(context.get(), signature.data(), &length, message.data(), message.size()) != 1)
        throw std::runtime_error("not signed");
    signature.resize(length);
    return signature;
}

codesign::Bytes nameOf(const Identity& identity)
{
    codesign::Bytes serial(64);
    unsigned char* at = serial.data();
    serial.resize(
        static_cast<std::size_t>(i2d_ASN1_INTEGER(X509_get0_serialNumber(identity.certificate.get()), &at)));
    const X509_NAME* issuer = X509_get_issuer_name(identity.certificate.get());
    codesign::Bytes name(static_cast<std::size_t>(i2d_X509_NAME(issuer, nullptr)));
    at = name.data();
    i2d_X509_NAME(issuer, &at);
    return elementOf(0x30, {name, serial});
}

codesign::Bytes wrap(std::uint8_t tag, const std::vector<codesign::Bytes>& parts, bool indefinite)
{
    if (!indefinite)
        return elementOf(tag, parts);
    codesign::Bytes bytes{tag, 0x80};
    for (const codesign::Bytes& part : parts)
        append(bytes, part);
    bytes.resize(bytes.size() + 2);
    return bytes;
}

struct SignerPlan {
    const Identity& identity;
    const char* hash;
    std::vector<codesign::Bytes> attributes; // none: the content itself is signed
    std::function<std::optional<codesign::Bytes>(const codesign::Bytes& signature)> unsignedAttribute;
    codesign::Bytes keyIdentifier{}; // empty: identified by issuer and serial number
};

codesign::Bytes signerInfo(const SignerPlan& plan, codesign::ByteView content)
{
    const codesign::Bytes hash = elementOf(0x30, {hashIdentifier(plan.hash), {0x05, 0x00}});
    const codesign::Bytes rsa = elementOf(0x30, {objectIdentifier("1.2.840.113549.1.1.1"), {0x05, 0x00}});
    const codesign::Bytes ecdsa = elementOf(0x30, {objectIdentifier("1.2.840.10045.4.3.2")});
    const bool usesRsa = EVP_PKEY_is_a(plan.identity.key.get(), "RSA") == 1;
    const codesign::Bytes name
        = plan.keyIdentifier.empty() ? nameOf(plan.identity) : element(0x80, plan.keyIdentifier);
    std::vector<codesign::Bytes> parts{{0x02, 0x01, 0x01}, name, hash};
    codesign::Bytes toSign(content.begin(), content.end());
    if (!plan.attributes.empty()) {
        toSign = elementOf(0x31, plan.attributes);
        parts.push_back(elementOf(0xa0, plan.attributes));
    }
    const codesign::Bytes signature = signatureOver(plan.identity, plan.hash, toSign);
    parts.push_back(usesRsa ? rsa : ecdsa);
    parts.push_back(element(0x04, signature));
    if (const auto more = plan.unsignedAttribute ? plan.unsignedAttribute(signature) : std::nullopt)
        parts.push_back(element(0xa1, *more));
    return elementOf(0x30, parts);
}

codesign::Bytes message(const codesign::Bytes& contentInfo, const std::vector<Identity>& certificates,
    const codesign::Bytes& signer, const char* hash, bool indefinite)
{
    std::vector<codesign::Bytes> encoded;
    encoded.reserve(certificates.size());
    for (const Identity& identity : certificates)
        encoded.push_back(identity.encoded());
    const codesign::Bytes hashes = elementOf(0x31, {elementOf(0x30, {hashIdentifier(hash)})});
    const codesign::Bytes data = wrap(0x30,
        {{0x02, 0x01, 0x01}, hashes, contentInfo, wrap(0xa0, encoded, indefinite), element(0x31, signer)},
        indefinite);
    return wrap(0x30, {objectIdentifier("1.2.840.113549.1.7.2"), wrap(0xa0, {data}, indefinite)}, indefinite);
}

codesign::Bytes stampToken(const StampPlan& plan, const codesign::Bytes& signature)
{
    const codesign::Bytes hash = elementOf(0x30, {hashIdentifier("SHA256"), {0x05, 0x00}});
    const codesign::Bytes imprint = element(0x04, digest("SHA256", plan.imprinted.value_or(signature)));
    std::vector<codesign::Bytes> parts{{0x02, 0x01, 0x01}, objectIdentifier("1.2.3.4"),
        elementOf(0x30, {hash, imprint}), {0x02, 0x01, 0x07}, element(0x18, bytesOf(plan.time))};
    if (plan.alterRecord)
        plan.alterRecord(parts);
    const codesign::Bytes record = elementOf(0x30, parts);
    const std::string& type = plan.contentType;
    const codesign::Bytes contentInfo
        = elementOf(0x30, {objectIdentifier(type), element(0xa0, elementOf(0x24, {element(0x04, record)}))});
    const SignerPlan signer{plan.stamper, "SHA1",
        {attribute("1.2.840.113549.1.9.3", {objectIdentifier(type)}),
            attribute("1.2.840.113549.1.9.4", {element(0x04, digest("SHA1", record))})},
        nullptr};
    codesign::Bytes token
        = message(contentInfo, plan.certificates, signerInfo(signer, record), "SHA1", false);
    if (plan.alterToken)
        plan.alterToken(token);
    return token;
}

codesign::Bytes propertyList(const std::vector<codesign::Bytes>& directories)
{
    std::vector<const codesign::Bytes*> sorted;
    sorted.reserve(directories.size());
    for (const codesign::Bytes& one : directories)
        sorted.push_back(&one);
    std::sort(sorted.begin(), sorted.end(),
        [](const codesign::Bytes* a, const codesign::Bytes* b) { return (*a)[37] < (*b)[37]; });
    std::string list = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>cdhashes</key><array>";
    for (const codesign::Bytes* one : sorted) {
        const codesign::Bytes hash = digest(hashNames[(*one)[37]], *one);
        list += "<data>" + base64(codesign::ByteView(hash.data(), listedLength)) + "</data>";
    }
    return bytesOf(list + "</array></dict></plist>");
}

std::vector<codesign::Bytes> hashSet(const std::vector<codesign::Bytes>& directories, bool unsorted)
{
    std::vector<codesign::Bytes> values;
    for (const codesign::Bytes& one : directories) {
        const char* hash = hashNames[one[37]];
        values.push_back(elementOf(0x30, {hashIdentifier(hash), element(0x04, digest(hash, one))}));
    }
    std::sort(values.begin(), values.end());
    if (unsorted)
        std::reverse(values.begin(), values.end());
    return values;
}

} // namespace

codesign::Bytes element(std::uint8_t tag, codesign::ByteView contents)
{
    codesign::Bytes bytes{tag};
    if (contents.size() < 0x80) {
        bytes.push_back(static_cast<std::uint8_t>(contents.size()));
    } else {
        bytes.push_back(0x83);
        putNumber(bytes, 2, contents.size(), 3, codesign::ByteOrder::big);
    }
    append(bytes, contents);
    return bytes;
}

codesign::Bytes elementOf(std::uint8_t tag, const std::vector<codesign::Bytes>& parts)
{
    codesign::Bytes contents;
    for (const codesign::Bytes& part : parts)
        append(contents, part);
    return element(tag, contents);
}

codesign::Bytes objectIdentifier(const std::string& dots)
{
    const std::unique_ptr<ASN1_OBJECT, decltype(&ASN1_OBJECT_free)> object(
        OBJ_txt2obj(dots.c_str(), 1), ASN1_OBJECT_free);
    return element(0x06, codesign::ByteView(OBJ_get0_data(object.get()), OBJ_length(object.get())));
}

std::string base64(codesign::ByteView bytes)
{
    std::string text(bytes.size() * 2 + 4, '\0');
    const int length = EVP_EncodeBlock(
        reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

codesign::Bytes attribute(const std::string& identifier, const std::vector<codesign::Bytes>& values)
{
    return elementOf(0x30, {objectIdentifier(identifier), elementOf(0x31, values)});
}

codesign::Bytes makeCms(const CmsPlan& plan, const std::vector<codesign::Bytes>& directories)
{
    std::vector<codesign::Bytes> attributes;
    if (plan.signedAttributes) {
        attributes.push_back(attribute("1.2.840.113549.1.9.3", {objectIdentifier("1.2.840.113549.1.7.1")}));
        attributes.push_back(
            attribute("1.2.840.113549.1.9.4", {element(0x04, digest(plan.hash, directories.front()))}));
        if (plan.listAsPropertyList)
            attributes.push_back(
                attribute("1.2.840.113635.100.9.1", {element(0x04, propertyList(directories))}));
        if (plan.listAsSet)
            attributes.push_back(attribute("1.2.840.113635.100.9.2", hashSet(directories, plan.setUnsorted)));
    }
    if (plan.alter)
        plan.alter(attributes);
    const SignerPlan signer{plan.signer, plan.hash, attributes,
        [&](const codesign::Bytes& signature) -> std::optional<codesign::Bytes> {
            if (!plan.stamp)
                return std::nullopt;
            return attribute("1.2.840.113549.1.9.16.2.14", {stampToken(*plan.stamp, signature)});
        },
        plan.signerKeyIdentifier};
    const codesign::Bytes contentInfo = elementOf(0x30, {objectIdentifier("1.2.840.113549.1.7.1")});
    return message(contentInfo, plan.certificates, signerInfo(signer, directories.front()), plan.hash,
        plan.indefiniteLengths);
}

} // namespace quorvane::test
