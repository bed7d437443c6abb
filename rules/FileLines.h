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

namespace quorvane::rules {

struct FileLine {
    std::string_view text;
    std::string_view end; // empty where the file ends without one
};

// Of UTF-8 text without NUL. CR LF is one line end, and nothing stands behind the last one. The views point
// into the text.
std::vector<FileLine> fileLines(std::string_view text);

// Which lines count as rules.
enum class RuleLines {
    all, // what a store reads from a user's file as a rule
    // The same but for options, joined lines, and lines without known class, type and operations, which are
    // somebody's text more likely than a rule.
    usable,
};

// Reads lines one by one. Not for two threads at once.
class RuleReader {
public:
    explicit RuleReader(RuleLines lines = RuleLines::usable);

    // The rule that a line is; none when it is no rule.
    std::optional<RuleValue> ruleOf(std::string_view line);

private:
    RuleLines m_lines;
    RulesParser m_parser;
};

// Numbers the different lines of several files, from 0, and the different rules on them. The lines must
// outlive it; the rules are read anew when they are asked for, since a million of them would take more memory
// than their lines.
class LineCatalogue {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    explicit LineCatalogue(RuleLines lines)
        : m_lines(lines)
        , m_reader(lines)
    {
    }

    // The numbers of a file's lines. New lines are read on several threads, which have ended when the call
    // returns.
    std::vector<std::uint32_t> numbersOf(const std::vector<FileLine>& lines);

    // How many lines there are.
    std::size_t size() const { return m_entries.size(); }
    // The number of the rule on that line, the same for equal rules; `none` where there is no rule.
    std::uint32_t ruleNumber(std::uint32_t line) const { return m_entries[line].rule; }
    std::size_t ruleCount() const { return m_rules.size(); }
    bool isWatchRule(std::uint32_t rule) const { return m_rules[rule].isWatchRule; }
    // The rule of a line that has one.
    RuleValue ruleOf(std::uint32_t line) { return *m_reader.ruleOf(m_entries[line].text); }

private:
    struct Entry {
        std::string_view text;
        std::uint32_t rule;
    };
    struct Rule {
        std::uint32_t line; // the first one with it
        bool isWatchRule;
    };
    struct ReadLine;

    std::uint32_t numberOf(std::string_view line, std::uint32_t guess);
    std::vector<ReadLine> readFrom(std::size_t first) const;
    std::uint32_t numberOfRule(std::uint32_t line, const ReadLine& read);

    const RuleLines m_lines;
    RuleReader m_reader;
    std::vector<Entry> m_entries;
    SlotChains m_lineSlots;
    std::vector<Rule> m_rules;
    SlotChains m_ruleSlots;
};

} // namespace quorvane::rules
