#include "fuzz/FuzzedTexts.h"
#include "platform/Unicode.h"
#include "rules/FileMerge.h"
#include "rules/RuleIdentity.h"
#include "rules/RulesText.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Merges any three texts, separated by NUL bytes: the result must be readable, contain no rule that neither
// side has, and not change when merged with itself.

namespace {

using namespace quorvane;

bool holds(const std::vector<rules::RuleValue>& rules, const rules::RuleValue& rule)
{
    return std::any_of(
        rules.begin(), rules.end(), [&](const rules::RuleValue& other) { return isEqualRule(rule, other); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [base, ours, theirs] = fuzz::fuzzedTexts<3>({reinterpret_cast<const char*>(data), size});
    if (!platform::isValidUtf8(base) || !platform::isValidUtf8(ours) || !platform::isValidUtf8(theirs))
        return 0;
    const rules::FileMergeResult merged = rules::mergeFiles(base, ours, theirs);
    fuzz::require(platform::isValidUtf8(merged.text) && merged.text.find('\0') == std::string::npos);
    const std::vector<rules::RuleValue> oursRules = rules::rulesOfText(ours);
    const std::vector<rules::RuleValue> theirsRules = rules::rulesOfText(theirs);
    for (const rules::RuleValue& rule : rules::rulesOfText(merged.text))
        fuzz::require(holds(oursRules, rule) || holds(theirsRules, rule));
    fuzz::require(rules::mergeFiles(merged.text, merged.text, merged.text).text == merged.text);
    fuzz::require(rules::mergeFiles(base, ours, base).text == ours);
    fuzz::require(rules::mergeFiles(base, ours, ours).text == ours);
    return 0;
}
