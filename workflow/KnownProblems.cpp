#include "workflow/KnownProblems.h"

#include "rules/ApplicationIdentity.h"
#include "rules/CoverIndex.h"
#include "rules/Hashing.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleProperties.h"
#include "workflow/RuleOverlaps.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

// How problems are updated incrementally:
//
// A rule is unchanged when both its record and its value have the same addresses as before; examined ones are
// kept alive, so that addresses are not reused. Merging the sorted addresses of before and now yields the
// added and removed rules; a changed one is both.
//
// Findings of single rules are computed for added rules. A rule can be covered only by one of its application
// group, and a group's rules are adjacent in stored order, unless one was edited since; so the groups of
// added and removed rules are indexed again, and all others keep their results.

namespace quorvane::workflow {

namespace {

using Seen = KnownProblems::Seen;
using SeenRules = KnownProblems::SeenRules;
using FindingsOf = KnownProblems::FindingsOf;
using OtherOf = KnownProblems::OtherOf;

struct Difference {
    std::vector<Seen> come;
    std::vector<Seen> gone;

    bool isEmpty() const { return come.empty() && gone.empty(); }
};

bool isBefore(const Seen& a, const Seen& b)
{
    return std::tie(a.record, a.value) < std::tie(b.record, b.value);
}

const rules::RuleRef& ruleAt(const SeenRules& rules, std::size_t place)
{
    return rules.rows->at(place, true);
}

const rules::PolicyRuleFields* policyIn(const rules::RuleValue& value)
{
    const auto* policy = std::get_if<rules::PolicyValue>(&value);
    return policy == nullptr ? nullptr : policy->get();
}

SeenRules seen(std::shared_ptr<const rules::RuleRows> rows)
{
    SeenRules rules{std::move(rows), {}, {}};
    const std::size_t count = rules.rows->count(true);
    rules.values.reserve(count);
    rules.byAddress.reserve(count);
    for (std::uint32_t place = 0; place < count; ++place) {
        const rules::RuleRef& rule = ruleAt(rules, place);
        rules.values.push_back(valueOf(rule));
        rules.byAddress.push_back({addressOf(rule), addressOf(rules.values.back()), place});
    }
    std::sort(rules.byAddress.begin(), rules.byAddress.end(), isBefore);
    return rules;
}

Difference differenceOf(const SeenRules& before, const SeenRules& now)
{
    Difference difference;
    std::set_difference(now.byAddress.begin(), now.byAddress.end(), before.byAddress.begin(),
        before.byAddress.end(), std::back_inserter(difference.come), isBefore);
    std::set_difference(before.byAddress.begin(), before.byAddress.end(), now.byAddress.begin(),
        now.byAddress.end(), std::back_inserter(difference.gone), isBefore);
    return difference;
}

// The findings of added rules that concern a single rule; incomplete when it is stopped.
FindingsOf findingsAlone(const SeenRules& rules, const Difference& difference, const RulesPlace& place,
    const std::stop_token& stop)
{
    const FindingSearch search{FindingKinds::usual(), place};
    FindingsOf found;
    for (const Seen& each : difference.come) {
        if (stop.stop_requested())
            break;
        // A separate record: the stored one may change concurrently.
        auto findings = findingsOfRuleAlone(recordOf(rules.values[each.place]), search);
        if (!findings.empty())
            found.emplace(each.record, std::move(findings));
    }
    return found;
}

using GroupKeys = std::unordered_set<std::string, rules::TextHash>;

void addKeys(GroupKeys& keys, const std::vector<Seen>& rules, const std::vector<rules::RuleValue>& values)
{
    for (const Seen& each : rules) {
        if (const rules::PolicyRuleFields* policy = policyIn(values[each.place]))
            keys.insert(applicationGroupIdentityForFields(*policy));
    }
}

// The places of the rules of one application group, from the first up to, not including, the second.
using Group = std::pair<std::size_t, std::size_t>;

// Cheap when process and constraint agree; otherwise the identity decides, since for some processes the
// constraint does not count.
bool isOfSameGroup(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b)
{
    return isOfSameApplication(a, b)
        || applicationGroupIdentityForFields(a) == applicationGroupIdentityForFields(b);
}

Group groupFrom(std::size_t first, const std::vector<rules::RuleValue>& values)
{
    const rules::PolicyRuleFields* policy = policyIn(values[first]);
    std::size_t end = first + 1;
    while (policy != nullptr && end < values.size() && policyIn(values[end]) != nullptr
        && isOfSameGroup(*policy, *policyIn(values[end])))
        ++end;
    return {first, end};
}

// `places`: the positions of the rules of one application group.
void findCovering(OtherOf& found, const SeenRules& rules, const std::vector<std::size_t>& places,
    const std::stop_token& stop)
{
    std::vector<rules::PolicyRulePtr> slots; // separate records
    std::unordered_map<const rules::PolicyRule*, std::size_t> placeOf;
    for (const std::size_t place : places) {
        slots.push_back(
            std::make_shared<rules::PolicyRule>(std::get<rules::PolicyValue>(rules.values[place])));
        placeOf.emplace(slots.back().get(), place);
    }
    rules::CoverIndex index(slots);
    for (const rules::PolicyRulePtr& rule : slots) {
        if (stop.stop_requested())
            return;
        if (const rules::PolicyRule* covering = index.firstCovering(*rule))
            found.emplace(
                addressOf(ruleAt(rules, placeOf.at(rule.get()))), ruleAt(rules, placeOf.at(covering)));
    }
}

// The rules that cover redundant ones: reused for unchanged groups, recomputed for others.
OtherOf coveringRules(const SeenRules& before, const OtherOf& known, const SeenRules& now,
    const Difference& difference, const std::stop_token& stop)
{
    GroupKeys changed;
    addKeys(changed, difference.come, now.values);
    addKeys(changed, difference.gone, before.values);
    OtherOf found;
    // A rule edited in place may be listed among the rules of its former group.
    std::unordered_map<std::string, std::vector<std::size_t>, rules::TextHash> placesOf;
    for (Group group{0, 0}; group.second < now.values.size() && !stop.stop_requested();) {
        group = groupFrom(group.second, now.values);
        const rules::PolicyRuleFields* policy = policyIn(now.values[group.first]);
        if (policy == nullptr)
            continue;
        const std::string key = applicationGroupIdentityForFields(*policy);
        if (changed.contains(key)) {
            std::vector<std::size_t>& places = placesOf[key];
            for (std::size_t place = group.first; place < group.second; ++place)
                places.push_back(place);
            continue;
        }
        for (std::size_t place = group.first; place < group.second; ++place) {
            if (const auto covered = known.find(addressOf(ruleAt(now, place))); covered != known.end())
                found.insert(*covered);
        }
    }
    for (const auto& [key, places] : placesOf) {
        if (places.size() > 1)
            findCovering(found, now, places, stop);
    }
    return found;
}

OtherOf overlappedRules(const SeenRules& rules, const std::stop_token& stop)
{
    std::vector<const rules::PolicyRuleFields*> policies;
    policies.reserve(rules.values.size());
    for (const rules::RuleValue& value : rules.values) {
        const rules::PolicyRuleFields* policy = policyIn(value);
        policies.push_back(policy == nullptr || policy->system ? nullptr : policy);
    }
    const std::vector<std::size_t> firsts = firstOverlaps(policies, stop);
    OtherOf found;
    for (std::size_t place = 0; place < firsts.size(); ++place) {
        if (firsts[place] != noOverlap)
            found.emplace(addressOf(ruleAt(rules, place)), ruleAt(rules, firsts[place]));
    }
    return found;
}

void addOther(ProblemLists::Lists& lists, FindingKind kind, const rules::RuleRef& rule, const OtherOf& others)
{
    if (const auto other = others.find(addressOf(rule)); other != others.end())
        lists[static_cast<std::size_t>(kind)].push_back({rule, {kind}, other->second});
}

// The stored rules that joined lines are read as.
std::vector<KnownProblem> joinedProblems(const SeenRules& rules, const std::vector<rules::RuleValue>& joined)
{
    std::unordered_multimap<std::uint64_t, const rules::RuleValue*> byHash;
    for (const rules::RuleValue& rule : joined)
        byHash.emplace(identityHash(rule), &rule);
    std::vector<KnownProblem> problems;
    for (std::size_t place = 0; place < rules.values.size() && !byHash.empty(); ++place) {
        const rules::RuleRef& rule = ruleAt(rules, place);
        const rules::RuleValue& value = rules.values[place];
        const auto [first, end] = byHash.equal_range(identityHash(value));
        const bool isJoined = std::any_of(
            first, end, [&value](const auto& entry) { return isEqualRule(*entry.second, value); });
        if (isJoined && !isSystemRule(rule))
            problems.push_back({rule, {FindingKind::joined}});
    }
    return problems;
}

} // namespace

KnownProblems::KnownProblems(RulesPlace place, std::string rulesFile)
    : m_place(std::move(place))
    , m_joined(std::move(rulesFile))
{
}

void KnownProblems::forget(RulesPlace place)
{
    *this = KnownProblems(std::move(place), m_joined.path());
}

ProblemListsPtr KnownProblems::follow(
    std::shared_ptr<const rules::RuleRows> rules, bool withOverlaps, const std::stop_token& stop)
{
    SeenRules now = seen(std::move(rules));
    const Difference difference = differenceOf(m_seen, now);
    FindingsOf alone = findingsAlone(now, difference, m_place, stop);
    OtherOf covering = coveringRules(m_seen, m_covering, now, difference, stop);
    const bool keepsOverlaps = m_knowsOverlaps && difference.isEmpty();
    OtherOf overlapped = keepsOverlaps || !withOverlaps ? OtherOf() : overlappedRules(now, stop);
    std::vector<KnownProblem> joined = joinedProblems(now, m_joined.rules());
    if (stop.stop_requested())
        return nullptr;

    for (const Seen& each : difference.gone)
        m_alone.erase(each.record);
    m_alone.merge(alone);
    m_covering = std::move(covering);
    if (!keepsOverlaps) {
        m_overlapped = std::move(overlapped);
        m_knowsOverlaps = withOverlaps;
    }
    m_seen = std::move(now);

    ProblemLists::Lists lists;
    for (std::size_t place = 0; place < m_seen.values.size(); ++place) {
        const rules::RuleRef& rule = ruleAt(m_seen, place);
        addOther(lists, FindingKind::redundant, rule, m_covering);
        if (const auto findings = m_alone.find(addressOf(rule)); findings != m_alone.end()) {
            for (const RuleFinding& finding : findings->second)
                lists[static_cast<std::size_t>(finding.kind)].push_back({rule, finding});
        }
        if (withOverlaps)
            addOther(lists, FindingKind::overlap, rule, m_overlapped);
    }
    lists[static_cast<std::size_t>(FindingKind::joined)] = std::move(joined);
    return std::make_shared<const ProblemLists>(std::move(lists));
}

} // namespace quorvane::workflow
