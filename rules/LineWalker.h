#pragma once

#include <optional>
#include <string_view>

namespace quorvane::rules {

// Iterates over the lines of a rules file, empty ones included, without their line ends.
//
// A line ends at LF, CR, VT, FF, NEL (U+0085), U+2028 or U+2029, so CR LF makes an empty line. What follows
// the last line end is a line too, even if it is empty. The views point into the text given. One thread at a
// time.
class LineWalker {
public:
    // In text that is not valid UTF-8, every other byte belongs to a line.
    explicit LineWalker(std::string_view text)
        : m_rest(text)
    {
    }

    // None after the last line.
    std::optional<std::string_view> next();

private:
    std::string_view m_rest;
    bool m_ended = false;
};

} // namespace quorvane::rules
