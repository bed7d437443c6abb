#pragma once

#include "codesign/ByteView.h"
#include "codesign/Hasher.h"

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <openssl/x509.h>

namespace quorvane::codesign {

enum class SignatureCheck { good, wrong, unsupported };

// The supported kinds of signing key.
enum class KeyKind { rsa, ellipticCurve };

// Identifies a certificate by its issuer's name and serial number.
class CertificateName {
public:
    // Each a complete encoded element; none when one of them is malformed.
    static std::optional<CertificateName> parse(ByteView issuer, ByteView serial);

private:
    friend class Certificate;
    std::shared_ptr<X509_NAME> m_issuer;
    std::shared_ptr<ASN1_INTEGER> m_serial;
};

// One X.509 certificate.
//
// Only RSA keys of 512 to 8192 bits with short exponents and keys on the curves P-256, P-384 and P-521 are
// used: code signatures use no others, and longer keys could be made to keep a processor busy. Cheap to copy;
// copies share the certificate. One thread at a time.
class Certificate {
public:
    // None when the bytes are not a certificate, or are more than 64 KiB: many times the size of genuine
    // ones.
    static std::optional<Certificate> parse(ByteView der);

    // True when the name of `issuer` is this certificate's issuer name. That alone proves nothing.
    bool namesAsIssuer(const Certificate& issuer) const;

    // True when moreover its key verifies the signature of this certificate.
    bool isIssuedBy(const Certificate& issuer) const;
    bool isSelfSigned() const { return isIssuedBy(*this); }

    bool isNamed(const CertificateName& name) const;
    bool hasKeyIdentifier(ByteView identifier) const;
    bool isSameAs(const Certificate& other) const;

    bool isAuthority() const;
    bool maySignCode() const; // by its extended key usage
    bool mayStampTime() const;
    bool isValidAt(std::time_t time) const;

    // Verifies a signature over `message`: RSA with PKCS #1 v1.5 padding, or ECDSA. Unsupported when the
    // certificate has no key of that kind.
    SignatureCheck verify(KeyKind kind, HashAlgorithm hash, ByteView message, ByteView signature) const;

    // Names of the subject as UTF-8; none when absent.
    std::optional<std::string> commonName() const;
    // The common name, else the first organizational unit, else the organization.
    std::optional<std::string> longDescription() const;

    // The SHA-256 of the certificate's encoding.
    const HashValue& fingerprint() const { return m_fingerprint; }

private:
    Certificate(std::shared_ptr<X509> certificate, const HashValue& fingerprint);
    std::optional<std::string> subjectPart(int part) const;
    bool mayBeUsedFor(std::uint32_t usage) const;

    std::shared_ptr<X509> m_certificate;
    HashValue m_fingerprint;
    EVP_PKEY* m_key = nullptr; // owned by the certificate; null when its kind is not supported
    std::optional<KeyKind> m_keyKind; // none without such a key
};

} // namespace quorvane::codesign
