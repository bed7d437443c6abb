#include "rules/StoreSuccession.h"

#include "rules/RuleStore.h"

#include <algorithm>
#include <functional>
#include <type_traits>

namespace quorvane::rules {

StoreSuccession::StoreSuccession(std::unique_ptr<RuleStore> successor, std::shared_ptr<const RuleRows> former,
    const std::vector<std::optional<Heritage>>& heritage)
    : m_store(std::move(successor))
    , m_former(std::move(former))
{
    inheritRecords(heritage);
    const auto sort = [](auto& steps) {
        std::sort(steps.begin(), steps.end(),
            [](const auto& a, const auto& b) { return std::less<>()(a.record, b.record); });
    };
    std::apply([&](auto&... steps) { (sort(steps), ...); }, m_steps);
}

StoreSuccession::~StoreSuccession() = default;

// Only lists and tables get the former records here. That they are in another list now is noted in the
// records themselves, which belong to another thread, by perform().
void StoreSuccession::inheritRecords(const Heritages& heritage)
{
    m_store->storedRows(); // finds the system rules, while all records are its own
    m_store->setHasLeftRecords(true); // if perform() never comes, its end must not touch the former records
    std::vector<bool> isInherited(m_former->count(true));
    // By number: the rule's place in the heritage, or its end for one that is not stored.
    std::vector<std::size_t> places(m_store->m_numbers.rules().size(), heritage.size());
    std::size_t place = 0;
    const auto inheritIn = [&](auto& list) {
        for (std::size_t slot = 0; slot < list.slots().size(); ++slot) {
            if (!list.slots()[slot])
                continue;
            places[list.numbers()[slot]] = place;
            if (const std::optional<Heritage>& each = heritage[place++]) {
                const RuleRef& rule = m_former->at(each->row, true);
                const auto& record = std::get<std::decay_t<decltype(list.slots()[slot])>>(rule);
                list.replaceRecord(slot, record);
                addStep(record, &list);
                isInherited[each->row] = true;
                if (each->value != valueOf(rule))
                    m_changed.emplace_back(rule, each->value);
            }
        }
    };
    inheritIn(m_store->m_watchRules);
    for (const RuleStore::Groups::value_type* group : m_store->orderedGroups())
        inheritIn(m_store->m_groups.find(group->first)->second.rules());
    replaceNumbered(heritage, places);
    for (std::size_t row = 0; row < isInherited.size(); ++row) {
        if (isInherited[row])
            continue;
        std::visit(
            [this]<class Record>(const std::shared_ptr<Record>& record) { addStep<Record>(record, nullptr); },
            m_former->at(row, true));
    }
}

template <class Record>
void StoreSuccession::addStep(const std::shared_ptr<Record>& record, RuleList<Record>* list)
{
    std::get<std::vector<Step<Record>>>(m_steps).push_back({record.get(), list});
}

// By number, too, the former records replace the successor's own, and the values of a first snapshot are
// made.
void StoreSuccession::replaceNumbered(const Heritages& heritage, const std::vector<std::size_t>& places)
{
    const AppendOnlyTable<RuleRef>& own = m_store->m_numbers.rules();
    AppendOnlyTable<RuleRef> records;
    AppendOnlyTable<RuleValue> values;
    for (std::size_t number = 0; number < own.size(); ++number) {
        const bool isStored = places[number] < heritage.size();
        if (isStored && heritage[places[number]]) {
            const Heritage& inherited = *heritage[places[number]];
            records.append(m_former->at(inherited.row, true));
            values.append(inherited.value);
        } else {
            records.append(own[number]);
            values.append(isStored ? presentValueOf(own[number]) : RuleValue());
        }
    }
    m_store->m_numbers.replaceRules(std::move(records));
    m_store->m_values = std::move(values);
    m_store->m_rows.setRules(m_store->m_numbers, m_store->storedOrder());
}

void StoreSuccession::perform(std::unique_ptr<RuleStore>& inUse, std::uint64_t readAt)
{
    m_store->setView(*inUse);
    m_store->rebuildRows();
    m_store->setHasLeftRecords(false);
    const auto release = [numbers = &inUse->m_numbers]<class Record>(const Record& record) {
        while (const auto* list = RuleList<Record>::holding(record, *numbers))
            list->release(record);
    };
    for (const auto& [rule, value] : m_changed) { // in no list, which need not follow the change
        visitRule(rule, release);
        setValue(rule, value);
    }
    const auto take = [&](const auto& steps) {
        for (const auto& step : steps) {
            auto& record = *step.record;
            release(record);
            if (step.list == nullptr)
                continue;
            step.list->hold(record);
            if constexpr (requires { record.setInitialized(readAt); })
                record.setInitialized(readAt);
        }
    };
    std::apply([&](const auto&... steps) { (take(steps), ...); }, m_steps);
    inUse->setHasLeftRecords(true);
    inUse.swap(m_store);
}

} // namespace quorvane::rules
