#pragma once

#include "codesign/ByteView.h"

#include <array>
#include <cstddef>
#include <memory>

#include <openssl/evp.h>

namespace quorvane::codesign {

enum class HashAlgorithm { sha1, sha256, sha384, sha512 };

// The algorithm as libcrypto knows it, looked up once for the process; null when libcrypto is set up without
// it.
const EVP_MD* hashMethod(HashAlgorithm algorithm);

// A finished hash. Empty when it could not be computed, and then equal to no stored hash.
struct HashValue {
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;

    ByteView view() const { return {bytes.data(), length}; }

    // True when `stored` is the start of this hash, all of it or cut.
    bool startsWith(ByteView stored) const
    {
        return !stored.empty() && length >= stored.size() && ByteView(bytes.data(), stored.size()) == stored;
    }
};

// Hashes one message after another. Not for two threads at once.
class Hasher {
public:
    explicit Hasher(HashAlgorithm algorithm);

    void update(ByteView bytes);

    // The hash of what came since the last finish(); the next message begins here.
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
