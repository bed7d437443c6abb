#include "fuzz/FuzzedTexts.h"
#include "platform/Unicode.h"
#include "rules/FileDifference.h"
#include "rules/RulesText.h"

#include <cstdint>

// Compares any two texts, divided by a NUL byte: the difference is that of the rules that a store reads.

using namespace quorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [before, after] = fuzzedTexts<2>({reinterpret_cast<const char*>(data), size});
    if (!isValidUtf8(before) || !isValidUtf8(after))
        return 0;
    const RulesDifference difference = fileDifference(before, after);
    const RulesDifference expected = rulesDifference(rulesOfText(before), rulesOfText(after));
    require(difference.added.size() == expected.added.size());
    require(difference.removed.size() == expected.removed.size());
    require(difference.changed.size() == expected.changed.size());
    require(fileDifference(after, after).isEmpty());
    return 0;
}
