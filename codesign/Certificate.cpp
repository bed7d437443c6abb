#include "codesign/Certificate.h"

#include <utility>

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>

namespace quorvane {

namespace {

constexpr int shortestModulus = 512; // bits
constexpr int longestModulus = 8192;
// An exponent as long as a huge modulus keeps a processor busy for minutes.
constexpr int longestExponent = 33;

template <auto release> struct Releaser {
    template <class T> void operator()(T* object) const { release(object); }
};
template <class T, auto release> using Owned = std::unique_ptr<T, Releaser<release>>;

bool keyIsUsable(EVP_PKEY* key)
{
    if (key == nullptr || EVP_PKEY_is_a(key, "RSA") != 1)
        return false;
    const int bits = EVP_PKEY_get_bits(key);
    if (bits < shortestModulus || bits > longestModulus)
        return false;
    BIGNUM* exponent = nullptr;
    EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_RSA_E, &exponent);
    const Owned<BIGNUM, BN_free> owned(exponent);
    return exponent != nullptr && BN_num_bits(exponent) <= longestExponent;
}

std::optional<std::time_t> secondsOf(const ASN1_TIME* time)
{
    std::tm parts{};
    if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1)
        return std::nullopt;
    return timegm(&parts);
}

} // namespace

Certificate::Certificate(std::shared_ptr<X509> certificate)
    : m_certificate(std::move(certificate))
{
    EVP_PKEY* key = X509_get0_pubkey(m_certificate.get());
    m_key = keyIsUsable(key) ? key : nullptr;
    ERR_clear_error();
}

std::optional<Certificate> Certificate::parse(ByteView der)
{
    const unsigned char* at = der.data();
    const std::shared_ptr<X509> parsed(d2i_X509(nullptr, &at, static_cast<long>(der.size())), X509_free);
    ERR_clear_error();
    if (!parsed)
        return std::nullopt;
    Certificate certificate(parsed);
    certificate.m_encoding.assign(der.begin(), der.end());
    return certificate;
}

bool Certificate::isIssuedBy(const Certificate& issuer) const
{
    const X509_NAME* name = X509_get_issuer_name(m_certificate.get());
    if (X509_NAME_cmp(name, X509_get_subject_name(issuer.m_certificate.get())) != 0
        || issuer.m_key == nullptr)
        return false;
    const bool verified = X509_verify(m_certificate.get(), issuer.m_key) == 1;
    ERR_clear_error();
    return verified;
}

bool Certificate::isNamed(ByteView issuer, ByteView serial) const
{
    const unsigned char* at = issuer.data();
    const Owned<X509_NAME, X509_NAME_free> name(
        d2i_X509_NAME(nullptr, &at, static_cast<long>(issuer.size())));
    at = serial.data();
    const Owned<ASN1_INTEGER, ASN1_INTEGER_free> number(
        d2i_ASN1_INTEGER(nullptr, &at, static_cast<long>(serial.size())));
    ERR_clear_error();
    return name && number && X509_NAME_cmp(name.get(), X509_get_issuer_name(m_certificate.get())) == 0
        && ASN1_INTEGER_cmp(number.get(), X509_get0_serialNumber(m_certificate.get())) == 0;
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
    return m_encoding == other.m_encoding;
}

bool Certificate::isAuthority() const
{
    const std::uint32_t flags = X509_get_extension_flags(m_certificate.get());
    return (flags & EXFLAG_INVALID) == 0 && (flags & EXFLAG_BCONS) != 0 && (flags & EXFLAG_CA) != 0;
}

bool Certificate::mayBeUsedFor(std::uint32_t usage) const
{
    // A certificate without the extension answers with all bits set.
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

SignatureCheck Certificate::verify(HashAlgorithm hash, ByteView message, ByteView signature) const
{
    const Owned<EVP_MD_CTX, EVP_MD_CTX_free> context(EVP_MD_CTX_new());
    if (m_key == nullptr || !context
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

HashValue Certificate::fingerprint() const
{
    return hashOf(HashAlgorithm::sha256, m_encoding);
}

} // namespace quorvane
