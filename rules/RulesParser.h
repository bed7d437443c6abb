#pragma once

#include "rules/FilterOption.h"
#include "rules/LineTokenizer.h"
#include "rules/PolicyRule.h"
#include "rules/TextPool.h"
#include "rules/WatchRule.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane {

// How a rules file is read.
struct RulesFileKind {
    bool system = false; // rules are labelled as the system's
    bool optionsAllowed = false; // "set" lines are options
};

// One line of a rules file as a record.
struct ParsedLine {
    std::variant<PolicyRulePtr, WatchRulePtr, FilterOption> record; // rules without sequence number
    std::uint64_t hash = 0; // a rule's identityHash()
    NullableText operationsText; // of a watch rule, as it stands in the file
};

// Turns lines of a rules file into records. Comments and unusable lines leave none. Not for two threads at
// once.
class RulesParser {
public:
    explicit RulesParser(RulesFileKind kind)
        : m_kind(kind)
    {
    }

    // The records of `text`, valid UTF-8, in order.
    std::vector<ParsedLine> parse(std::string_view text);

private:
    void parseLine(std::string_view line, std::vector<ParsedLine>& out);

    RulesFileKind m_kind;
    LineTokenizer m_tokenizer;
    TextPool m_pool;
};

// Gives every record of `text` to `use`, in order and on the calling thread. Of a long text several stretches
// are parsed at the same time, on threads that have ended when the call returns.
void useParsedLines(std::string_view text, RulesFileKind kind, const std::function<void(ParsedLine&)>& use);

} // namespace quorvane
