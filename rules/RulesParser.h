#pragma once

#include "rules/FilterOption.h"
#include "rules/LineTokenizer.h"
#include "rules/RuleValue.h"
#include "rules/SharedBatch.h"
#include "rules/TextPool.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::rules {

// How to read a rules file.
struct RulesFileKind {
    bool system = false; // rules are marked as system rules
    bool optionsAllowed = false; // "set" lines are options
};

// The content of one line of a rules file. Rules have no sequence number yet; the caller may set it.
struct ParsedLine {
    std::variant<std::shared_ptr<PolicyRuleFields>, std::shared_ptr<WatchRuleFields>, FilterOption> content;
    std::uint64_t hash = 0; // a rule's identityHash()
    NullableText operationsText; // of a watch rule, as spelled in the file
};

// Parses lines of a rules file. Comments and unusable lines yield nothing. One thread at a time; throws
// std::bad_alloc.
class RulesParser {
public:
    // `usualLength`: the usual length in bytes of a text to parse. Sizes text pool and batches, so that short
    // texts stay cheap.
    explicit RulesParser(RulesFileKind kind, std::size_t usualLength = 1U << 18U);

    // The contents of `text`, valid UTF-8, in order.
    std::vector<ParsedLine> parse(std::string_view text);
    // The same, appended to `records`.
    void parse(std::string_view text, std::vector<ParsedLine>& records);

private:
    void parseLine(std::string_view line, std::vector<ParsedLine>& out);

    RulesFileKind m_kind;
    LineTokenizer m_tokenizer;
    TextPool m_pool;
    SharedBatch<PolicyRuleFields> m_policyRules;
    SharedBatch<WatchRuleFields> m_watchRules;
};

// Passes the contents of all lines of `text` to `use`, in order and on the calling thread: those of a short
// text at once, those of a long one chunk by chunk. Chunks are parsed in parallel, on threads that have ended
// when the call returns. Each part of the text that is not needed any more is passed to `discard`, if there
// is one.
void useParsedLines(std::string_view text, RulesFileKind kind,
    const std::function<void(std::vector<ParsedLine>&)>& use,
    const std::function<void(std::string_view)>& discard = {});

} // namespace quorvane::rules
