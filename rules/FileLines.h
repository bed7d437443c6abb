#pragma once

#include "rules/RuleValue.h"
#include "rules/RulesParser.h"
#include "rules/SlotChains.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// The lines of a rules file as an editor shows them, for code that changes some of them and keeps the others.

namespace quorvane::rules {

struct FileLine {
    std::string_view text;
    std::string_view end; // empty where the file ends without one
};

// For UTF-8 text without NUL. CR LF is one line end, and no empty line follows the last one. The views point
// into the text.
std::vector<FileLine> fileLines(std::string_view text);

// Which lines count as rules.
enum class RuleLines {
    all, // what a store reads from a user's file as a rule
    // The same, except options, joined lines, and lines without known class, type and operations, which are
    // more likely text than a rule.
    usable,
};

// Reads lines one by one. One thread at a time.
class RuleReader {
public:
    explicit RuleReader(RuleLines lines = RuleLines::usable);

    // The rule on a line; none when the line is not a rule.
    std::optional<RuleValue> ruleOf(std::string_view line);

private:
    RuleLines m_lines;
    RulesParser m_parser;
};

// Numbers the distinct lines of several files, from 0, and the distinct rules on them. The lines must outlive
// it; rules are parsed again on request, since a million of them would take more memory than their lines. One
// thread at a time.
class LineCatalogue {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    explicit LineCatalogue(RuleLines lines)
        : m_lines(lines)
        , m_reader(lines)
    {
    }

    // The numbers of a file's lines. New lines are parsed on several threads, which have ended when the call
    // returns.
    std::vector<std::uint32_t> numbersOf(const std::vector<FileLine>& lines);

    // The number of distinct lines.
    std::size_t size() const { return m_entries.size(); }
    // The number of the rule on that line, the same for equal rules; `none` when it has no rule.
    std::uint32_t ruleNumber(std::uint32_t line) const { return m_entries[line].rule; }
    std::size_t ruleCount() const { return m_rules.size(); }
    bool isWatchRule(std::uint32_t rule) const { return m_rules[rule].isWatchRule; }
    // Requires a line that has a rule.
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
