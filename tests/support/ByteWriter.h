#pragma once

#include "codesign/ByteView.h"

#include <string_view>

namespace quorvane::test {

// Puts numbers into bytes, appending or overwriting.
inline void putNumber(
    codesign::Bytes& out, std::size_t offset, std::uint64_t value, unsigned length, codesign::ByteOrder order)
{
    if (out.size() < offset + length)
        out.resize(offset + length);
    for (unsigned i = 0; i < length; ++i) {
        const unsigned shift = 8 * (order == codesign::ByteOrder::big ? length - 1 - i : i);
        out[offset + i] = static_cast<std::uint8_t>(value >> shift);
    }
}

inline void putBig32(codesign::Bytes& out, std::size_t offset, std::uint64_t value)
{
    putNumber(out, offset, value, 4, codesign::ByteOrder::big);
}

inline void append(codesign::Bytes& out, codesign::ByteView more)
{
    out.insert(out.end(), more.begin(), more.end());
}

inline void append(codesign::Bytes& out, std::string_view more)
{
    out.insert(out.end(), more.begin(), more.end());
}

inline codesign::Bytes bytesOf(std::string_view text)
{
    return codesign::Bytes(text.begin(), text.end());
}

} // namespace quorvane::test
