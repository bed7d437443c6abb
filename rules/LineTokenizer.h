#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// Splits a line of a rules file into its tokens.
//
// Only the blank and the double quote are special: blanks separate tokens, quotes preserve blanks, and there
// are no escapes. Known oddities are part of the format: an unclosed quote keeps only its last word, and a
// quoted value that ends in a blank yields an empty token and is prepended to the next quoted value of the
// line.
//
// Reusable, to save allocations per line; one thread at a time.
class LineTokenizer {
public:
    // The first `most` tokens. The views point into `line` or into this object; they last until the next
    // call.
    const std::vector<std::string_view>& tokens(std::string_view line, std::size_t most = SIZE_MAX);

private:
    std::size_t takeWholeQuotedValue(std::string_view line, std::size_t at);
    void takeRun(std::string_view run, std::string_view line, std::size_t& at);

    std::vector<std::string_view> m_tokens;
    std::string m_held; // the part of a quoted value collected so far
    std::deque<std::string> m_joined; // tokens that are not contiguous in the line
    bool m_inQuotes = false;
};

// The tokens of one line.
std::vector<std::string> scanString(std::string_view line);

} // namespace quorvane::rules
