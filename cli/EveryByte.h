#pragma once

#include <string_view>

namespace quorvane::cli {

// True when `accepts` is true for every byte of `text`. Asks about all of them without an early exit, so that
// the compiler can vectorize the loop: most texts are accepted.
template <class Accepts> bool everyByte(std::string_view text, Accepts accepts)
{
    unsigned char anyRefused = 0;
    for (const char letter : text)
        anyRefused |= static_cast<unsigned char>(!accepts(static_cast<unsigned char>(letter)));
    return anyRefused == 0;
}

} // namespace quorvane::cli
