#include "rules/WholeRules.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleStore.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::rules {

namespace {

// The name of the list that such a rule is in: its application group, or none for watch rules.
std::optional<std::string> listOf(const RuleValue& rule)
{
    const auto* policy = std::get_if<PolicyValue>(&rule);
    return policy == nullptr ? std::nullopt : std::optional(applicationGroupIdentityForFields(**policy));
}

} // namespace

// As if they were removed in stored order: each one's place is behind the nearest that stays.
ChangeSet ruleByRule(const ChangeSet::Whole& change)
{
    const std::vector<RuleValue> values = change.rules->values.values();
    ChangeSet removal;
    removal.removed.reserve(values.size());
    auto value = values.begin();
    std::optional<std::string> list;
    ChangeSet::Place place{ChangeSet::Place::start, {}};
    change.rules->rows->forEach(true, [&](std::size_t, const RuleRef& rule) {
        const bool stays = isSystemRule(rule);
        auto own = listOf(stays ? presentValueOf(rule) : *value);
        if (own != list)
            place = {ChangeSet::Place::start, {}};
        list = std::move(own);
        if (stays)
            place = {ChangeSet::Place::behind, rule};
        else
            removal.removed.push_back({rule, place, *value++});
    });
    return change.isRemoval ? removal : removal.inverted();
}

bool StoreExchange::perform(std::unique_ptr<RuleStore>& inUse, const ChangeSet::Whole& change)
{
    const RuleRows& rows = *change.rules->rows;
    if (change.isRemoval) {
        if (!inUse->hasExactly(rows))
            return false;
        m_putAside = std::exchange(inUse, inUse->withoutUserRules());
        m_removed = change.rules;
        return true;
    }
    const bool isAside = m_putAside && m_removed.lock() == change.rules;
    if (!isAside || !m_putAside->hasExactly(rows) || !m_putAside->replace(*inUse)) {
        m_putAside.reset(); // its rules go into another store
        return false;
    }
    inUse = std::move(m_putAside);
    return true;
}

void StoreExchange::dropUnneeded()
{
    if (m_removed.expired())
        m_putAside.reset();
}

} // namespace quorvane::rules
