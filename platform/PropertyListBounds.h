#pragma once

#include <cstddef>

namespace quorvane::platform {

// Limits of the property list readers, whatever the form. Real lists stay far below.
inline constexpr std::size_t largestPropertyList = 16U << 20U; // bytes
inline constexpr int deepestPropertyList = 512; // containers within each other
inline constexpr std::size_t mostPropertyValues = 2U << 20U;

} // namespace quorvane::platform
