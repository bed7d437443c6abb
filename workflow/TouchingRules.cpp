#include "workflow/TouchingRules.h"

#include "rules/ApplicationIdentity.h"
#include "rules/PathCover.h"

namespace quorvane {

namespace {

// "any", "any via …", "any ancestor …": these rules are about every program, in some circumstances.
bool isAnyProgram(std::string_view program)
{
    return program == ProcessForm::any || program.starts_with(ProcessForm::anyVia)
        || program.starts_with(ProcessForm::anyAncestor);
}

bool isOfProcess(const NullableText& ofRule, const std::string& asked)
{
    if (ofRule.isNull())
        return false;
    const std::string program = applicationPathForProcess(ofRule);
    return ofRule.view() == asked || program == asked || isAnyProgram(program);
}

template <class Fields> bool fieldsTouch(const Fields& fields, const TouchQuestion& question)
{
    return coversPath(fields, question.path)
        && (!question.process || isOfProcess(fields.processName, *question.process))
        && (!question.operations || (fields.operations & *question.operations) != 0);
}

template <class Fields> std::string whyPath(const Fields& rule)
{
    if (isEveryPath(rule.path))
        return "every path";
    switch (rule.policyType) {
    case PolicyType::path:
        return "the path itself";
    case PolicyType::prefix:
        return "begins with it";
    default:
        return "ends with it";
    }
}

std::string whyProgram(const NullableText& process, const TouchQuestion& question)
{
    const std::string program = applicationPathForProcess(process);
    if (!isAnyProgram(program))
        return question.process ? "this program" : "program: " + std::string(process.view());
    constexpr std::string_view any = "any";
    return "any program" + std::string(process.view().substr(any.size())); // with its circumstances
}

} // namespace

bool touches(const RuleRef& rule, const TouchQuestion& question)
{
    return askRule(rule, [&question](const auto& record) { return fieldsTouch(record.fields(), question); });
}

bool touches(const RuleValue& rule, const TouchQuestion& question)
{
    return askValue(rule, [&question](const auto& fields) { return fieldsTouch(fields, question); });
}

std::string whyTouches(const RuleValue& rule, const TouchQuestion& question)
{
    // The table names the program of an allow or deny rule, and of no other.
    const bool namesProgram = question.process || std::holds_alternative<WatchValue>(rule);
    return askValue(rule, [&](const auto& fields) {
        return namesProgram ? whyPath(fields) + "; " + whyProgram(fields.processName, question)
                            : whyPath(fields);
    });
}

} // namespace quorvane
