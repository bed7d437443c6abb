#include "workflow/RuleProblems.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleProperties.h"
#include "rules/RuleRef.h"
#include "workflow/RuleSentence.h"
#include "workflow/UnwritableRules.h"

#include <utility>

namespace quorvane::workflow {

namespace {

using Fix = RuleProblem::Fix;

rules::NullableText processOf(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return fields.processName; });
}

std::string constraintOf(const rules::RuleValue& rule)
{
    const auto* policy = std::get_if<rules::PolicyValue>(&rule);
    return policy == nullptr ? std::string() : std::string((*policy)->constraint.view());
}

// Describes what the constraint demands and what the program is now.
std::string mismatchText(const rules::RuleValue& rule, ProgramFacts& facts)
{
    const std::string program = applicationPathForProcess(processOf(rule));
    const std::string stored = constraintOf(rule);
    const auto digestText = [&stored](const std::optional<std::string>& now) {
        return "Digest differs: stored " + stored
            + (now ? ", now " + *now + "." : ", and the program cannot be read.");
    };
    if (constraintKind(stored) == ConstraintKind::sha1)
        return digestText(facts.sha1(program));
    if (constraintKind(stored) == ConstraintKind::sha256)
        return digestText(facts.sha256(program));
    const auto team = facts.team(program);
    return "Team differs: stored " + stored + ", now "
        + (team && !team->empty() ? *team : std::string("none that is proven")) + ".";
}

RuleProblem programProblem(const rules::RuleValue& rule, ProgramFault fault, const RulesPlace& place)
{
    constexpr FindingKind kind = FindingKind::invalidProgram;
    switch (fault) {
    case ProgramFault::missing:
        return {kind,
            "Program is gone: nothing exists at " + applicationPathForProcess(processOf(rule)) + ".",
            "The rule waits for a program that is not there. If it has moved, choose where it is now: all "
            "of its rules follow it.",
            Fix::chooseProgram};
    case ProgramFault::parentMissing:
        return {kind,
            "Parent program is gone: nothing exists at "
                + applicationParentPathForProcess(processOf(rule)).value_or("") + ".",
            "The rule holds only for programs that this one has started. If it has moved, choose where it "
            "is now: all of its rules follow it.",
            Fix::chooseParent};
    case ProgramFault::constraintMismatch:
        break;
    }
    return {kind, mismatchText(rule, place.facts()),
        "The program is not the one that the rule was made for: an update has replaced it, or something "
        "else has. Bind the rule anew only if you trust the program that is there now.",
        Fix::rebind};
}

std::string unwritableText(const rules::RuleValue& rule, rules::LineEnds lineEnds)
{
    return "Does not read back: "
        + whyUnwritable(rule, lineEnds).value_or("other programs may read its line cut short") + ".";
}

} // namespace

RuleProblem problemOf(const rules::RuleValue& rule, const RuleFinding& finding, const RulesPlace& place,
    rules::LineEnds lineEnds)
{
    switch (finding.kind) {
    case FindingKind::invalidProgram:
        return programProblem(rule, finding.programFault.value_or(ProgramFault::missing), place);
    case FindingKind::missingPath:
        return {finding.kind, "Path is gone: nothing exists at " + pathOf(rule) + ".",
            "A rule about a path that is not there has nothing to do. It may come back: with a volume that "
            "is mounted, or when a program makes it.",
            Fix::drop};
    case FindingKind::doesNotReadBack:
        return {finding.kind, unwritableText(rule, lineEnds),
            "The rule is right while the program runs, but the rules file cannot hold it as it is. Edit "
            "what the file has no place for."};
    case FindingKind::unproven:
        return {finding.kind, findingText(finding),
            "Anybody can sign a program with a team's name under an authority of their own. Whoever did so "
            "here satisfies the rule."};
    case FindingKind::redundant:
    case FindingKind::joined:
    case FindingKind::overlap:
        break;
    }
    return {finding.kind, findingText(finding), std::string(findingKindText(finding.kind))};
}

std::vector<RuleProblem> problemsOfRuleAlone(
    const rules::RuleValue& rule, const RulesPlace& place, rules::LineEnds lineEnds)
{
    std::vector<RuleProblem> problems;
    // A separate record: the stored one may change concurrently.
    for (const RuleFinding& finding : findingsOfRuleAlone(recordOf(rule), {FindingKinds::all(), place}))
        problems.push_back(problemOf(rule, finding, place, lineEnds));
    return problems;
}

RuleProblem problemWith(FindingKind kind, const rules::RuleValue& other)
{
    if (kind == FindingKind::overlap)
        return {kind, "Overlaps with: " + ruleSentence(other),
            "One of the two allows what the other denies. Which of them wins is decided where rules are "
            "enforced. Often this is meant: a narrow rule makes an exception from a wide one."};
    return {kind, "Covered by: " + ruleSentence(other),
        "The other rule is about the same program and says all that this one says, so this one can go "
        "without a change of effect.",
        Fix::drop};
}

std::optional<rules::RuleRef> storedCoveringRule(const rules::RuleManager& store, const rules::RuleRef& rule)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    const rules::PolicyRule* covering = policy == nullptr ? nullptr : store.coveringRule(*policy);
    // Rules are stored by reference: the first equal one covers as well.
    return covering == nullptr ? std::nullopt
                               : store.firstEqualRule(recordOf(covering->value()), {addressOf(rule)});
}

} // namespace quorvane::workflow
