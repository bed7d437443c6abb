#include "rules/MergedChange.h"

#include "rules/ApplicationIdentity.h"

#include <string>
#include <unordered_map>

namespace quorvane::rules {

namespace {

// The place of the next rule of each list, the watch rules' or an application group's.
class Places {
public:
    ChangeSet::Place next(const RuleValue& value) const
    {
        const auto last = m_last.find(listOf(value));
        if (last == m_last.end())
            return {.kind = ChangeSet::Place::start};
        return {.kind = ChangeSet::Place::behind, .rule = last->second};
    }
    void put(const RuleValue& value, const RuleRef& rule) { m_last.insert_or_assign(listOf(value), rule); }

private:
    // No group identity is empty.
    static std::string listOf(const RuleValue& value)
    {
        const auto* policy = std::get_if<PolicyValue>(&value);
        return policy == nullptr ? std::string() : applicationGroupIdentityForFields(**policy);
    }
    std::unordered_map<std::string, RuleRef> m_last;
};

bool movesRules(const MergeResult& merged)
{
    for (const MergedRule& rule : merged.rules) {
        if (!rule.ours || rule.isMoved)
            return true;
    }
    return false;
}

} // namespace

std::vector<RuleValue> rulesOf(const MergeResult& merged)
{
    std::vector<RuleValue> rules;
    rules.reserve(merged.rules.size());
    for (const MergedRule& rule : merged.rules)
        rules.push_back(rule.rule);
    return rules;
}

ChangeSet changeTo(const MergeResult& merged, const std::vector<RuleRef>& ours)
{
    ChangeSet change;
    Places places;
    std::vector<bool> stays(ours.size());
    const bool placesMatter = movesRules(merged);
    for (const MergedRule& rule : merged.rules) {
        const RuleRef record = rule.ours ? ours[*rule.ours] : recordOf(rule.rule);
        if (!rule.ours || rule.isMoved) {
            change.added.push_back({record, rule.rule, places.next(rule.rule)});
        } else {
            stays[*rule.ours] = true;
            if (const RuleValue present = valueOf(record); present != rule.rule)
                change.changed.push_back({record, present, rule.rule});
        }
        if (placesMatter)
            places.put(rule.rule, record);
    }
    for (std::size_t number = 0; number < ours.size(); ++number) {
        if (!stays[number])
            change.removed.push_back({ours[number]});
    }
    return change;
}

} // namespace quorvane::rules
