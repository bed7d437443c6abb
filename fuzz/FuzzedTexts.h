#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

// Helpers for fuzzers of several texts.

namespace quorvane::fuzz {

// Aborts unless the condition holds, so that the fuzzer reports its input.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

// The first texts of an input separated by NUL bytes; empty ones when it has fewer.
template <std::size_t count> std::array<std::string_view, count> fuzzedTexts(std::string_view bytes)
{
    std::array<std::string_view, count> texts;
    for (std::string_view& text : texts) {
        text = bytes.substr(0, bytes.find('\0'));
        bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
    }
    return texts;
}

} // namespace quorvane::fuzz
