#pragma once

#include "codesign/ByteView.h"
#include "codesign/Hasher.h"

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <openssl/x509.h>

namespace quorvane {

enum class SignatureCheck { good, wrong, unsupported };

// One X.509 certificate.
//
// Only RSA keys of 512 to 8192 bits with short exponents are used: all that code signatures are made with,
// and no key that keeps a processor busy. Cheap to copy; copies share the certificate. Not for two threads at
// once.
class Certificate {
public:
    // None when the bytes are no certificate.
    static std::optional<Certificate> parse(ByteView der);

    // True when `issuer` bears the issuer's name and its key verifies the signature of this certificate.
    bool isIssuedBy(const Certificate& issuer) const;
    bool isSelfSigned() const { return isIssuedBy(*this); }

    // True when this is the certificate with that issuer name and serial number, each a whole encoded
    // element.
    bool isNamed(ByteView issuer, ByteView serial) const;
    bool hasKeyIdentifier(ByteView identifier) const;
    bool isSameAs(const Certificate& other) const;

    bool isAuthority() const;
    bool maySignCode() const; // by its extended key usage
    bool mayStampTime() const;
    bool isValidAt(std::time_t time) const;

    // Verifies an RSA signature, padded as PKCS #1 v1.5, over `message`.
    SignatureCheck verify(HashAlgorithm hash, ByteView message, ByteView signature) const;

    // The subject's names as UTF-8; none without such a part.
    std::optional<std::string> commonName() const;
    // The common name, else the first organizational unit, else the organization.
    std::optional<std::string> longDescription() const;

    // The SHA-256 of the certificate's encoding.
    HashValue fingerprint() const;

private:
    explicit Certificate(std::shared_ptr<X509> certificate);
    std::optional<std::string> subjectPart(int part) const;
    bool mayBeUsedFor(std::uint32_t usage) const;

    std::shared_ptr<X509> m_certificate;
    Bytes m_encoding;
    EVP_PKEY* m_key = nullptr; // the certificate's; null when it is of no use here
};

} // namespace quorvane
