#include "workflow/RuleSentence.h"

#include "rules/ApplicationIdentity.h"
#include "rules/PathCover.h"
#include "rules/RuleCodes.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/DifferenceText.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::workflow {

namespace {

struct Operation {
    std::uint32_t bit;
    std::string_view infinitive;
    std::string_view present;
};
constexpr std::array<Operation, 5> operations{{{1, "read", "reads"}, {2, "write", "writes"},
    {4, "create", "creates"}, {8, "mount", "mounts"}, {16, "execute", "executes"}}};

// "read, write and create".
std::string operationWords(
    std::uint32_t bits, std::string_view Operation::*form, std::string_view conjunction)
{
    std::vector<std::string_view> verbs;
    for (const Operation& operation : operations) {
        if ((bits & operation.bit) != 0)
            verbs.push_back(operation.*form);
    }
    std::string words;
    for (std::size_t verb = 0; verb < verbs.size(); ++verb) {
        if (verb > 0)
            words.append(verb + 1 == verbs.size() ? conjunction : ", ");
        words.append(verbs[verb]);
    }
    return words;
}

std::string nameOf(std::string_view path)
{
    return applicationNameForProcess(rules::NullableText(std::string(path)));
}

// The program that the rule applies to. `any` is the first word of "any program": "Any", "No" or "any".
std::string programWords(const rules::NullableText& process, std::string_view any)
{
    const std::string head = applicationHeadForProcess(process);
    if (head.starts_with(rules::ProcessForm::anyAncestor))
        return std::string(any) + " program that descends from "
            + nameOf(head.substr(rules::ProcessForm::anyAncestor.size()));
    if (head.starts_with(rules::ProcessForm::anyVia))
        return std::string(any) + " program started by "
            + nameOf(head.substr(rules::ProcessForm::anyVia.size()));
    const std::string program = head == "any" ? std::string(any) + " program"
        : head.empty()                        ? "A program without a name"
                                              : applicationNameForProcess(process);
    const auto parent = applicationParentPathForProcess(process);
    if (!parent)
        return program;
    return program + (parent == "any" ? ", whoever started it," : " started by " + nameOf(*parent));
}

// What a path that is not an ordinary file denotes; empty for others.
std::string_view resourceWords(std::string_view path)
{
    constexpr std::array<std::array<std::string_view, 2>, 6> resources{
        {{":NVRAM/", " (settings of the firmware)"}, {":ATTACH/", " (attaching to other programs)"},
            {":IOKIT/", " (devices)"}, {":KMOD/", " (extensions of the kernel)"}, {"/dev/", " (devices)"},
            {"~/", " (in the home folder)"}}};
    for (const auto& [start, words] : resources) {
        if (path.starts_with(start))
            return words;
    }
    return {};
}

std::string pathWords(const rules::NullableText& path, std::int32_t type)
{
    if (path.isNull())
        return "no path";
    if (isEveryPath(path))
        return "anything";
    const std::string text(path.view());
    switch (type) {
    case rules::PolicyType::prefix:
        return (text.ends_with('/') ? "anything in " : "anything whose path begins with ") + text
            + std::string(resourceWords(text));
    case rules::PolicyType::path:
        return text + std::string(resourceWords(text));
    case rules::PolicyType::suffix:
        return "anything whose path ends with " + text;
    default:
        return text + " (in a way that is not known)";
    }
}

std::string sentence(const rules::WatchRuleFields& rule, const std::string& path)
{
    return "It is reported when " + programWords(rule.processName, "any") + " "
        + operationWords(rule.operations, &Operation::present, " or ") + " " + path + ".";
}

std::string sentence(const rules::PolicyRuleFields& rule, const std::string& path)
{
    switch (rule.policyClass) {
    case rules::PolicyClass::allow:
        return programWords(rule.processName, "Any") + " may "
            + operationWords(rule.operations, &Operation::infinitive, " and ") + " " + path + ".";
    case rules::PolicyClass::deny: {
        // "Any program may not" would be ambiguous: some might.
        const std::string program = programWords(rule.processName, "No");
        return program + (program.starts_with("No program") ? " may " : " may not ")
            + operationWords(rule.operations, &Operation::infinitive, " or ") + " " + path + ".";
    }
    default:
        return "The class of this rule is not known; it is about " + programWords(rule.processName, "any")
            + " and " + path + ".";
    }
}

template <class Fields> bool namesNoOperation(const Fields& rule)
{
    return operationWords(rule.operations, &Operation::infinitive, " and ").empty();
}

void addDetail(std::string& details, std::string_view detail)
{
    details.append(details.empty() ? "" : " \u00b7 ").append(detail);
}

std::string_view withoutForm(std::string_view head)
{
    for (const std::string_view form : {rules::ProcessForm::anyAncestor, rules::ProcessForm::anyVia}) {
        if (head.starts_with(form))
            return head.substr(form.size());
    }
    return head;
}

void addPrograms(std::string& details, const rules::NullableText& process)
{
    const std::string head = applicationHeadForProcess(process);
    if (head != "any" && !head.empty())
        addDetail(details, withoutForm(head));
    const auto parent = applicationParentPathForProcess(process);
    if (parent && parent != "any")
        addDetail(details, "started by " + *parent);
}

void addMarks(std::string& details, const rules::PolicyRuleFields& rule)
{
    addDetail(details, constraintWords(rule.constraint.view()));
    if (rule.created != 0)
        addDetail(details, "made " + timeText(rule.created));
}

void addMarks(std::string&, const rules::WatchRuleFields&) { }

} // namespace

std::string ruleSentence(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) {
        const std::string path = pathWords(fields.path, fields.policyType);
        if (namesNoOperation(fields))
            return "This rule names no operation; it is about " + programWords(fields.processName, "any")
                + " and " + path + ".";
        return sentence(fields, path);
    });
}

std::string ruleDetails(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) {
        std::string details;
        addPrograms(details, fields.processName);
        addMarks(details, fields);
        if (!fields.tag.view().empty())
            addDetail(details, "tag " + std::string(fields.tag.view()));
        if (fields.system)
            addDetail(details, "a system rule");
        return details;
    });
}

std::string constraintWords(std::string_view constraint)
{
    if (constraint == platformMarker)
        return "bound to the operating system's own programs";
    switch (constraintKind(constraint)) {
    case ConstraintKind::none:
        return "bound to nothing but its path";
    case ConstraintKind::sha1:
        return "bound to the file with SHA-1 " + std::string(constraint);
    case ConstraintKind::sha256:
        return "bound to the file with SHA-256 " + std::string(constraint);
    case ConstraintKind::team:
        break;
    }
    return "bound to team " + std::string(constraint);
}

} // namespace quorvane::workflow
