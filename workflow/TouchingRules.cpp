#include "workflow/TouchingRules.h"

#include "rules/ApplicationIdentity.h"
#include "rules/PathCover.h"

namespace quorvane {

namespace {

// "any", "any via …", "any ancestor …": these rules are about every program, in some circumstances.
bool isAnyProgram(std::string_view program)
{
    return program == "any" || program.starts_with("any via ") || program.starts_with("any ancestor ");
}

bool isOfProcess(const NullableText& ofRule, const std::string& asked)
{
    if (ofRule.isNull())
        return false;
    const std::string program = applicationPathForProcess(ofRule);
    return ofRule.view() == asked || program == asked || isAnyProgram(program);
}

} // namespace

bool touches(const RuleRef& rule, const TouchQuestion& question)
{
    return askRule(rule, [&question](const auto& record) {
        const auto& fields = record.fields();
        return coversPath(fields, question.path)
            && (!question.process || isOfProcess(fields.processName, *question.process))
            && (!question.operations || (fields.operations & *question.operations) != 0);
    });
}

} // namespace quorvane
