#include "rules/RuleStore.h"

#include "rules/ApplicationIdentity.h"

#include <algorithm>
#include <map>
#include <new>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace quorvane::rules {

namespace {

// The slot for a rule added at that place; the end when its neighbour is no longer stored.
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

// The order of a list while many rules are added, as a linked list, so that each is inserted in constant
// time. The operations throw only std::bad_alloc.
template <class Rule> class GrowingOrder {
public:
    using Placed = typename RuleList<Rule>::Placed;

    // `neighbours`: the rules behind which others will be added.
    GrowingOrder(const RuleList<Rule>& list, std::unordered_set<const void*> neighbours)
        : m_neighbours(std::move(neighbours))
    {
        for (std::size_t slot = 0; slot < list.slots().size(); ++slot) {
            if (list.slots()[slot])
                insertBehind(m_last, {list.slots()[slot], list.numbers()[slot]});
        }
    }

    void add(const std::shared_ptr<Rule>& rule, const ChangeSet::Place& place)
    {
        std::size_t neighbour = m_last;
        if (place.kind == ChangeSet::Place::start)
            neighbour = head;
        else if (const auto found = place.kind == ChangeSet::Place::behind && place.rule
                     ? m_nodes.find(addressOf(*place.rule))
                     : m_nodes.end();
                 found != m_nodes.end())
            neighbour = found->second;
        insertBehind(neighbour, {rule});
    }

    std::vector<Placed> inOrder() const
    {
        std::vector<Placed> order;
        order.reserve(m_rules.size());
        for (std::size_t node = m_next[head]; node != head; node = m_next[node])
            order.push_back(m_rules[node - 1]);
        return order;
    }

private:
    static constexpr std::size_t head = 0; // sentinel; rule n is node n + 1

    void insertBehind(std::size_t neighbour, Placed placed)
    {
        if (m_neighbours.contains(placed.rule.get()))
            m_nodes.emplace(placed.rule.get(), m_next.size());
        m_rules.push_back(std::move(placed));
        const std::size_t node = m_next.size();
        m_next.push_back(m_next[neighbour]);
        m_next[neighbour] = node;
        if (neighbour == m_last)
            m_last = node;
    }

    const std::unordered_set<const void*> m_neighbours;
    std::vector<Placed> m_rules;
    std::vector<std::size_t> m_next{head};
    std::size_t m_last = head;
    std::unordered_map<const void*, std::size_t> m_nodes; // of the neighbours
};

// The rules behind which the additions of these numbers are placed.
std::unordered_set<const void*> neighboursIn(
    const std::vector<ChangeSet::Addition>& additions, const std::vector<std::size_t>& numbers)
{
    std::unordered_set<const void*> neighbours;
    for (const std::size_t number : numbers) {
        if (const std::optional<RuleRef>& rule = additions[number].place.rule)
            neighbours.insert(addressOf(*rule));
    }
    return neighbours;
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

// The steps to perform, with the lists that they affect.
struct RuleStore::Plan {
    ChangeSet changes;
    std::vector<AnyList> removedFrom;
    std::vector<AnyList> addedTo;
    std::vector<bool> isAdded;
};

// First plans everything and allocates all memory, then performs it, which cannot fail.
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
    removed.reserve(changes.removed.size());
    std::unordered_map<const void*, std::size_t> added; // by record: its number among the additions
    added.reserve(changes.added.size());
    const auto add = [&](const ChangeSet::Addition& addition) {
        added.emplace(addressOf(addition.rule), plan.changes.added.size());
        plan.changes.added.push_back(addition);
    };
    const auto staysStored
        = [&](const RuleRef& rule) { return !removed.contains(addressOf(rule)) && listOf(rule); };
    for (const ChangeSet::Removal& removal : changes.removed) {
        const auto list = listOf(removal.rule);
        if (!list || !removed.insert(addressOf(removal.rule)).second)
            continue;
        plan.removedFrom.push_back(*list);
        plan.changes.removed.push_back({removal.rule});
    }
    for (const ChangeSet::Change& change : changes.changed) {
        if (const auto known = added.find(addressOf(change.rule)); known != added.end())
            plan.changes.added[known->second].value = change.after;
        else if (staysStored(change.rule))
            plan.changes.changed.push_back({change.rule, {}, change.after});
        else
            add({change.rule, change.after});
    }
    for (const ChangeSet::Addition& addition : changes.added) {
        if (!added.contains(addressOf(addition.rule)) && !staysStored(addition.rule))
            add(addition);
    }
    plan.addedTo.reserve(plan.changes.added.size());
    plan.isAdded.resize(plan.changes.added.size());
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
    for (const ChangeSet::Addition& addition : plan.changes.added)
        setValue(addition.rule, addition.value);
    addManyAtOnce(plan);
    for (std::size_t number = 0; number < plan.changes.added.size(); ++number) {
        if (plan.isAdded[number])
            continue;
        const ChangeSet::Addition& addition = plan.changes.added[number];
        withList(plan.addedTo[number], addition.rule, [&](auto& list, const auto& rule) {
            list.insert(slotFor(list, addition.place), rule, identityHash(*rule));
        });
    }
}

// A rule inserted between others moves all that follow, and the list then has to find all of its rules anew;
// so several of one list are inserted at once. Without memory for that, they are inserted one by one.
void RuleStore::addManyAtOnce(Plan& plan) noexcept
{
    const std::vector<ChangeSet::Addition>& additions = plan.changes.added;
    try {
        std::map<AnyList, std::vector<std::size_t>> numbers; // of the additions, by list
        for (std::size_t number = 0; number < additions.size(); ++number)
            numbers[plan.addedTo[number]].push_back(number);
        for (const auto& each : numbers) {
            const std::vector<std::size_t>& added = each.second;
            const auto isBetween = [&additions](std::size_t number) {
                return additions[number].place.kind != ChangeSet::Place::end;
            };
            if (std::count_if(added.begin(), added.end(), isBetween) < 2)
                continue;
            withList(each.first, additions[added.front()].rule, [&](auto& list, const auto& first) {
                using RulePtr = std::decay_t<decltype(first)>;
                GrowingOrder order(list, neighboursIn(additions, added));
                for (const std::size_t number : added)
                    order.add(std::get<RulePtr>(additions[number].rule), additions[number].place);
                list.insertAll(order.inOrder());
            });
            for (const std::size_t number : added)
                plan.isAdded[number] = true;
        }
    } catch (const std::bad_alloc&) {
        return;
    }
}

// The list for a rule of that value; its group is created when missing.
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

// Removes the groups created last.
void RuleStore::dropNewGroups(std::size_t kept) noexcept
{
    m_recentGroups.clear();
    for (; m_newGroups.size() > kept; m_newGroups.pop_back())
        m_groups.erase(m_groups.find(m_newGroups.back()->first));
}

} // namespace quorvane::rules
