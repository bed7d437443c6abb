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

// What a rules file is to hold, made in memory before the file is touched. The append operations throw
// std::bad_alloc, nothing else does.
class RulesContent {
public:
    explicit RulesContent(LineEnds lineEnds = LineEnds::cut)
        : m_lineEnds(lineEnds)
    {
    }
    // For about `rules` rules that take about `bytes`, which then need not move while they grow. Takes no
    // more room than usual rules may need, whatever `bytes` is.
    RulesContent(LineEnds lineEnds, std::size_t rules, std::uintmax_t bytes);

    void append(const WatchRuleFields& rule) { appendLine(rule); }
    void append(const PolicyRuleFields& rule) { appendLine(rule); }
    void append(const RuleRef& rule);

    // What a file holds already, byte for byte.
    static RulesContent ofText(std::string text);

    std::string_view bytes() const { return m_bytes; }

    // Whether any line lacks its end.
    bool isCut() const { return m_isCut; }

    // Where the rule ends to which the byte at `position` belongs. Requires position < bytes().size().
    std::size_t endOfRuleAt(std::size_t position) const;

private:
    template <class Fields> void appendLine(const Fields& rule);

    LineEnds m_lineEnds;
    std::string m_bytes;
    bool m_isCut = false;
    std::vector<std::size_t> m_ends; // of the rules, in `m_bytes`
};

} // namespace quorvane::rules
