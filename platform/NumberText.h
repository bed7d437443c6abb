#pragma once

#include <cstdint>
#include <string_view>

namespace quorvane::platform {

// The number at the start of `text` as the Foundation framework's integer accessors read it: leading blanks
// are skipped, then an optional sign, then decimal digits; what follows is ignored. Clamped to 64 bits; 0
// without digits.
std::int64_t leadingInteger(std::string_view text);

} // namespace quorvane::platform
