#include "tests/support/TestCertificates.h"

#include <map>
#include <stdexcept>
#include <utility>

#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace quorvane::test {

namespace {

void require(bool done)
{
    if (!done)
        throw std::runtime_error("a test certificate could not be made");
}

void addName(X509_NAME* name, const char* part, const std::optional<std::string>& text)
{
    if (text)
        require(
            X509_NAME_add_entry_by_txt(name, part, MBSTRING_UTF8,
                reinterpret_cast<const unsigned char*>(text->data()), static_cast<int>(text->size()), -1, 0)
            == 1);
}

void addExtension(X509* certificate, int kind, const std::string& value)
{
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
    require(extension != nullptr && X509_add_ext(certificate, extension, -1) == 1);
    X509_EXTENSION_free(extension);
}

void addUnknown(X509* certificate, const std::string& identifier, bool critical, const std::string& contents)
{
    ASN1_OBJECT* object = OBJ_txt2obj(identifier.c_str(), 1);
    ASN1_OCTET_STRING* bytes = ASN1_OCTET_STRING_new();
    ASN1_OCTET_STRING_set(
        bytes, reinterpret_cast<const unsigned char*>(contents.data()), static_cast<int>(contents.size()));
    X509_EXTENSION* extension = X509_EXTENSION_create_by_OBJ(nullptr, object, critical ? 1 : 0, bytes);
    require(X509_add_ext(certificate, extension, -1) == 1);
    X509_EXTENSION_free(extension);
    ASN1_OCTET_STRING_free(bytes);
    ASN1_OBJECT_free(object);
}

} // namespace

codesign::Bytes Identity::encoded() const
{
    codesign::Bytes bytes(static_cast<std::size_t>(i2d_X509(certificate.get(), nullptr)));
    unsigned char* at = bytes.data();
    i2d_X509(certificate.get(), &at);
    return bytes;
}

std::shared_ptr<EVP_PKEY> testKey(int number, int bits)
{
    static std::map<std::pair<int, int>, std::shared_ptr<EVP_PKEY>> keys;
    auto& key = keys[{number, bits}];
    if (!key)
        key.reset(EVP_RSA_gen(static_cast<unsigned>(bits)), EVP_PKEY_free);
    require(key != nullptr);
    return key;
}

std::shared_ptr<EVP_PKEY> testCurveKey(const char* curve)
{
    static std::map<std::string, std::shared_ptr<EVP_PKEY>> keys;
    auto& key = keys[curve];
    if (!key)
        key.reset(EVP_EC_gen(curve), EVP_PKEY_free);
    require(key != nullptr);
    return key;
}

Identity makeIdentity(
    const std::shared_ptr<EVP_PKEY>& key, const CertificatePlan& plan, const Identity* issuer)
{
    static long serial = 1000;
    const std::shared_ptr<X509> certificate(X509_new(), X509_free);
    X509* x = certificate.get();
    X509_set_version(x, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(x), ++serial);
    X509_NAME* name = X509_get_subject_name(x);
    addName(name, "CN", plan.commonName);
    addName(name, "OU", plan.organizationalUnit);
    addName(name, "O", plan.organization);
    X509_set_issuer_name(x, issuer == nullptr ? name : X509_get_subject_name(issuer->certificate.get()));
    require(ASN1_TIME_set_string_X509(X509_getm_notBefore(x), plan.from.c_str()) == 1);
    require(ASN1_TIME_set_string_X509(X509_getm_notAfter(x), plan.until.c_str()) == 1);
    X509_set_pubkey(x, key.get());
    if (plan.authority)
        addExtension(x, NID_basic_constraints, "critical,CA:TRUE");
    if (!plan.extendedUsage.empty())
        addExtension(x, NID_ext_key_usage, plan.extendedUsage);
    if (!plan.keyIdentifier.empty())
        addExtension(x, NID_subject_key_identifier, plan.keyIdentifier);
    if (!plan.criticalExtension.empty())
        addUnknown(x, plan.criticalExtension, true, std::string("\x05\x00", 2));
    if (plan.padding > 0)
        addUnknown(x, "1.2.3.4.5", false, std::string(plan.padding, 'x'));
    EVP_PKEY* signingKey = issuer == nullptr ? key.get() : issuer->key.get();
    require(X509_sign(x, signingKey, EVP_get_digestbyname(plan.hash)) > 0);
    return {key, certificate};
}

const TestAuthority& testAuthority()
{
    static const TestAuthority authority = [] {
        TestAuthority made;
        CertificatePlan root;
        root.commonName = "Test Root";
        root.authority = true;
        root.hash = "SHA1";
        made.root = makeIdentity(testKey(1), root);
        CertificatePlan intermediate;
        intermediate.commonName = "Test Authority";
        intermediate.authority = true;
        made.intermediate = makeIdentity(testKey(2), intermediate, &made.root);
        CertificatePlan signer;
        signer.commonName = "Test Signer (TEAM123456)";
        signer.organizationalUnit = "TEAM123456";
        signer.extendedUsage = "critical,codeSigning";
        signer.criticalExtension = "1.2.840.113635.100.6.1.13";
        made.signer = makeIdentity(testKey(3), signer, &made.intermediate);
        CertificatePlan stamper;
        stamper.commonName = "Test Time Stamps";
        stamper.extendedUsage = "critical,timeStamping";
        made.timeStamper = makeIdentity(testKey(4), stamper, &made.intermediate);
        return made;
    }();
    return authority;
}

} // namespace quorvane::test
