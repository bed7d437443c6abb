#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleLine.h"
#include "rules/RuleRef.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// The future contents of a rules file, built in memory before the file is touched. Only the append operations
// throw, std::bad_alloc. One thread at a time.
class RulesContent {
public:
    explicit RulesContent(LineEnds lineEnds = LineEnds::cut)
        : m_lineEnds(lineEnds)
    {
    }
    // Reserves memory for about `rules` rules that take about `bytes`, to avoid reallocation. Never reserves
    // more than that many usual rules may need, whatever `bytes` is.
    RulesContent(LineEnds lineEnds, std::size_t rules, std::uintmax_t bytes);

    void append(const WatchRuleFields& rule) { appendLine(rule); }
    void append(const PolicyRuleFields& rule) { appendLine(rule); }
    void append(const RuleRef& rule);

    // Existing contents of a file, byte for byte.
    static RulesContent ofText(std::string text);

    std::string_view bytes() const { return m_bytes; }
    // Removes all bytes; keeps the memory, and isCut().
    void clear();

    // Whether any line lacks its end.
    bool isCut() const { return m_isCut; }

    // The end of the rule that contains the byte at `position`. Requires position < bytes().size().
    std::size_t endOfRuleAt(std::size_t position) const;

private:
    template <class Fields> void appendLine(const Fields& rule);

    LineEnds m_lineEnds;
    std::string m_bytes;
    bool m_isCut = false;
    std::vector<std::size_t> m_ends; // of each rule, as offset in `m_bytes`
};

} // namespace quorvane::rules
