#include "workflow/PlannedChange.h"

#include "rules/ApplicationIdentity.h"
#include "rules/CoverIndex.h"
#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"
#include "rules/RuleNumbering.h"
#include "rules/RulesFile.h"
#include "workflow/DifferenceText.h"
#include "workflow/ProgramBinding.h"
#include "workflow/RuleEdits.h"
#include "workflow/UnwritableRules.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

namespace quorvane::workflow {

namespace {

struct Wanted {
    rules::RuleRef rule;
    rules::RuleValue before;
    rules::RuleValue after;
};

bool isOfSameGroup(const rules::RuleValue& a, const rules::RuleValue& b)
{
    const auto* first = std::get_if<rules::PolicyValue>(&a);
    const auto* second = std::get_if<rules::PolicyValue>(&b);
    return first == nullptr || second == nullptr || isOfSameApplication(**first, **second);
}

std::unordered_set<const void*> addressesOf(const std::vector<rules::RuleRef>& rules)
{
    std::unordered_set<const void*> addresses;
    for (const rules::RuleRef& rule : rules)
        addresses.insert(addressOf(rule));
    return addresses;
}

// Why a rule of the change would not survive the file; none when all do.
std::optional<std::string> whyAnyIsUnwritable(
    const rules::RulesDifference& difference, rules::LineEnds lineEnds)
{
    for (const rules::RuleValue& added : difference.added) {
        if (auto reason = whyUnwritable(added, lineEnds))
            return reason;
    }
    for (const auto& [before, after] : difference.changed) {
        if (auto reason = whyUnwritable(after, lineEnds))
            return reason;
    }
    return std::nullopt;
}

// Why writing the file would damage a rule outside the change; none when it would not. A rule that is cut
// already harms none when it stays the last one.
std::optional<std::string> whyDamaging(
    const rules::ChangeSet& change, const rules::RuleManager& store, rules::LineEnds lineEnds)
{
    if (lineEnds != rules::LineEnds::cut)
        return std::nullopt;
    std::unordered_set<const void*> replaced;
    for (const rules::ChangeSet::Removal& removal : change.removed)
        replaced.insert(addressOf(removal.rule));
    for (const rules::ChangeSet::Change& each : change.changed)
        replaced.insert(addressOf(each.rule));
    const std::vector<rules::RuleRef> all = store.userRules();
    const auto cut = std::find_if(all.begin(), all.end(), [&](const rules::RuleRef& rule) {
        return !replaced.contains(addressOf(rule)) && needsWholeLines(valueOf(rule));
    });
    if (cut == all.end())
        return std::nullopt;
    if (std::next(cut) == all.end() && change.added.empty()) {
        const auto present = rules::RulesFileText::read(store.locations().userRulesFile());
        return whyRewritingCuts({*cut}, present.text(), lineEnds);
    }
    return "writing the rules file would cut another rule: " + wholeLinesAdvice() + ": "
        + ruleText(valueOf(*cut));
}

// Refuses a change after which a written rule would not read back.
void refuseDamage(PlannedChange& plan, const rules::RuleManager& store, rules::LineEnds lineEnds)
{
    if (plan.refusal || plan.change.isEmpty())
        return;
    plan.refusal = whyAnyIsUnwritable(plan.difference, lineEnds);
    if (!plan.refusal)
        plan.refusal = whyDamaging(plan.change, store, lineEnds);
    if (!plan.refusal)
        return;
    plan.wantsWholeLines
        = lineEnds == rules::LineEnds::cut && !whyAnyIsUnwritable(plan.difference, rules::LineEnds::whole);
    plan.change = {};
}

void changeRule(PlannedChange& plan, const Wanted& wanted)
{
    plan.difference.changed.emplace_back(wanted.before, wanted.after);
    if (isOfSameGroup(wanted.before, wanted.after)) {
        plan.change.changed.push_back({wanted.rule, wanted.before, wanted.after});
    } else {
        plan.change.removed.push_back({wanted.rule});
        plan.change.added.push_back({wanted.rule, wanted.after});
    }
}

void removeRule(PlannedChange& plan, const rules::RuleRef& rule, const rules::RuleValue& value)
{
    plan.difference.removed.push_back(value);
    plan.change.removed.push_back({rule});
}

// A rule that becomes equal to an existing or already planned one is removed instead.
void planAll(PlannedChange& plan, const rules::RuleManager& store, const std::vector<Wanted>& wanted)
{
    std::unordered_set<const void*> moving;
    for (const Wanted& each : wanted) {
        if (!isEqualRule(each.before, each.after))
            moving.insert(addressOf(each.rule));
    }
    std::vector<rules::RuleValue> staying;
    for (const rules::RuleRef& rule : moving.empty() ? std::vector<rules::RuleRef>() : store.userRules()) {
        if (!moving.contains(addressOf(rule)))
            staying.push_back(valueOf(rule));
    }
    rules::RuleNumbering known;
    for (const rules::RuleValue& rule : staying)
        known.numberOf(rule);
    for (const Wanted& each : wanted) {
        const std::size_t before = known.size();
        const bool isThere = moving.contains(addressOf(each.rule)) && known.numberOf(each.after) < before;
        if (isThere)
            removeRule(plan, each.rule, each.before);
        else
            changeRule(plan, each);
    }
}

template <class Fields> void setClass(Fields& rule, std::int32_t ruleClass)
{
    if constexpr (std::is_same_v<Fields, rules::PolicyRuleFields>)
        rule.policyClass = ruleClass;
}

std::uint32_t patched(std::uint32_t operations, const RulePatch::Operations& patch)
{
    switch (patch.kind) {
    case RulePatch::Operations::replaced:
        return patch.operations;
    case RulePatch::Operations::added:
        return operations | patch.operations;
    case RulePatch::Operations::removed:
        return operations & ~patch.operations;
    }
    return operations;
}

// Determines the constraints for a patch, reading each program once.
class Bindings {
public:
    Bindings(ProgramFacts& facts, std::vector<std::string>& remarks)
        : m_facts(facts)
        , m_remarks(remarks)
    {
    }

    // None where the constraint stays.
    std::optional<rules::NullableText> constraintFor(const rules::NullableText& process)
    {
        const std::string program = decidingProgram(process);
        const auto known = m_known.find(program);
        return known != m_known.end() ? known->second : m_known.emplace(program, find(program)).first->second;
    }

private:
    std::optional<rules::NullableText> find(const std::string& program)
    {
        const ProgramBinding binding = bindingOf(program, m_facts);
        if (binding.program == ProgramBinding::seen)
            return rules::NullableText(binding.constraint);
        m_remarks.push_back("the constraint stays for '"
            + (program.empty() ? std::string(rules::ProcessForm::any) : program)
            + "': " + whyUnbound(program, binding));
        return std::nullopt;
    }

    static const char* whyUnbound(std::string_view program, const ProgramBinding& binding)
    {
        using namespace rules::ProcessForm;
        if (program.empty() || program.starts_with(anyVia) || program.starts_with(anyAncestor))
            return "there is no single program to bind it to";
        return binding.program == ProgramBinding::gone ? "the program is not there"
                                                       : "the program cannot be read";
    }

    ProgramFacts& m_facts;
    std::vector<std::string>& m_remarks;
    std::unordered_map<std::string, std::optional<rules::NullableText>> m_known;
};

void setConstraint(rules::PolicyRuleFields& rule, const RulePatch& patch, Bindings& bindings)
{
    if (patch.isBoundToProgram)
        rule.constraint = bindings.constraintFor(rule.processName).value_or(rule.constraint);
    else if (patch.constraint)
        rule.constraint = *patch.constraint;
}

void setConstraint(rules::WatchRuleFields&, const RulePatch&, Bindings&) { }

std::string withoutQuotes(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
    return text;
}

// Replaces the path in a process string, keeping the text from " (-" on.
std::string movedPath(std::string_view path, std::string_view from, std::string_view to)
{
    const std::string_view program = path.substr(0, path.find(" (-"));
    if (program != from)
        return std::string(path);
    return std::string(to).append(path.substr(program.size()));
}

// The process of a rule's copy for the program at `program`.
std::string copiedProcess(const std::string& process, const std::string& program)
{
    for (const std::string_view form : {rules::ProcessForm::anyVia, rules::ProcessForm::anyAncestor}) {
        if (process.starts_with(form))
            return std::string(form).append(program);
    }
    return process == "any"
        ? program
        : movedProcess(process, applicationPathForProcess(rules::NullableText(process)), program);
}

// The rules of an application group that stay, indexed as in the store.
class CoveringGroup {
public:
    void add(const rules::PolicyRulePtr& rule)
    {
        m_slotOf.emplace(rule.get(), m_slots.size());
        m_slots.push_back(rule);
    }

    // Removes the rule when another one covers it.
    bool release(const rules::PolicyRule& rule)
    {
        if (!m_index)
            m_index = std::make_unique<rules::CoverIndex>(m_slots);
        if (m_index->firstCovering(rule) == nullptr)
            return false;
        m_index->remove(m_slotOf.at(&rule), rule.fields());
        return true;
    }

private:
    std::vector<rules::PolicyRulePtr> m_slots;
    std::unordered_map<const rules::PolicyRule*, std::size_t> m_slotOf;
    std::unique_ptr<rules::CoverIndex> m_index; // of the slots, built when they are complete
};

using CoveringGroups = std::unordered_map<std::string, CoveringGroup>; // by application group identity

// The groups of those of `rules` that are not gone, without the rules that are.
CoveringGroups coveringGroups(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const std::unordered_set<const void*>& isGone)
{
    CoveringGroups groups;
    for (const rules::RuleRef& rule : rules) {
        if (const rules::PolicyRule* policy = policyRuleIn(rule);
            policy != nullptr && !isGone.contains(policy))
            groups[applicationGroupIdentityForRule(*policy)];
    }
    if (groups.empty())
        return groups;
    for (const rules::RuleRef& rule : store.allRules()) {
        const auto* policy = std::get_if<rules::PolicyRulePtr>(&rule);
        if (policy == nullptr || isGone.contains(policy->get()))
            continue;
        if (const auto group = groups.find(applicationGroupIdentityForRule(**policy)); group != groups.end())
            group->second.add(*policy);
    }
    return groups;
}

} // namespace

PlannedChange patchingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const RulePatch& patch, ProgramFacts& facts, rules::LineEnds lineEnds)
{
    PlannedChange plan;
    Bindings bindings(facts, plan.remarks);
    const std::optional<rules::NullableText> tag
        = patch.tag ? std::optional<rules::NullableText>(withoutQuotes(*patch.tag)) : std::nullopt;
    std::vector<Wanted> wanted;
    for (const rules::RuleRef& rule : rules) {
        const bool isWatch = policyRuleIn(rule) == nullptr;
        if (patch.ruleClass && (*patch.ruleClass == rules::PolicyClass::watch) != isWatch) {
            plan.refusal = std::string(isWatch ? "a watch rule stays one: "
                                               : "an allow or deny rule does not become a watch rule: ")
                + ruleText(valueOf(rule));
            return plan;
        }
        const rules::RuleValue before = valueOf(rule);
        const rules::RuleValue after = askValue(before, [&](auto fields) {
            fields.tag = tag.value_or(fields.tag);
            if (patch.ruleClass)
                setClass(fields, *patch.ruleClass);
            if (patch.operations)
                fields.operations = patched(fields.operations, *patch.operations);
            setConstraint(fields, patch, bindings);
            return rules::RuleValue(makeRuleValue(std::move(fields)));
        });
        if (isEqualWithMarks(before, after))
            ++plan.unchanged;
        else
            wanted.push_back({rule, before, after});
    }
    planAll(plan, store, wanted);
    refuseDamage(plan, store, lineEnds);
    return plan;
}

std::string movedProcess(const std::string& process, const std::string& from, const std::string& to)
{
    constexpr std::string_view via = " via ";
    const std::string head = rules::applicationHeadForProcess(process);
    const std::string_view rest = std::string_view(process).substr(head.size());
    std::string moved = head.starts_with(rules::ProcessForm::anyAncestor)
        ? std::string(rules::ProcessForm::anyAncestor)
            + movedPath(std::string_view(head).substr(rules::ProcessForm::anyAncestor.size()), from, to)
        : movedPath(head, from, to);
    return rest.empty() ? moved : moved.append(via).append(movedPath(rest.substr(via.size()), from, to));
}

PlannedChange movingOf(
    const rules::RuleManager& store, const std::string& from, const std::string& to, rules::LineEnds lineEnds)
{
    PlannedChange plan;
    std::vector<Wanted> wanted;
    for (const rules::RuleRef& rule : store.userRules()) {
        const rules::RuleValue before = valueOf(rule);
        const std::string process(
            askValue(before, [](const auto& fields) { return fields.processName.view(); }));
        const std::string moved = movedProcess(process, from, to);
        if (moved == process)
            continue;
        wanted.push_back({rule, before, askValue(before, [&moved](auto fields) {
                              fields.processName = moved;
                              return rules::RuleValue(makeRuleValue(std::move(fields)));
                          })});
    }
    planAll(plan, store, wanted);
    refuseDamage(plan, store, lineEnds);
    return plan;
}

PlannedChange copyingOf(const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules,
    const std::string& program, ProgramFacts& facts, rules::LineEnds lineEnds)
{
    std::vector<std::string> remarks;
    Bindings bindings(facts, remarks);
    std::vector<rules::RuleValue> copies;
    for (const rules::RuleRef& rule : rules) {
        copies.push_back(askValue(newCopyOf(valueOf(rule)), [&](auto fields) {
            fields.processName = copiedProcess(std::string(fields.processName.view()), program);
            setConstraint(fields, {.isBoundToProgram = true}, bindings);
            return rules::RuleValue(makeRuleValue(std::move(fields)));
        }));
    }
    PlannedChange plan = addingOf(store, copies, lineEnds);
    plan.remarks = std::move(remarks);
    return plan;
}

PlannedChange addingOf(
    const rules::RuleManager& store, const std::vector<rules::RuleValue>& values, rules::LineEnds lineEnds)
{
    std::vector<rules::RuleValue> present; // must outlive the numbering
    for (const rules::RuleRef& rule : store.userRules())
        present.push_back(valueOf(rule));
    rules::RuleNumbering known;
    for (const rules::RuleValue& rule : present)
        known.numberOf(rule);
    PlannedChange plan;
    for (const rules::RuleValue& value : values) {
        const std::size_t before = known.size();
        if (known.numberOf(value) < before) {
            ++plan.unchanged;
            continue;
        }
        plan.difference.added.push_back(value);
        plan.change.added.push_back({recordOf(value), value});
    }
    refuseDamage(plan, store, lineEnds);
    return plan;
}

PlannedChange removalOf(
    const rules::RuleManager& store, const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds)
{
    PlannedChange plan;
    for (const rules::RuleRef& rule : rules)
        removeRule(plan, rule, valueOf(rule));
    refuseDamage(plan, store, lineEnds);
    return plan;
}

// Removes one rule after the other from an index of those that stay, so that rules which cover each other
// never all go.
std::vector<rules::RuleRef> dispensableRules(const rules::RuleManager& store,
    const std::vector<rules::RuleRef>& rules, const std::vector<rules::RuleRef>& gone)
{
    const std::unordered_set<const void*> isGone = addressesOf(gone);
    CoveringGroups groups = coveringGroups(store, rules, isGone);
    std::vector<rules::RuleRef> dispensable;
    for (const rules::RuleRef& rule : rules) {
        const rules::PolicyRule* policy = policyRuleIn(rule);
        const bool goesAnyway = isGone.contains(addressOf(rule));
        if (goesAnyway
            || (policy != nullptr && groups.at(applicationGroupIdentityForRule(*policy)).release(*policy)))
            dispensable.push_back(rule);
    }
    return dispensable;
}

} // namespace quorvane::workflow
