#include "fuzz/FuzzedTexts.h"
#include "rules/FileDifference.h"
#include "rules/RulesText.h"

#include <cstdint>

// Compares any two texts, separated by a NUL byte: the difference must be that of the rules that a store
// reads.

using namespace quorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [before, after] = fuzz::fuzzedTexts<2>({reinterpret_cast<const char*>(data), size});
    const rules::RulesDifference difference = rules::fileDifference(before, after);
    const rules::RulesDifference expected
        = rulesDifference(rules::rulesOfText(before), rules::rulesOfText(after));
    fuzz::require(difference.added.size() == expected.added.size());
    fuzz::require(difference.removed.size() == expected.removed.size());
    fuzz::require(difference.changed.size() == expected.changed.size());
    const rules::FileDifferenceCounts counts = rules::fileDifferenceCounts(before, after);
    fuzz::require(counts.added == expected.added.size());
    fuzz::require(counts.removed == expected.removed.size());
    fuzz::require(counts.changed == expected.changed.size());
    fuzz::require(counts.rulesAfter == rules::rulesOfText(after).size());
    fuzz::require(rules::fileDifference(after, after).isEmpty());
    return 0;
}
