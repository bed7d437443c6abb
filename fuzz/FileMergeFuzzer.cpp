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

// Merges any three texts, divided by NUL bytes: the result reads, holds no rule that neither side has, and
// merging it with itself changes nothing.

namespace {

using namespace quorvane;

bool holds(const std::vector<RuleValue>& rules, const RuleValue& rule)
{
    return std::any_of(
        rules.begin(), rules.end(), [&](const RuleValue& other) { return isEqualRule(rule, other); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [base, ours, theirs] = fuzzedTexts<3>({reinterpret_cast<const char*>(data), size});
    if (!isValidUtf8(base) || !isValidUtf8(ours) || !isValidUtf8(theirs))
        return 0;
    const FileMergeResult merged = mergeFiles(base, ours, theirs);
    require(isValidUtf8(merged.text) && merged.text.find('\0') == std::string::npos);
    const std::vector<RuleValue> oursRules = rulesOfText(ours);
    const std::vector<RuleValue> theirsRules = rulesOfText(theirs);
    for (const RuleValue& rule : rulesOfText(merged.text))
        require(holds(oursRules, rule) || holds(theirsRules, rule));
    require(mergeFiles(merged.text, merged.text, merged.text).text == merged.text);
    require(mergeFiles(base, ours, base).text == ours);
    require(mergeFiles(base, ours, ours).text == ours);
    return 0;
}
