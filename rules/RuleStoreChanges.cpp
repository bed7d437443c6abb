#include "rules/RuleStore.h"

#include "rules/AddressSet.h"
#include "rules/Prefetch.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <new>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorvane::rules {

namespace {

// Up to this number, and up to this share of all (an eighth), rules are removed one by one.
constexpr std::size_t fewRemovals = 16;
constexpr std::size_t largeShareOfRemovals = 8;

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

    // `additions`: how many rules will be added; `neighbours`: those behind which some will be.
    GrowingOrder(const RuleList<Rule>& list, std::size_t additions, AddressSet neighbours)
        : m_neighbours(std::move(neighbours))
    {
        m_rules.reserve(list.size() + additions);
        m_next.reserve(list.size() + additions + 1);
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

    std::vector<Placed> inOrder() &&
    {
        std::vector<Placed> order;
        order.reserve(m_rules.size());
        for (std::size_t node = m_next[head]; node != head; node = m_next[node])
            order.push_back(std::move(m_rules[node - 1]));
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

    const AddressSet m_neighbours;
    std::vector<Placed> m_rules;
    std::vector<std::size_t> m_next{head};
    std::size_t m_last = head;
    std::unordered_map<const void*, std::size_t> m_nodes; // of the neighbours
};

// The rules behind which the additions of these numbers are placed.
AddressSet neighboursIn(
    const std::vector<ChangeSet::Addition>& additions, const std::vector<std::size_t>& numbers)
{
    AddressSet neighbours;
    for (const std::size_t number : numbers) {
        if (const std::optional<RuleRef>& rule = additions[number].place.rule)
            neighbours.insert(addressOf(*rule));
    }
    return neighbours;
}

// True when that is the very value of the record.
bool hasValue(const RuleRef& rule, const RuleValue& value)
{
    if (const PolicyRule* policy = policyRuleIn(rule))
        return policy->presentValue() == std::get<PolicyValue>(value);
    return std::get<WatchRulePtr>(rule)->presentValue() == std::get<WatchValue>(value);
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
    ChangeSet changes{};
    AddressSet removed{}; // the records to be removed
    bool removesMany = false; // all at once; some may not be stored
    std::vector<AnyList> removedFrom{}; // by the number of the removal, else
    std::vector<AnyList> addedTo{}; // by the number of the addition
    std::vector<std::size_t> revalued{}; // the additions whose records have another value yet
    std::vector<bool> isAdded{}; // by the number of the addition
};

// First plans everything and allocates all memory, then performs it, which cannot fail.
ChangeSet RuleStore::apply(ChangeSet changes)
{
    const std::size_t newGroups = m_newGroups.size();
    Plan plan = planOf(std::move(changes));
    try {
        prepareAdditions(plan);
    } catch (const std::bad_alloc&) {
        for (std::size_t number = plan.addedTo.size(); number-- > 0;) {
            withList(plan.addedTo[number], plan.changes.added[number].rule,
                [](auto& list, const auto& rule) { list.forget(*rule); });
        }
        dropNewGroups(newGroups);
        throw;
    }
    perform(plan);
    rebuildRows();
    return std::move(plan.changes);
}

// Leaves out what is not to be done. Works in place: a change of a million rules takes 90 MB.
RuleStore::Plan RuleStore::planOf(ChangeSet changes)
{
    Plan plan{.removed = AddressSet(changes.removed.size())};
    plan.changes = std::move(changes);
    auto& removals = plan.changes.removed;
    auto& changed = plan.changes.changed;
    auto& additions = plan.changes.added;
    plan.removesMany = !m_exceptions.twins && removals.size() > fewRemovals
        && removals.size() > storedRules() / largeShareOfRemovals;
    if (plan.removesMany) {
        const std::vector<ChangeSet::Removal>& all = plan.changes.removed;
        forEachPrefetched(
            all.size(), [&](std::size_t number) { plan.removed.insert(addressOf(all[number].rule)); },
            [&](std::size_t number) { plan.removed.prefetch(addressOf(all[number].rule)); });
    } else {
        std::erase_if(removals, [&](const ChangeSet::Removal& removal) {
            const auto list = listOf(removal.rule);
            if (!list || !plan.removed.insert(addressOf(removal.rule)))
                return true;
            plan.removedFrom.push_back(*list);
            return false;
        });
    }
    std::vector<ChangeSet::Addition> addedByChange;
    std::unordered_map<const void*, std::size_t> numbers; // of these, by record
    std::erase_if(changed, [&](const ChangeSet::Change& change) {
        if (listOf(change.rule) && !plan.removed.contains(addressOf(change.rule)))
            return false;
        const auto [number, isNew] = numbers.try_emplace(addressOf(change.rule), addedByChange.size());
        if (isNew)
            addedByChange.push_back({change.rule, change.after});
        addedByChange[number->second].value = change.after;
        return true;
    });
    additions.insert(additions.begin(), addedByChange.begin(), addedByChange.end());
    plan.addedTo.reserve(additions.size());
    plan.isAdded.resize(additions.size());
    return plan;
}

// Leaves out additions of rules that stay stored, and all but the first of the same rule: a rule that is
// prepared counts as stored.
void RuleStore::prepareAdditions(Plan& plan)
{
    std::vector<ChangeSet::Addition>& additions = plan.changes.added;
    AddressSet addedAgain; // after their removal
    for (ChangeSet::Addition& addition : additions) {
        const void* record = addressOf(addition.rule);
        if (plan.removed.contains(record) ? !addedAgain.insert(record) : listOf(addition.rule).has_value())
            continue;
        const AnyList list = listFor(addition.value);
        withList(list, addition.rule, [](auto& each, const auto& rule) { each.prepare(*rule); });
        ChangeSet::Addition& kept = additions[plan.addedTo.size()];
        plan.addedTo.push_back(list);
        if (&kept != &addition)
            kept = std::move(addition);
        if (!hasValue(kept.rule, kept.value))
            plan.revalued.push_back(plan.addedTo.size() - 1);
    }
    additions.erase(additions.begin() + static_cast<std::ptrdiff_t>(plan.addedTo.size()), additions.end());
}

void RuleStore::perform(Plan& plan) noexcept
{
    if (plan.removesMany)
        removeManyAtOnce(plan);
    else
        removeOneByOne(plan);
    for (ChangeSet::Change& change : plan.changes.changed) {
        change.before = presentValueOf(change.rule);
        setValue(change.rule, change.after);
    }
    for (const std::size_t number : plan.revalued)
        setValue(plan.changes.added[number].rule, plan.changes.added[number].value);
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

void RuleStore::removeOneByOne(Plan& plan) noexcept
{
    for (std::size_t number = 0; number < plan.changes.removed.size(); ++number) {
        ChangeSet::Removal& removal = plan.changes.removed[number];
        removal.value = presentValueOf(removal.rule);
        withList(plan.removedFrom[number], removal.rule, [&](auto& list, const auto& rule) {
            const std::size_t slot = list.slotOf(*rule);
            const std::size_t previous = list.previous(slot);
            removal.place = {ChangeSet::Place::start, {}};
            if (previous != list.noSlot)
                removal.place = {ChangeSet::Place::behind, RuleRef(list.slots()[previous])};
            list.removeAt(slot);
        });
    }
}

// Visits all lists instead of searching each rule, and so removes a million rules in 130 ms instead of
// 1,300.
void RuleStore::removeManyAtOnce(Plan& plan) noexcept
{
    const auto note = [&plan](auto rule, const auto* previous) {
        ChangeSet::Removal removal{
            .rule = std::move(rule), .place = {ChangeSet::Place::start, {}}, .value = {}};
        if (previous != nullptr)
            removal.place = {ChangeSet::Place::behind, RuleRef(*previous)};
        removal.value = presentValueOf(removal.rule);
        plan.changes.removed.push_back(std::move(removal));
    };
    plan.changes.removed.clear(); // keeps the room for all of them
    m_watchRules.removeAll(plan.removed, note);
    for (auto& [key, group] : m_groups)
        group.rules().removeAll(plan.removed, note);
}

// A rule inserted between others moves all that follow, and the list then has to find all of its rules anew;
// so several of one list are inserted at once. Without memory for that, they are inserted one by one.
void RuleStore::addManyAtOnce(Plan& plan) noexcept
{
    const std::vector<ChangeSet::Addition>& additions = plan.changes.added;
    try {
        std::map<AnyList, std::vector<std::size_t>> numbers; // of the additions, by list
        auto last = numbers.end();
        for (std::size_t number = 0; number < additions.size(); ++number) {
            last = numbers.try_emplace(last, plan.addedTo[number]); // mostly of the same list
            last->second.push_back(number);
        }
        for (const auto& each : numbers) {
            const std::vector<std::size_t>& added = each.second;
            const auto isBetween = [&additions](std::size_t number) {
                return additions[number].place.kind != ChangeSet::Place::end;
            };
            if (std::count_if(added.begin(), added.end(), isBetween) < 2)
                continue;
            withList(each.first, additions[added.front()].rule, [&](auto& list, const auto& first) {
                using RulePtr = std::decay_t<decltype(first)>;
                GrowingOrder order(list, added.size(), neighboursIn(additions, added));
                for (const std::size_t number : added)
                    order.add(std::get<RulePtr>(additions[number].rule), additions[number].place);
                list.insertAll(std::move(order).inOrder());
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

// The list in which the record is stored; none when it is not. A rule that was changed after it was stored
// stays in the group of its former application.
std::optional<RuleStore::AnyList> RuleStore::listOf(const RuleRef& rule) const
{
    return visitRule(rule, [this](const auto& record) {
        auto* list = RuleList<std::decay_t<decltype(record)>>::holding(record, m_numbers);
        return list == nullptr ? std::nullopt : std::optional<AnyList>(list);
    });
}

// Removes the groups created last.
void RuleStore::dropNewGroups(std::size_t kept) noexcept
{
    m_recentGroups.clear();
    for (; m_newGroups.size() > kept; m_newGroups.pop_back())
        m_groups.erase(m_groups.find(m_newGroups.back()->first));
}

} // namespace quorvane::rules
