#pragma once

#include "codesign/ByteView.h"

#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace quorvane::test {

// A key and its certificate.
struct Identity {
    std::shared_ptr<EVP_PKEY> key;
    std::shared_ptr<X509> certificate;

    codesign::Bytes encoded() const;
};

struct CertificatePlan {
    std::optional<std::string> commonName;
    std::optional<std::string> organizationalUnit;
    std::optional<std::string> organization;
    bool authority = false;
    std::string extendedUsage; // as in OpenSSL configuration; empty for none
    std::string keyIdentifier; // in hexadecimal; empty for none
    std::string criticalExtension; // an object identifier in dot notation
    std::size_t padding = 0; // bytes in an unknown extension
    std::string from = "20200101000000Z";
    std::string until = "20400101000000Z";
    int keyBits = 1024;
    const char* hash = "SHA256";
};

// A different RSA key for each number, generated once per test program.
std::shared_ptr<EVP_PKEY> testKey(int number, int bits = 1024);

// An elliptic-curve key, one for each curve.
std::shared_ptr<EVP_PKEY> testCurveKey(const char* curve);

// A certificate for the key; self-signed without an issuer.
Identity makeIdentity(
    const std::shared_ptr<EVP_PKEY>& key, const CertificatePlan& plan, const Identity* issuer = nullptr);

// A root, an authority below it, a code signer and a time stamp authority below that.
struct TestAuthority {
    Identity root;
    Identity intermediate;
    Identity signer;
    Identity timeStamper;
};
const TestAuthority& testAuthority();

} // namespace quorvane::test
