#include "rules/JoinedLines.h"
#include "rules/RuleCodes.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// Separates files of any bytes: further rules must have a known class and type, lines be in order, and files
// without joined lines stay unchanged.

namespace {

using namespace quorvane;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

bool hasKnownClassAndType(const rules::RuleValue& rule)
{
    const auto* policy = std::get_if<rules::PolicyValue>(&rule);
    const bool isKnownType
        = askValue(rule, [](const auto& fields) { return fields.policyType != rules::unknownCode; });
    return isKnownType && (policy == nullptr || (*policy)->policyClass != rules::unknownCode);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<rules::JoinedLine> lines = rules::joinedLines(bytes);
    const char* behind = bytes.data();
    for (const rules::JoinedLine& line : lines) {
        require(line.rules.size() > 1 && line.text.data() >= behind);
        for (std::size_t i = 1; i < line.rules.size(); ++i)
            require(hasKnownClassAndType(line.rules[i].rule));
        behind = line.text.data() + line.text.size();
    }
    require(behind <= bytes.data() + bytes.size());
    const std::string rescued = rules::rescuedText(bytes);
    require(lines.empty() ? rescued == bytes : rescued != bytes);
    return 0;
}
