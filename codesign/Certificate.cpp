#include "codesign/Certificate.h"

#include <array>
#include <string_view>
#include <utility>

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>

namespace quorvane::codesign {

namespace {

constexpr int shortestModulus = 512; // bits
constexpr int longestModulus = 8192;
// bits; an exponent as long as a huge modulus would keep a processor busy for minutes.
constexpr int longestExponent = 33;
constexpr std::size_t largestCertificate = 64U << 10U; // bytes

template <auto release> struct Releaser {
    template <class T> void operator()(T* object) const { release(object); }
};
template <class T, auto release> using Owned = std::unique_ptr<T, Releaser<release>>;

bool rsaKeyIsUsable(const EVP_PKEY* key)
{
    const int bits = EVP_PKEY_get_bits(key);
    if (bits < shortestModulus || bits > longestModulus)
        return false;
    BIGNUM* exponent = nullptr;
    EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_RSA_E, &exponent);
    const Owned<BIGNUM, BN_free> owned(exponent);
    return exponent != nullptr && BN_num_bits(exponent) <= longestExponent;
}

bool curveIsUsable(const EVP_PKEY* key)
{
    std::array<char, 32> name{};
    std::size_t length = 0;
    if (EVP_PKEY_get_group_name(key, name.data(), name.size(), &length) != 1)
        return false; // a custom curve has no name
    const std::string_view curve(name.data(), length);
    return curve == SN_X9_62_prime256v1 || curve == SN_secp384r1 || curve == SN_secp521r1;
}

// None for a key that is not supported.
std::optional<KeyKind> kindOf(const EVP_PKEY* key)
{
    if (key == nullptr)
        return std::nullopt;
    if (EVP_PKEY_is_a(key, "RSA") == 1 && rsaKeyIsUsable(key))
        return KeyKind::rsa;
    if (EVP_PKEY_is_a(key, "EC") == 1 && curveIsUsable(key))
        return KeyKind::ellipticCurve;
    return std::nullopt;
}

std::optional<std::time_t> secondsOf(const ASN1_TIME* time)
{
    std::tm parts{};
    if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1)
        return std::nullopt;
    return timegm(&parts);
}

} // namespace

std::optional<CertificateName> CertificateName::parse(ByteView issuer, ByteView serial)
{
    if (issuer.size() > largestCertificate || serial.size() > largestCertificate)
        return std::nullopt;
    CertificateName name;
    const unsigned char* at = issuer.data();
    name.m_issuer.reset(d2i_X509_NAME(nullptr, &at, static_cast<long>(issuer.size())), X509_NAME_free);
    at = serial.data();
    name.m_serial.reset(d2i_ASN1_INTEGER(nullptr, &at, static_cast<long>(serial.size())), ASN1_INTEGER_free);
    ERR_clear_error();
    return name.m_issuer && name.m_serial ? std::optional(name) : std::nullopt;
}

Certificate::Certificate(std::shared_ptr<X509> certificate, const HashValue& fingerprint)
    : m_certificate(std::move(certificate))
    , m_fingerprint(fingerprint)
    , m_key(X509_get0_pubkey(m_certificate.get()))
    , m_keyKind(kindOf(m_key))
{
    ERR_clear_error();
}

std::optional<Certificate> Certificate::parse(ByteView der)
{
    if (der.size() > largestCertificate)
        return std::nullopt;
    const unsigned char* at = der.data();
    const std::shared_ptr<X509> parsed(d2i_X509(nullptr, &at, static_cast<long>(der.size())), X509_free);
    ERR_clear_error();
    return parsed ? std::optional(Certificate(parsed, hashOf(HashAlgorithm::sha256, der))) : std::nullopt;
}

bool Certificate::namesAsIssuer(const Certificate& issuer) const
{
    const X509_NAME* name = X509_get_issuer_name(m_certificate.get());
    return X509_NAME_cmp(name, X509_get_subject_name(issuer.m_certificate.get())) == 0;
}

bool Certificate::isIssuedBy(const Certificate& issuer) const
{
    if (!issuer.m_keyKind || !namesAsIssuer(issuer))
        return false;
    const bool verified = X509_verify(m_certificate.get(), issuer.m_key) == 1;
    ERR_clear_error();
    return verified;
}

bool Certificate::isNamed(const CertificateName& name) const
{
    return ASN1_INTEGER_cmp(name.m_serial.get(), X509_get0_serialNumber(m_certificate.get())) == 0
        && X509_NAME_cmp(name.m_issuer.get(), X509_get_issuer_name(m_certificate.get())) == 0;
}

bool Certificate::hasKeyIdentifier(ByteView identifier) const
{
    const ASN1_OCTET_STRING* own = X509_get0_subject_key_id(m_certificate.get());
    return own != nullptr
        && ByteView(ASN1_STRING_get0_data(own), static_cast<std::size_t>(ASN1_STRING_length(own)))
        == identifier;
}

bool Certificate::isSameAs(const Certificate& other) const
{
    return m_fingerprint.view() == other.m_fingerprint.view();
}

bool Certificate::isAuthority() const
{
    const std::uint32_t flags = X509_get_extension_flags(m_certificate.get());
    return (flags & EXFLAG_INVALID) == 0 && (flags & EXFLAG_BCONS) != 0 && (flags & EXFLAG_CA) != 0;
}

bool Certificate::mayBeUsedFor(std::uint32_t usage) const
{
    // For a certificate without the extension the library returns all bits set.
    const std::uint32_t flags = X509_get_extension_flags(m_certificate.get());
    return (flags & EXFLAG_XKUSAGE) != 0 && (X509_get_extended_key_usage(m_certificate.get()) & usage) != 0;
}

bool Certificate::maySignCode() const
{
    return mayBeUsedFor(XKU_CODE_SIGN | XKU_ANYEKU);
}

bool Certificate::mayStampTime() const
{
    return mayBeUsedFor(XKU_TIMESTAMP);
}

bool Certificate::isValidAt(std::time_t time) const
{
    const auto from = secondsOf(X509_get0_notBefore(m_certificate.get()));
    const auto until = secondsOf(X509_get0_notAfter(m_certificate.get()));
    return from && until && *from <= time && time <= *until;
}

SignatureCheck Certificate::verify(
    KeyKind kind, HashAlgorithm hash, ByteView message, ByteView signature) const
{
    const Owned<EVP_MD_CTX, EVP_MD_CTX_free> context(EVP_MD_CTX_new());
    if (m_keyKind != kind || !context
        || EVP_DigestVerifyInit(context.get(), nullptr, hashMethod(hash), nullptr, m_key) != 1) {
        ERR_clear_error();
        return SignatureCheck::unsupported;
    }
    const bool good
        = EVP_DigestVerify(context.get(), signature.data(), signature.size(), message.data(), message.size())
        == 1;
    ERR_clear_error();
    return good ? SignatureCheck::good : SignatureCheck::wrong;
}

std::optional<std::string> Certificate::subjectPart(int part) const
{
    const X509_NAME* subject = X509_get_subject_name(m_certificate.get());
    const int index = X509_NAME_get_index_by_NID(subject, part, -1);
    if (index < 0)
        return std::nullopt;
    unsigned char* text = nullptr;
    const int length
        = ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, index)));
    ERR_clear_error();
    if (length < 0)
        return std::nullopt;
    std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
    OPENSSL_free(text);
    return result;
}

std::optional<std::string> Certificate::commonName() const
{
    return subjectPart(NID_commonName);
}

std::optional<std::string> Certificate::longDescription() const
{
    for (const int part : {NID_commonName, NID_organizationalUnitName, NID_organizationName}) {
        if (auto text = subjectPart(part))
            return text;
    }
    return std::nullopt;
}

} // namespace quorvane::codesign
