#include "cli/RuleJson.h"
#include "cli/WantedRules.h"
#include "fuzz/FuzzedTexts.h"
#include "platform/Unicode.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"

#include <cstdint>
#include <string>
#include <string_view>

// Reads any text as rules to apply, JSON or not: rules that were read must print as JSON and read back.

using namespace quorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!platform::isValidUtf8(text) || text.find('\0') != std::string_view::npos)
        return 0;
    const cli::WantedRules wanted = cli::readWantedRules(text);
    fuzz::require(!wanted.problem || wanted.rules.empty());
    std::string printed;
    for (const workflow::WantedRule& rule : wanted.rules)
        printed += cli::jsonLine(cli::propertiesJson(rule.rule));
    const cli::WantedRules again = cli::readWantedRules(printed);
    fuzz::require(!again.problem && again.rules.size() == wanted.rules.size());
    for (std::size_t i = 0; i < wanted.rules.size(); ++i) {
        fuzz::require(isEqualRule(again.rules[i].rule, wanted.rules[i].rule));
        fuzz::require(hasSameMarks(again.rules[i].rule, wanted.rules[i].rule));
    }
    return 0;
}
