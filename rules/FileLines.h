#pragma once

#include "rules/RuleValue.h"
#include "rules/RulesParser.h"
#include "rules/SlotChains.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// The lines of a rules file as a person sees them, for who changes some of them and keeps the others.

namespace quorvane {

struct FileLine {
    std::string_view text;
    std::string_view end; // empty where the file ends without one
};

// Of UTF-8 text without NUL. CR LF is one line end, and nothing stands behind the last one. The views point
// into the text.
std::vector<FileLine> fileLines(std::string_view text);

// Reads lines one by one. Not for two threads at once.
class RuleReader {
public:
    // The rule that a line of a user's file is. None of a comment, an option, an empty or joined line, and of
    // one without known class, type and operations, which is somebody's text more likely than a rule.
    std::optional<RuleValue> ruleOf(std::string_view line);

private:
    RulesParser m_parser{{.system = false, .optionsAllowed = true}};
};

// Numbers the different lines of several files, from 0, and the different rules on them. The lines must
// outlive it; the rules are read anew when they are asked for, since a million of them would take more memory
// than their lines.
class LineCatalogue {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    std::uint32_t numberOf(std::string_view line);
    std::size_t size() const { return m_lines.size(); }

    std::string_view line(std::uint32_t number) const { return m_lines[number].text; }
    // The number of the rule on that line, the same for equal rules; `none` where there is no rule.
    std::uint32_t ruleNumber(std::uint32_t number) const { return m_lines[number].rule; }
    std::size_t ruleCount() const { return m_rules.size(); }
    bool isWatchRule(std::uint32_t rule) const { return m_rules[rule].isWatchRule; }
    // The rule of a line that has one.
    RuleValue ruleOf(std::uint32_t number) { return *m_reader.ruleOf(line(number)); }

private:
    struct Line {
        std::string_view text;
        std::uint32_t rule;
    };
    struct Rule {
        std::uint32_t line; // the first one with it
        bool isWatchRule;
    };
    std::uint32_t numberOfRule(std::uint32_t line, const RuleValue& rule);

    RuleReader m_reader;
    std::vector<Line> m_lines;
    SlotChains m_lineSlots;
    std::vector<Rule> m_rules;
    SlotChains m_ruleSlots;
};

} // namespace quorvane
