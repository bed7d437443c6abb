#include "rules/Hashing.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <random>

namespace quorvane::rules {

namespace detail {

std::array<std::uint64_t, 3> drawnHashSecret()
{
    static const int somewhere = 0; // its address is randomized by the system
    std::mt19937_64 words(
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count())
        ^ reinterpret_cast<std::uintptr_t>(&somewhere));
    std::uint64_t random = 0;
    try {
        std::random_device device;
        random = std::uint64_t{device()} << 32U | device();
    } catch (const std::exception&) {
        // Without a source of randomness, clock and address must suffice.
    }
    const auto word = [&] { return (words() ^ random) | 1U; };
    return {word(), word(), word()};
}

} // namespace detail

// Sixteen bytes per step, each half mixed with the secret.
std::uint64_t combinedHash(std::uint64_t hash, std::string_view text)
{
    const auto& secret = detail::hashSecret;
    std::uint64_t state = combinedHash(hash, text.size());
    while (!text.empty()) {
        std::array<std::uint64_t, 2> words{};
        const std::size_t step = std::min(text.size(), sizeof words);
        std::memcpy(words.data(), text.data(), step);
        state = detail::foldedProduct(words[0] ^ secret[1] ^ state, words[1] ^ secret[2]);
        text.remove_prefix(step);
    }
    return detail::foldedProduct(state ^ secret[2], secret[0]);
}

} // namespace quorvane::rules
