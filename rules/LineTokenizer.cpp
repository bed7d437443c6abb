#include "rules/LineTokenizer.h"

#include <utility>

namespace quorvane::rules {

namespace {

std::size_t endOfRun(std::string_view line, std::size_t at)
{
    while (at < line.size() && line[at] != ' ' && line[at] != '"')
        ++at;
    return at;
}

} // namespace

const std::vector<std::string_view>& LineTokenizer::tokens(std::string_view line, std::size_t most)
{
    m_tokens.clear();
    m_held.clear();
    m_joined.clear();
    m_inQuotes = false;
    std::size_t at = 0;
    while (at < line.size() && m_tokens.size() < most) {
        if (const std::size_t after = takeWholeQuotedValue(line, at); after > at) {
            at = after;
            continue;
        }
        const std::size_t end = endOfRun(line, at);
        const std::string_view run = line.substr(at, end - at);
        at = end;
        takeRun(run, line, at);
    }
    return m_tokens;
}

// The common case in one step: a value between two quotes that is neither empty nor ends in a blank. Returns
// the position after it, or `at` when there is none.
std::size_t LineTokenizer::takeWholeQuotedValue(std::string_view line, std::size_t at)
{
    if (m_inQuotes || !m_held.empty() || line[at] != '"')
        return at;
    const std::size_t close = line.find('"', at + 1);
    if (close == std::string_view::npos || close == at + 1 || line[close - 1] == ' ')
        return at;
    m_tokens.push_back(line.substr(at + 1, close - at - 1));
    return close + 1;
}

// Handles the run of ordinary characters before `at` and the blank, quote or line end at `at`.
void LineTokenizer::takeRun(std::string_view run, std::string_view line, std::size_t& at)
{
    if (at == line.size()) {
        // Deliberate: what an unclosed quote has collected is dropped, its last word stays.
        if (!run.empty())
            m_tokens.push_back(run);
        return;
    }
    if (line[at++] == '"') {
        m_inQuotes = !m_inQuotes;
        if (!run.empty()) {
            // An opening quote ends the word before it as a closing one ends its value.
            m_held.append(run);
            m_joined.push_back(std::exchange(m_held, {}));
            m_tokens.push_back(m_joined.back());
        } else if (!m_inQuotes) {
            m_tokens.emplace_back();
        }
    } else if (m_inQuotes) {
        m_held.append(run).push_back(' ');
    } else if (!run.empty()) {
        m_tokens.push_back(run);
    }
}

std::vector<std::string> scanString(std::string_view line)
{
    LineTokenizer tokenizer;
    const auto& tokens = tokenizer.tokens(line);
    return {tokens.begin(), tokens.end()};
}

} // namespace quorvane::rules
