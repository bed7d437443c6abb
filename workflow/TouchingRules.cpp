#include "workflow/TouchingRules.h"

#include "rules/ApplicationIdentity.h"
#include "rules/PathCover.h"

namespace quorvane::workflow {

namespace {

// "any", "any via …", "any ancestor …": these rules apply to every program, in some circumstances.
bool isAnyProgram(std::string_view program)
{
    return program == rules::ProcessForm::any || program.starts_with(rules::ProcessForm::anyVia)
        || program.starts_with(rules::ProcessForm::anyAncestor);
}

bool isOfProcess(const rules::NullableText& ofRule, const std::string& asked)
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
    case rules::PolicyType::path:
        return "the path itself";
    case rules::PolicyType::prefix:
        return "begins with it";
    default:
        return "ends with it";
    }
}

std::string whyProgram(const rules::NullableText& process, const TouchQuestion& question)
{
    const std::string program = applicationPathForProcess(process);
    if (!isAnyProgram(program))
        return question.process ? "this program" : "program: " + std::string(process.view());
    constexpr std::string_view any = "any";
    return "any program" + std::string(process.view().substr(any.size())); // including the circumstances
}

} // namespace

bool touches(const rules::RuleRef& rule, const TouchQuestion& question)
{
    return visitRule(
        rule, [&question](const auto& record) { return fieldsTouch(record.fields(), question); });
}

bool touches(const rules::RuleValue& rule, const TouchQuestion& question)
{
    return askValue(rule, [&question](const auto& fields) { return fieldsTouch(fields, question); });
}

std::string whyTouches(const rules::RuleValue& rule, const TouchQuestion& question)
{
    // The table shows the program of allow and deny rules only.
    const bool namesProgram = question.process || std::holds_alternative<rules::WatchValue>(rule);
    return askValue(rule, [&](const auto& fields) {
        return namesProgram ? whyPath(fields) + "; " + whyProgram(fields.processName, question)
                            : whyPath(fields);
    });
}

} // namespace quorvane::workflow
