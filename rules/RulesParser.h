#pragma once

#include "rules/FilterOption.h"
#include "rules/LineTokenizer.h"
#include "rules/RuleValue.h"
#include "rules/TextPool.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::rules {

// How a rules file is read.
struct RulesFileKind {
    bool system = false; // rules are labelled as the system's
    bool optionsAllowed = false; // "set" lines are options
};

// What one line of a rules file holds. Rules are without sequence number, which their user may set.
struct ParsedLine {
    std::variant<std::shared_ptr<PolicyRuleFields>, std::shared_ptr<WatchRuleFields>, FilterOption> content;
    std::uint64_t hash = 0; // a rule's identityHash()
    NullableText operationsText; // of a watch rule, as it stands in the file
};

// Turns lines of a rules file into what they hold. Comments and unusable lines leave none. Not for two
// threads at once.
class RulesParser {
public:
    // For texts of about that length at a time, in bytes, lest a short one costs what a long one does.
    explicit RulesParser(RulesFileKind kind, std::size_t usualLength = 1U << 18U)
        : m_kind(kind)
        , m_pool(usualLength / 16 + 1)
    {
    }

    // The contents of `text`, valid UTF-8, in order.
    std::vector<ParsedLine> parse(std::string_view text);

private:
    void parseLine(std::string_view line, std::vector<ParsedLine>& out);

    RulesFileKind m_kind;
    LineTokenizer m_tokenizer;
    TextPool m_pool;
};

// Gives the content of every line of `text` to `use`, in order and on the calling thread. Of a long text
// several stretches are parsed at the same time, on threads that have ended when the call returns.
void useParsedLines(std::string_view text, RulesFileKind kind, const std::function<void(ParsedLine&)>& use);

} // namespace quorvane::rules
