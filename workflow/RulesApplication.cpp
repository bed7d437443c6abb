#include "workflow/RulesApplication.h"

#include "rules/RuleMarks.h"
#include "rules/RuleNumbering.h"

#include <algorithm>
#include <utility>

namespace quorvane::workflow {

namespace {

// The present rules, indexed by equality.
class RulesByEquality {
public:
    explicit RulesByEquality(const std::vector<rules::RuleRef>& rules)
        : m_rules(rules)
    {
        m_values.reserve(rules.size());
        for (const rules::RuleRef& rule : rules) {
            m_values.push_back(valueOf(rule));
            const std::uint32_t number = m_numbering.numberOf(m_values.back());
            if (number == m_byNumber.size())
                m_byNumber.emplace_back();
            m_byNumber[number].push_back(m_values.size() - 1);
        }
        m_isWanted.resize(rules.size());
    }

    // The positions of the rules equal to the wanted one; marks them as wanted.
    std::vector<std::size_t> find(const rules::RuleValue& rule)
    {
        const std::uint32_t number = m_numbering.numberOf(rule);
        if (number >= m_byNumber.size())
            return {};
        for (const std::size_t place : m_byNumber[number])
            m_isWanted[place] = true;
        return m_byNumber[number];
    }

    std::size_t size() const { return m_rules.size(); }
    const rules::RuleRef& record(std::size_t place) const { return m_rules[place]; }
    const rules::RuleValue& value(std::size_t place) const { return m_values[place]; }
    bool isWanted(std::size_t place) const { return m_isWanted[place]; }

private:
    const std::vector<rules::RuleRef>& m_rules;
    std::vector<rules::RuleValue> m_values;
    rules::RuleNumbering m_numbering;
    std::vector<std::vector<std::size_t>> m_byNumber; // positions in the order of the store
    std::vector<bool> m_isWanted; // by position
};

void add(RulesApplication& application, const rules::RuleValue& rule)
{
    application.difference.added.push_back(rule);
    application.change.added.push_back({recordOf(rule), rule});
}

void remove(RulesApplication& application, const RulesByEquality& present, std::size_t place)
{
    application.difference.removed.push_back(present.value(place));
    application.change.removed.push_back({present.record(place)});
}

void change(
    RulesApplication& application, const RulesByEquality& present, std::size_t place, rules::RuleValue after)
{
    application.difference.changed.emplace_back(present.value(place), after);
    application.change.changed.push_back({present.record(place), present.value(place), std::move(after)});
}

} // namespace

RulesApplication presenceOf(const std::vector<WantedRule>& wanted,
    const std::vector<rules::RuleRef>& presentRules, const std::vector<std::string>& prunedTags)
{
    RulesApplication application;
    RulesByEquality present(presentRules);
    for (const WantedRule& rule : wanted) {
        const std::vector<std::size_t> places = present.find(rule.rule);
        if (places.empty()) {
            add(application, rule.rule);
            continue;
        }
        const rules::RuleValue& before = present.value(places.front());
        rules::RuleValue after
            = withMarks(before, rule.hasTag ? rule.rule : before, rule.hasCreated ? rule.rule : before);
        if (after == before)
            ++application.unchanged;
        else
            change(application, present, places.front(), std::move(after));
    }
    const auto isPruned = [&](const rules::RuleValue& rule) {
        return std::find(prunedTags.begin(), prunedTags.end(), tagOf(rule).view()) != prunedTags.end();
    };
    for (std::size_t place = 0; place < present.size(); ++place) {
        if (!present.isWanted(place) && isPruned(present.value(place)))
            remove(application, present, place);
    }
    return application;
}

RulesApplication absenceOf(
    const std::vector<WantedRule>& wanted, const std::vector<rules::RuleRef>& presentRules)
{
    RulesApplication application;
    RulesByEquality present(presentRules);
    for (const WantedRule& rule : wanted) {
        const std::vector<std::size_t> places = present.find(rule.rule);
        if (places.empty())
            ++application.unchanged;
        for (const std::size_t place : places)
            remove(application, present, place);
    }
    return application;
}

} // namespace quorvane::workflow
