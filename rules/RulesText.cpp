#include "rules/RulesText.h"

#include "platform/Unicode.h"
#include "rules/RuleIdentity.h"
#include "rules/RulesParser.h"

#include <cstddef>
#include <unordered_set>

namespace quorvane::rules {

namespace {

// Hash and equality for indexes of rules in a list, by the rules' properties.
struct HashOfNumbered {
    const std::vector<RuleValue>* rules;
    std::size_t operator()(std::size_t number) const { return identityHash((*rules)[number]); }
};
struct EqualNumbered {
    const std::vector<RuleValue>* rules;
    bool operator()(std::size_t a, std::size_t b) const { return isEqualRule((*rules)[a], (*rules)[b]); }
};

} // namespace

std::string_view readableText(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    return platform::isValidUtf8(text) ? text : std::string_view();
}

std::vector<RuleValue> rulesOfText(std::string_view text)
{
    std::vector<RuleValue> rules;
    std::unordered_set<std::size_t, HashOfNumbered, EqualNumbered> known(0, {&rules}, {&rules});
    const auto append = [&](ParsedLine& line) {
        if (auto* policy = std::get_if<std::shared_ptr<PolicyRuleFields>>(&line.content))
            rules.emplace_back(PolicyValue(std::move(*policy)));
        else if (auto* watch = std::get_if<std::shared_ptr<WatchRuleFields>>(&line.content))
            rules.emplace_back(WatchValue(std::move(*watch)));
        else
            return;
        if (!known.insert(rules.size() - 1).second)
            rules.pop_back();
    };
    useParsedLines(readableText(text), {}, [&append](std::vector<ParsedLine>& lines) {
        for (ParsedLine& line : lines)
            append(line);
    });
    return rules;
}

} // namespace quorvane::rules
