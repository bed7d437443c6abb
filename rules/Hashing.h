#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace quorvane {

// Spreads every bit of `value` over all bits of the result.
inline std::uint64_t mixedHash(std::uint64_t value)
{
    value ^= value >> 33U;
    value *= 0xff51afd7ed558ccdU;
    value ^= value >> 33U;
    value *= 0xc4ceb9fe1a85ec53U;
    return value ^ value >> 33U;
}

inline std::uint64_t combinedHash(std::uint64_t hash, std::uint64_t value)
{
    return mixedHash(hash * 0x9e3779b97f4a7c15U + value);
}

inline std::uint64_t combinedHash(std::uint64_t hash, std::string_view text)
{
    return combinedHash(hash, std::hash<std::string_view>{}(text));
}

} // namespace quorvane
