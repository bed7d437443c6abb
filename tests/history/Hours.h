#pragma once

#include <cstdint>

namespace quorvane::test {

// In seconds.
inline constexpr std::int64_t hour = 3600;
inline constexpr std::int64_t day = 24 * hour;

} // namespace quorvane::test
