#include "rules/LineWalker.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvane::rules {

namespace {

// The length of the line end at `at`, 0 when there is none.
std::size_t lineEndLength(std::string_view text, std::size_t at)
{
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x0A && byte <= 0x0D)
        return 1;
    const std::string_view rest = text.substr(at, 3);
    if (rest.starts_with("\xC2\x85"))
        return 2;
    return rest == "\xE2\x80\xA8" || rest == "\xE2\x80\xA9" ? 3 : 0;
}

// Eight bytes that are printable ASCII cannot hold any part of a line end.
bool holdsNoLineEnd(const char* eightBytes)
{
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highBits = ones * 0x80;
    std::uint64_t word = 0;
    std::memcpy(&word, eightBytes, sizeof word);
    return ((word | (word - ones * 0x20)) & highBits) == 0;
}

} // namespace

std::optional<std::string_view> LineWalker::next()
{
    if (m_ended)
        return std::nullopt;
    std::size_t at = 0;
    while (at < m_rest.size()) {
        if (at + 8 <= m_rest.size() && holdsNoLineEnd(m_rest.data() + at)) {
            at += 8;
            continue;
        }
        if (const std::size_t length = lineEndLength(m_rest, at); length > 0) {
            const std::string_view line = m_rest.substr(0, at);
            m_rest.remove_prefix(at + length);
            return line;
        }
        ++at;
    }
    m_ended = true;
    return m_rest;
}

} // namespace quorvane::rules
