#pragma once

#include "rules/NullableText.h"

#include <cstdint>

namespace quorvane::rules {

// One named setting; a boolean is stored as 0 or 1. A value object.
struct FilterOption {
    NullableText name;
    std::uint32_t value = 0;
};

} // namespace quorvane::rules
