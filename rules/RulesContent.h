#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleRef.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

// How much of a line reaches a rules file.
enum class LineEnds {
    cut, // as writtenPart() says, which is the format's way
    whole,
};

// What a rules file is to hold, made in memory before the file is touched. The append operations throw
// std::bad_alloc, nothing else does.
class RulesContent {
public:
    explicit RulesContent(LineEnds lineEnds = LineEnds::cut)
        : m_lineEnds(lineEnds)
    {
    }

    void append(const WatchRuleFields& rule) { appendLine(rule); }
    void append(const PolicyRuleFields& rule) { appendLine(rule); }
    void append(const RuleRef& rule);

    std::string_view bytes() const { return m_bytes; }

    // Where the rule ends to which the byte at `position` belongs. Requires position < bytes().size().
    std::size_t endOfRuleAt(std::size_t position) const;

private:
    template <class Fields> void appendLine(const Fields& rule);

    LineEnds m_lineEnds;
    std::string m_bytes;
    std::vector<std::size_t> m_ends; // of the rules, in `m_bytes`
};

} // namespace quorvane
