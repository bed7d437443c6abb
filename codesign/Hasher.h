#pragma once

#include "codesign/ByteView.h"

#include <array>
#include <cstddef>
#include <memory>

#include <openssl/evp.h>

namespace quorvane::codesign {

enum class HashAlgorithm { sha1, sha256, sha384, sha512 };

// The algorithm in libcrypto, fetched once per process; null when libcrypto is configured without it. Any
// thread.
const EVP_MD* hashMethod(HashAlgorithm algorithm);

// A finished hash. Empty when it could not be computed, and then equal to no stored hash.
struct HashValue {
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;

    ByteView view() const { return {bytes.data(), length}; }

    // True when `stored` is this hash, complete or truncated.
    bool startsWith(ByteView stored) const
    {
        return !stored.empty() && length >= stored.size() && ByteView(bytes.data(), stored.size()) == stored;
    }
};

// Hashes one message after another. One thread at a time.
class Hasher {
public:
    explicit Hasher(HashAlgorithm algorithm);

    void update(ByteView bytes);

    // The hash of the bytes since the last finish(); starts the next message.
    HashValue finish();

private:
    void begin();

    struct Release {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    const EVP_MD* m_method;
    std::unique_ptr<EVP_MD_CTX, Release> m_context;
    bool m_usable = false;
};

HashValue hashOf(HashAlgorithm algorithm, ByteView bytes);

} // namespace quorvane::codesign
