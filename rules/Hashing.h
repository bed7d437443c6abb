#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Hashes for tables in memory. They depend on a random secret per process, so that no rules file can be
// crafted whose rules all collide. Never store them. Any thread.

namespace quorvane::rules {

namespace detail {

std::array<std::uint64_t, 3> drawnHashSecret();
inline const std::array<std::uint64_t, 3> hashSecret = drawnHashSecret();

// The halves of the 128-bit product, combined by exclusive or: every bit of the result depends on every bit
// of both factors.
inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b)
{
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{a} * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

} // namespace detail

// Spreads every bit of `value` and of `hash` over all bits of the result.
inline std::uint64_t combinedHash(std::uint64_t hash, std::uint64_t value)
{
    return detail::foldedProduct(hash ^ detail::hashSecret[0], value ^ detail::hashSecret[1]);
}
std::uint64_t combinedHash(std::uint64_t hash, std::string_view text);

// For tables by text.
struct TextHash {
    std::size_t operator()(std::string_view text) const { return combinedHash(0, text); }
};

} // namespace quorvane::rules
