#include "platform/Unicode.h"
#include "rules/FileDifference.h"
#include "rules/RulesText.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// Compares any two texts, divided by a NUL byte: the difference is that of the rules that a store reads.

namespace {

using namespace quorvane;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string_view before = bytes.substr(0, bytes.find('\0'));
    const std::string_view rest = bytes.substr(std::min(before.size() + 1, bytes.size()));
    const std::string_view after = rest.substr(0, rest.find('\0'));
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
