#include "workflow/RuleLikeness.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"

#include <bitset>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace quorvane::workflow {

namespace {

std::string classOf(const rules::PolicyRule& rule)
{
    return std::to_string(rule.policyClass());
}
std::string classOf(const rules::WatchRule&)
{
    return std::to_string(rules::PolicyClass::watch);
}

// The trait of the rule as a text for comparison.
std::string traitOf(const rules::RuleRef& rule, RuleTrait trait)
{
    return visitRule(rule, [trait](const auto& record) -> std::string {
        switch (trait) {
        case RuleTrait::ruleClass:
            return classOf(record);
        case RuleTrait::type:
            return std::to_string(record.policyType());
        case RuleTrait::state:
            return std::to_string(record.getRuleState());
        case RuleTrait::tag:
            return std::string(record.tag().view());
        case RuleTrait::program:
            return applicationPathForProcess(record.processName());
        }
        return {};
    });
}

} // namespace

std::vector<rules::RuleRef> rulesLike(const RulesSelection& selection, RuleTrait trait)
{
    std::unordered_set<std::string> wanted;
    selection.forEach([&](const rules::RuleRef& rule) { wanted.insert(traitOf(rule, trait)); });
    std::vector<rules::RuleRef> alike;
    selection.forEachShown([&](const rules::RuleRef& rule) {
        if (wanted.contains(traitOf(rule, trait)))
            alike.push_back(rule);
    });
    return alike;
}

std::vector<rules::RuleRef> rulesWithSameProblem(
    const RulesSelection& selection, const ProblemLists& problems)
{
    using Kinds = std::bitset<findingKindCount>;
    std::unordered_map<const void*, Kinds> kinds; // by address of the record
    for (const FindingKind kind : allFindingKinds) {
        for (const KnownProblem& problem : problems.of(kind))
            kinds[addressOf(problem.rule)].set(static_cast<std::size_t>(kind));
    }
    const auto kindsOf = [&kinds](const rules::RuleRef& rule) {
        const auto found = kinds.find(addressOf(rule));
        return found == kinds.end() ? Kinds() : found->second;
    };
    Kinds wanted;
    selection.forEach([&](const rules::RuleRef& rule) { wanted |= kindsOf(rule); });
    std::vector<rules::RuleRef> alike;
    selection.forEachShown([&](const rules::RuleRef& rule) {
        if ((kindsOf(rule) & wanted).any())
            alike.push_back(rule);
    });
    return alike;
}

} // namespace quorvane::workflow
