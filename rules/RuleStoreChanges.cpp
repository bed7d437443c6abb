#include "rules/RuleStore.h"

#include "rules/ApplicationIdentity.h"

#include <algorithm>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

const void* recordIn(const RuleRef& rule)
{
    return askRule(rule, [](const auto& record) -> const void* { return &record; });
}

// The slot for a rule that is added at that place; the end where its neighbour is gone.
template <class Rule> std::size_t slotFor(const RuleList<Rule>& list, const ChangeSet::Place& place)
{
    if (place.kind == ChangeSet::Place::start)
        return 0;
    if (place.kind == ChangeSet::Place::behind && place.rule) {
        const auto* neighbour = std::get_if<std::shared_ptr<Rule>>(&*place.rule);
        const std::size_t slot = neighbour == nullptr ? list.noSlot : list.slotOf(**neighbour);
        if (slot != list.noSlot)
            return slot + 1;
    }
    return list.slots().size();
}

// Calls `use` with a list and a record of its kind.
template <class AnyList, class Use> void withList(const AnyList& anyList, const RuleRef& rule, const Use& use)
{
    if (const auto* policies = std::get_if<RuleList<PolicyRule>*>(&anyList))
        use(**policies, std::get<PolicyRulePtr>(rule));
    else
        use(*std::get<RuleList<WatchRule>*>(anyList), std::get<WatchRulePtr>(rule));
}

} // namespace

// What is going to be done, with the lists in which it is.
struct RuleStore::Plan {
    ChangeSet changes;
    std::vector<AnyList> removedFrom;
    std::vector<AnyList> addedTo;
};

// First everything is decided and gets its memory, then everything is done, which needs none.
ChangeSet RuleStore::apply(const ChangeSet& changes)
{
    const std::size_t newGroups = m_newGroups.size();
    Plan plan = planOf(changes);
    std::size_t prepared = 0;
    try {
        for (; prepared < plan.changes.added.size(); ++prepared) {
            plan.addedTo.push_back(listFor(plan.changes.added[prepared].value));
            withList(plan.addedTo.back(), plan.changes.added[prepared].rule,
                [](auto& list, const auto& rule) { list.prepare(*rule); });
        }
    } catch (const std::bad_alloc&) {
        while (prepared-- > 0) {
            withList(plan.addedTo[prepared], plan.changes.added[prepared].rule,
                [](auto& list, const auto& rule) { list.forget(*rule); });
        }
        dropNewGroups(newGroups);
        throw;
    }
    perform(plan);
    rebuildRows();
    return std::move(plan.changes);
}

RuleStore::Plan RuleStore::planOf(const ChangeSet& changes)
{
    Plan plan;
    std::unordered_set<const void*> removed;
    std::unordered_map<const void*, std::size_t> added; // by record: its number among the additions
    const auto add = [&](const ChangeSet::Addition& addition) {
        added.emplace(recordIn(addition.rule), plan.changes.added.size());
        plan.changes.added.push_back(addition);
    };
    const auto staysStored
        = [&](const RuleRef& rule) { return !removed.contains(recordIn(rule)) && listOf(rule); };
    for (const ChangeSet::Removal& removal : changes.removed) {
        const auto list = listOf(removal.rule);
        if (!list || !removed.insert(recordIn(removal.rule)).second)
            continue;
        plan.removedFrom.push_back(*list);
        plan.changes.removed.push_back({removal.rule});
    }
    for (const ChangeSet::Change& change : changes.changed) {
        if (const auto known = added.find(recordIn(change.rule)); known != added.end())
            plan.changes.added[known->second].value = change.after;
        else if (staysStored(change.rule))
            plan.changes.changed.push_back({change.rule, {}, change.after});
        else
            add({change.rule, change.after});
    }
    for (const ChangeSet::Addition& addition : changes.added) {
        if (!added.contains(recordIn(addition.rule)) && !staysStored(addition.rule))
            add(addition);
    }
    plan.addedTo.reserve(plan.changes.added.size());
    return plan;
}

void RuleStore::perform(Plan& plan) noexcept
{
    for (std::size_t number = 0; number < plan.changes.removed.size(); ++number) {
        ChangeSet::Removal& removal = plan.changes.removed[number];
        removal.value = valueOf(removal.rule);
        withList(plan.removedFrom[number], removal.rule, [&](auto& list, const auto& rule) {
            const std::size_t slot = list.slotOf(*rule);
            const std::size_t previous = list.previous(slot);
            removal.place = {ChangeSet::Place::start, {}};
            if (previous != list.noSlot)
                removal.place = {ChangeSet::Place::behind, RuleRef(list.slots()[previous])};
            list.removeAt(slot);
        });
    }
    for (ChangeSet::Change& change : plan.changes.changed) {
        change.before = valueOf(change.rule);
        setValue(change.rule, change.after);
    }
    for (std::size_t number = 0; number < plan.changes.added.size(); ++number) {
        const ChangeSet::Addition& addition = plan.changes.added[number];
        setValue(addition.rule, addition.value);
        withList(plan.addedTo[number], addition.rule, [&](auto& list, const auto& rule) {
            list.insert(slotFor(list, addition.place), rule, identityHash(*rule));
        });
    }
}

// The list that a rule of that value goes to; its group is made when it is missing.
RuleStore::AnyList RuleStore::listFor(const RuleValue& value)
{
    if (const auto* policy = std::get_if<PolicyValue>(&value))
        return &groupOf(**policy).rules();
    return &m_watchRules;
}

// The list in which the record is stored; none when it is not.
std::optional<RuleStore::AnyList> RuleStore::listOf(const RuleRef& rule)
{
    if (const auto* watch = std::get_if<WatchRulePtr>(&rule)) {
        const bool isStored = (*watch)->isHeld() && m_watchRules.slotOf(**watch) != m_watchRules.noSlot;
        return isStored ? std::optional<AnyList>(&m_watchRules) : std::nullopt;
    }
    RuleList<PolicyRule>* list = listOf(*std::get<PolicyRulePtr>(rule));
    return list == nullptr ? std::nullopt : std::optional<AnyList>(list);
}

// A rule that was changed after it was stored stays in the group of its former application.
RuleList<PolicyRule>* RuleStore::listOf(const PolicyRule& rule)
{
    if (!rule.isHeld())
        return nullptr;
    const auto holds
        = [&rule](PolicyGroup& group) { return group.rules().slotOf(rule) != group.rules().noSlot; };
    const auto own = m_groups.find(applicationGroupIdentityForRule(rule));
    if (own != m_groups.end() && holds(own->second))
        return &own->second.rules();
    if (!m_anyStrays)
        return nullptr;
    const auto other = std::find_if(m_groups.begin(), m_groups.end(),
        [&](auto& group) { return group.second.hasStrays() && holds(group.second); });
    return other == m_groups.end() ? nullptr : &other->second.rules();
}

// The groups that were made last go again.
void RuleStore::dropNewGroups(std::size_t kept) noexcept
{
    for (; m_newGroups.size() > kept; m_newGroups.pop_back())
        m_groups.erase(m_groups.find(m_newGroups.back()->first));
}

} // namespace quorvane
