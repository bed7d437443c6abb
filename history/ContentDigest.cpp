#include "history/ContentDigest.h"

#include <array>
#include <new>

#include <openssl/evp.h>

namespace quorvane::history {

std::string contentDigest(std::string_view bytes)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc(); // the only way digesting bytes in memory can fail
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (unsigned int at = 0; at < length; ++at) {
        text += digits[digest[at] >> 4U];
        text += digits[digest[at] & 0xfU];
    }
    return text;
}

} // namespace quorvane::history
