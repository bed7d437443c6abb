#include "rules/RuleStore.h"

#include "platform/Unicode.h"
#include "rules/ApplicationIdentity.h"
#include "rules/Prefetch.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <new>
#include <utility>

namespace quorvane::rules {

PolicyGroup& RuleStore::groupOf(const PolicyRuleFields& rule)
{
    if (const RecentGroup* recent = recentGroupFor(rule); recent != nullptr && recent->isOf(rule))
        return *recent->group;
    makeRoomForGroup();
    const auto [group, isNew]
        = m_groups.try_emplace(applicationGroupIdentityForFields(rule), m_numbers, m_exceptions);
    if (isNew)
        m_newGroups.push_back(&*group);
    *recentGroupFor(rule) = {rule.processName, rule.constraint, &group->second};
    return group->second;
}

const PolicyGroup* RuleStore::existingGroupOf(const PolicyRuleFields& rule) const
{
    RecentGroup* const recent = recentGroupFor(rule);
    if (recent != nullptr && recent->isOf(rule))
        return recent->group;
    const auto group = m_groups.find(applicationGroupIdentityForFields(rule));
    if (group == m_groups.end())
        return nullptr;
    if (recent != nullptr)
        *recent = {rule.processName, rule.constraint, &group->second};
    return &group->second;
}

// The place of such a group; null while there are none.
RuleStore::RecentGroup* RuleStore::recentGroupFor(const PolicyRuleFields& rule) const
{
    if (m_recentGroups.empty())
        return nullptr;
    const auto addressOf = [](const NullableText& text) {
        return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(text.sharedBytes()));
    };
    const std::uint64_t hash = combinedHash(addressOf(rule.processName), addressOf(rule.constraint));
    return &m_recentGroups[hash & (m_recentGroups.size() - 1)];
}

// Each step only reads what the one before has fetched.
void RuleStore::prefetch(const PolicyRuleFields& rule, std::uint64_t hash, std::size_t step) const
{
    const RecentGroup* const recent = recentGroupFor(rule);
    if (recent == nullptr)
        return;
    if (step == 0)
        return prefetchObject(*recent);
    if (!recent->isOf(rule))
        return;
    if (step == 1)
        prefetchObject(*recent->group);
    else if (step == 2)
        recent->group->rules().prefetch();
    else
        recent->group->rules().prefetch(hash);
}

// Allocates all memory that another group needs, besides its own.
void RuleStore::makeRoomForGroup()
{
    if (m_newGroups.size() == m_newGroups.capacity())
        m_newGroups.reserve(2 * m_newGroups.size() + 1);
    constexpr std::size_t placesPerGroup = 4; // each thread that reads a file makes its own texts
    constexpr std::size_t mostPlaces = 1U << 16U;
    const std::size_t wanted = std::min(placesPerGroup * (m_groups.size() + 1), mostPlaces);
    if (m_recentGroups.size() < wanted)
        m_recentGroups = std::vector<RecentGroup>(2 * std::bit_ceil(wanted));
}

// A few new groups are inserted at their places; many are sorted together with all others.
const std::vector<const RuleStore::Groups::value_type*>& RuleStore::orderedGroups() const
{
    using Group = const Groups::value_type*;
    constexpr std::size_t fewGroups = 8;
    if (m_newGroups.size() > m_orderedGroups.size() / fewGroups + fewGroups) {
        std::vector<std::pair<std::string, Group>> keyed;
        keyed.reserve(m_groups.size());
        for (const Groups::value_type& group : m_groups)
            keyed.emplace_back(platform::foldedCase(group.first), &group);
        std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
            return a.first != b.first ? a.first < b.first : a.second->first < b.second->first;
        });
        m_orderedGroups.resize(keyed.size());
        std::transform(keyed.begin(), keyed.end(), m_orderedGroups.begin(),
            [](const auto& group) { return group.second; });
        m_newGroups.clear();
    }
    for (; !m_newGroups.empty(); m_newGroups.pop_back()) {
        const Group added = m_newGroups.back();
        const std::string key = platform::foldedCase(added->first);
        const auto place
            = std::partition_point(m_orderedGroups.begin(), m_orderedGroups.end(), [&](Group group) {
                  const std::string other = platform::foldedCase(group->first);
                  return other != key ? other < key : group->first < added->first;
              });
        m_orderedGroups.insert(place, added);
    }
    return m_orderedGroups;
}

bool RuleStore::removeFirstEqual(const WatchRule& rule)
{
    return removeAt(m_watchRules, m_watchRules.slotOfFirstEqual(rule.fields(), identityHash(rule)));
}

bool RuleStore::removeFirstEqual(const PolicyRule& rule)
{
    const auto group = m_groups.find(applicationGroupIdentityForRule(rule));
    if (group == m_groups.end())
        return false;
    RuleList<PolicyRule>& rules = group->second.rules();
    return removeAt(rules, rules.slotOfFirstEqual(rule.fields(), identityHash(rule)));
}

bool RuleStore::remove(const WatchRule& rule)
{
    return RuleList<WatchRule>::holding(rule, m_numbers) != nullptr
        && removeAt(m_watchRules, m_watchRules.slotOf(rule));
}

bool RuleStore::remove(const PolicyRule& rule)
{
    RuleList<PolicyRule>* rules = RuleList<PolicyRule>::holding(rule, m_numbers);
    return rules != nullptr && removeAt(*rules, rules->slotOf(rule));
}

template <class Rule> bool RuleStore::removeAt(RuleList<Rule>& rules, std::size_t slot)
{
    if (slot == rules.noSlot)
        return false;
    rules.removeAt(slot);
    rebuildRows();
    return true;
}

PolicyRulePtr RuleStore::take(const PolicyRuleFields& rule, std::uint64_t hash)
{
    const auto group = m_groups.find(applicationGroupIdentityForFields(rule));
    return group == m_groups.end() ? nullptr : group->second.rules().take(rule, hash);
}

std::optional<RuleRef> RuleStore::firstEqual(
    const RuleRef& rule, const std::function<bool(const void* record)>& accepts) const
{
    std::optional<RuleRef> equal;
    const auto firstOf = [&](const auto& rules, const auto& fields) {
        const auto accept = [&accepts](const auto& stored) { return accepts(&stored); };
        if (const auto found = rules.firstEqual(fields, identityHash(fields), accept))
            equal = found;
    };
    const PolicyRule* policy = policyRuleIn(rule);
    const PolicyGroup* group = policy == nullptr ? nullptr : existingGroupOf(policy->fields());
    if (group != nullptr)
        firstOf(group->rules(), policy->fields());
    else if (policy == nullptr)
        firstOf(m_watchRules, std::get<WatchRulePtr>(rule)->fields());
    return equal;
}

// All rules of a list go when all are named, in whatever order equal ones are found, so none of them is
// searched for: a million rules take 130 ms instead of 2,000.
std::vector<RuleRef> RuleStore::firstEqualRules(const std::vector<RuleRef>& rules) const
{
    const auto [whole, rulesInWhole] = listsNamedWhole(rules);
    if (rulesInWhole == rules.size())
        return rules;
    std::vector<RuleRef> found;
    found.reserve(rules.size());
    AddressSet searched; // rules found by a search
    const auto accepts = [&searched](const void* record) { return !searched.contains(record); };
    for (const RuleRef& rule : rules) {
        if (const auto list = listOf(rule); list && whole.contains(addressOfList(*list))) {
            found.push_back(rule);
        } else if (auto equal = firstEqual(rule, accepts)) {
            searched.insert(addressOf(*equal));
            found.push_back(std::move(*equal));
        }
    }
    return found;
}

// The lists whose rules are all among `rules` and equal to themselves. None when a rule is there twice, or
// may be equal to one of another list than its own.
RuleStore::WholeLists RuleStore::listsNamedWhole(const std::vector<RuleRef>& rules) const
{
    WholeLists whole;
    AddressSet named(rules.size());
    std::unordered_map<const void*, std::size_t> unnamed; // by list: how many of its rules are not named
    for (const RuleRef& rule : rules) {
        const auto list = listOf(rule);
        if (!list || m_exceptions.strays || !named.insert(addressOf(rule)))
            return {};
        if (!visitRule(rule, [](const auto& record) { return equalsItself(record.fields()); }))
            continue;
        const std::size_t size = std::visit([](const auto* each) { return each->size(); }, *list);
        if (--unnamed.try_emplace(addressOfList(*list), size).first->second == 0) {
            whole.lists.insert(addressOfList(*list));
            whole.rules += size;
        }
    }
    return whole;
}

bool RuleStore::hasEqual(
    const PolicyRuleFields& rule, const std::function<bool(const PolicyRule&)>& accepts) const
{
    const std::uint64_t hash = identityHash(rule);
    const auto isIn
        = [&](const PolicyGroup& group) { return group.rules().firstEqual(rule, hash, accepts) != nullptr; };
    if (const PolicyGroup* group = existingGroupOf(rule); group != nullptr && isIn(*group))
        return true;
    return m_exceptions.strays && std::any_of(m_groups.begin(), m_groups.end(), [&](const auto& group) {
        return group.second.hasStrays() && isIn(group.second);
    });
}

void RuleStore::setSearchText(std::optional<std::string> text)
{
    m_rows.setSearchText(std::move(text));
    rebuildRows();
}

// Rows that tie in all previous keys are in stored order. If the new keys include those, so are rows that tie
// in them, and the rows can be made from the stored ones at the next access; else the present ones are
// sorted.
void RuleStore::sort(std::vector<SortDescriptor> descriptors)
{
    const auto isKeyOf = [&](const SortDescriptor& former) {
        return std::any_of(descriptors.begin(), descriptors.end(),
            [&](const SortDescriptor& descriptor) { return descriptor.key == former.key; });
    };
    const std::vector<SortDescriptor>& former = m_rows.sortDescriptors();
    const bool keepsTies
        = (m_rowsAreStale || m_rows.areTiesStored()) && std::all_of(former.begin(), former.end(), isKeyOf);
    if (!keepsTies)
        rows();
    rebuildRows();
    if (keepsTies)
        return m_rows.setSortDescriptors(std::move(descriptors));
    m_rows.sortAgain(std::move(descriptors));
    m_rowsAreStale = false;
}

void RuleStore::setView(const RuleStore& other)
{
    const bool isSame = m_rows.searchText() == other.m_rows.searchText()
        && m_rows.sortDescriptors() == other.m_rows.sortDescriptors();
    if (isSame)
        return;
    m_rows.setSearchText(other.m_rows.searchText());
    m_rows.setSortDescriptors(other.m_rows.sortDescriptors());
    rebuildRows();
}

// A system rule would go instead of an equal one of the user behind it.
bool RuleStore::canRemoveAllAtOnce() const
{
    if (m_exceptions.strays || m_exceptions.twins || m_exceptions.incomparable)
        return false;
    const auto rows = storedRows();
    AddressSet systemRules;
    rows->forEachSystemRule([&](const RuleRef& rule) { systemRules.insert(addressOf(rule)); });
    const auto isOfUser = [&](const void* record) { return !systemRules.contains(record); };
    bool anyEqual = false;
    rows->forEachSystemRule([&](const RuleRef& rule) { anyEqual = anyEqual || firstEqual(rule, isOfUser); });
    return !anyEqual;
}

std::unique_ptr<RuleStore> RuleStore::withoutUserRules() const
{
    auto rest = std::make_unique<RuleStore>();
    rest->setView(*this);
    rest->addGroupsOf(*this);
    storedRows()->forEachSystemRule([&rest](const RuleRef& rule) {
        std::visit([&](const auto& record) { rest->append(record); }, rule);
    });
    rest->rebuildRows();
    return rest;
}

bool RuleStore::replace(const RuleStore& inUse)
{
    std::size_t systemRules = 0;
    storedRows()->forEachSystemRule(
        [&](const RuleRef& rule) { systemRules += inUse.isStored(rule) ? 1 : inUse.storedRules() + 1; });
    if (systemRules != inUse.storedRules())
        return false;
    addGroupsOf(inUse);
    setView(inUse);
    return true;
}

// They count as keys even when they are empty.
void RuleStore::addGroupsOf(const RuleStore& other)
{
    for (const Groups::value_type* group : other.orderedGroups()) {
        makeRoomForGroup();
        const auto [added, isNew] = m_groups.try_emplace(group->first, m_numbers, m_exceptions);
        if (isNew)
            m_newGroups.push_back(&*added);
    }
}

// While another store has its records, its end does not touch them.
void RuleStore::setHasLeftRecords(bool hasLeft) noexcept
{
    m_watchRules.setHasLeftRecords(hasLeft);
    for (auto& [key, group] : m_groups)
        group.rules().setHasLeftRecords(hasLeft);
}

const std::shared_ptr<const RuleRows>& RuleStore::rows() const
{
    if (m_rowsAreStale) {
        RowsComputation computation = followedRules();
        computation.run();
        m_rows = std::move(computation);
        m_rowsAreStale = false;
    }
    return m_rows.rows();
}

// The computation with the present rules, not run yet.
RowsComputation& RuleStore::followedRules() const
{
    if (m_numbers.mustStartAfresh())
        numberAfresh();
    if (!m_rows.hasRules(m_numbers))
        m_rows.setRules(m_numbers, storedOrder());
    m_numbers.settle();
    return m_rows;
}

std::optional<RowsComputation> RuleStore::longComputation(std::size_t manyRules) const
{
    if (!m_rowsAreStale || storedRules() < manyRules)
        return std::nullopt;
    if (m_numbers.mustStartAfresh()) // after which all rules are sorted again
        numberAfresh();
    return m_rows.takesLong(m_numbers) ? std::optional(followedRules()) : std::nullopt;
}

bool RuleStore::adopt(RowsComputation computed)
{
    if (!m_rowsAreStale || !computed.isOf(m_numbers)
        || computed.sortDescriptors() != m_rows.sortDescriptors())
        return false;
    const bool isCurrent = computed.searchText() == m_rows.searchText() && computed.knows(m_numbers);
    computed.setSearchText(m_rows.searchText());
    m_rows = std::move(computed);
    m_rowsAreStale = !isCurrent;
    return true;
}

std::shared_ptr<const RuleRows> RuleStore::storedRows() const
{
    return followedRules().storedRows();
}

// Whatever was added or changed since has got a number.
bool RuleStore::hasExactly(const RuleRows& stored) const
{
    const AppendOnlyTable<RuleRef>& numbered = stored.numberedRules();
    if (m_numbers.mustStartAfresh() || numbered.size() != m_numbers.rules().size())
        return false;
    return numbered.size() == 0
        || (numbered.sharesElementsWith(m_numbers.rules()) && stored.count(true) == m_numbers.stored());
}

std::vector<PolicyRulePtr> RuleStore::passingPolicyRules() const
{
    rows();
    return m_rows.passingPolicyRules();
}

bool RuleStore::passes(const PolicyRule& rule) const
{
    const auto& text = m_rows.searchText();
    return !text || policyRuleContains(rule, *text);
}

void RuleStore::numberAfresh() const
{
    m_rows.forgetNumbers();
    m_rowsAreStale = true;
    m_numbers.clear();
    m_values = {};
    m_watchRules.numberAfresh();
    for (auto& [key, group] : m_groups)
        group.rules().numberAfresh();
    if (m_numbers.mustStartAfresh())
        throw std::bad_alloc();
}

// Watch rules, then policy rules by group.
std::shared_ptr<const RuleOrder> RuleStore::storedOrder() const
{
    auto order = std::make_shared<RuleOrder>();
    order->reserve(m_numbers.stored());
    const auto append = [&order](const std::vector<std::uint32_t>& numbers) {
        std::copy_if(numbers.begin(), numbers.end(), std::back_inserter(*order),
            [](std::uint32_t number) { return number != RowNumbers::none; });
    };
    append(m_watchRules.numbers());
    for (const Groups::value_type* group : orderedGroups())
        append(group->second.rules().numbers());
    return order;
}

void RuleStore::indexLargeGroups() const
{
    constexpr std::size_t manyRules = 20'000; // 2 ms
    for (const auto& [key, group] : m_groups) {
        if (group.rules().size() >= manyRules)
            group.indexCovering();
    }
}

// Values are cached by row number, so that the next snapshot only adds those of new and changed rules.
RulesSnapshot RuleStore::userRulesSnapshot() const
{
    std::shared_ptr<const RuleOrder> order = followedRules().storedUserRules();
    for (std::size_t number = m_values.size(); number < m_numbers.rules().size(); ++number) {
        const bool isStored = m_numbers.isStored(static_cast<std::uint32_t>(number));
        m_values.append(isStored ? presentValueOf(m_numbers.rules()[number]) : RuleValue());
    }
    return {m_values, std::move(order)};
}

} // namespace quorvane::rules
