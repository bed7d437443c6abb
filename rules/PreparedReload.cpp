#include "rules/PreparedReload.h"

#include "rules/MergedChange.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"
#include "rules/RuleStore.h"
#include "rules/RulesMerge.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <utility>

// Both lists are in stored order. What they begin and end with is the same in most cases, and is compared
// pair by pair; only what is between is merged, which takes several times as long per rule.

namespace quorvane::rules {

namespace {

bool isSystemValue(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return fields.system; });
}

// An equal value that counts as another one.
RuleValue copyOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return RuleValue(makeRuleValue(fields)); });
}

// The same rule in everything but its marks, the number of its reading and its age.
bool isSameRule(const RuleValue& a, const RuleValue& b)
{
    return isEqualRule(a, b) && isSystemValue(a) == isSystemValue(b);
}

class Comparison {
public:
    Comparison(const RuleRows& present, const RuleRows& read)
        : m_present(present)
        , m_read(read)
    {
        const std::size_t shorter = std::min(size(m_present), size(m_read));
        std::size_t start = 0;
        while (start < shorter && isSameAt(start, start))
            ++start;
        while (m_end < shorter - start && isSameAt(size(m_present) - m_end - 1, size(m_read) - m_end - 1))
            ++m_end;
        m_start = start > 0 ? start - 1 : 0; // with the rule behind which others are placed
        mergeBetween();
    }

    // False when a merge does not lead to exactly the rules that were read, in their order.
    bool isExact() const
    {
        return std::equal(m_merged.rules.begin(), m_merged.rules.end(), m_readBetween.begin(),
            m_readBetween.end(), [](const MergedRule& rule, const RuleValue& wanted) {
                return isSameRule(rule.rule, wanted) && hasSameMarks(rule.rule, wanted);
            });
    }

    std::size_t lostUserRules() const
    {
        std::vector<bool> stays(m_presentBetween.size());
        for (const MergedRule& rule : m_merged.rules) {
            if (rule.ours)
                stays[*rule.ours] = true;
        }
        std::size_t lost = 0;
        for (std::size_t number = 0; number < stays.size(); ++number)
            lost += !stays[number] && !isSystemValue(m_presentBetween[number]) ? 1U : 0U;
        return lost;
    }

    // Both require an exact merge. The first: none when it has that many steps.
    std::optional<ChangeSet> change(std::size_t manySteps)
    {
        if (stepsBetween() >= manySteps)
            return std::nullopt;
        for (std::size_t row = 0; row < m_start; ++row)
            keep(refAt(m_present, row), refAt(m_read, row));
        changeBetween();
        for (std::size_t end = m_end; end > 0; --end)
            keep(refAt(m_present, size(m_present) - end), refAt(m_read, size(m_read) - end));
        const std::size_t steps = m_change.removed.size() + m_change.changed.size() + m_change.added.size();
        return steps < manySteps ? std::optional(std::move(m_change)) : std::nullopt;
    }
    std::vector<std::optional<StoreSuccession::Heritage>> heritage() const
    {
        std::vector<std::optional<StoreSuccession::Heritage>> heritage(size(m_read));
        const auto inherit = [&](std::size_t row, std::size_t presentRow) {
            const RuleValue read = presentValueOf(refAt(m_read, row));
            heritage[row] = {presentRow, withMarks(valueOf(refAt(m_present, presentRow)), read, read)};
        };
        for (std::size_t row = 0; row < m_start; ++row)
            inherit(row, row);
        for (std::size_t number = 0; number < m_merged.rules.size(); ++number) {
            if (const auto& ours = m_merged.rules[number].ours)
                inherit(m_start + number, m_start + *ours);
        }
        for (std::size_t end = m_end; end > 0; --end)
            inherit(size(m_read) - end, size(m_present) - end);
        return heritage;
    }

    std::vector<PolicyRulePtr> takeAged() { return std::move(m_aged); }

private:
    static std::size_t size(const RuleRows& rows) { return rows.count(true); }
    static const RuleRef& refAt(const RuleRows& rows, std::size_t row) { return rows.at(row, true); }
    bool isSameAt(std::size_t present, std::size_t read) const
    {
        return isSameRule(valueOf(refAt(m_present, present)), presentValueOf(refAt(m_read, read)));
    }

    void mergeBetween()
    {
        for (std::size_t row = m_start; row < size(m_present) - m_end; ++row)
            m_presentBetween.push_back(valueOf(refAt(m_present, row)));
        for (std::size_t row = m_start; row < size(m_read) - m_end; ++row)
            m_readBetween.push_back(presentValueOf(refAt(m_read, row)));
        m_merged = mergeRules(m_presentBetween, m_presentBetween, m_readBetween, Placement::startOfKind);
    }

    std::size_t stepsBetween() const
    {
        std::size_t steps = 0;
        std::size_t kept = 0;
        for (const MergedRule& rule : m_merged.rules) {
            kept += rule.ours ? 1U : 0U;
            steps += !rule.ours || rule.isMoved || rule.rule != m_presentBetween[*rule.ours] ? 1U : 0U;
        }
        return steps + m_presentBetween.size() - kept;
    }

    // A rule that is in both, as it was read: its marks may differ, and its age, by which it may stand
    // elsewhere in a sorted table.
    void keep(const RuleRef& present, const RuleRef& read)
    {
        const RuleValue before = valueOf(present);
        RuleValue after = withMarks(before, presentValueOf(read), presentValueOf(read));
        if (noteAge(present, read, after != before) && after == before)
            after = copyOf(before);
        if (after != before)
            m_change.changed.push_back({present, before, after});
    }

    // True when the rule's age is to be measured anew: its state is another one now, or may be after a
    // change.
    bool noteAge(const RuleRef& present, const RuleRef& read, bool isChanged)
    {
        const PolicyRule* now = policyRuleIn(read);
        if (now == nullptr || (!isChanged && policyRuleIn(present)->getRuleState() == now->getRuleState()))
            return false;
        m_aged.push_back(std::get<PolicyRulePtr>(present));
        return true;
    }

    void changeBetween()
    {
        std::vector<RuleRef> present;
        for (std::size_t number = 0; number < m_presentBetween.size(); ++number)
            present.push_back(refAt(m_present, m_start + number));
        ChangeSet between = changeTo(m_merged, present);
        for (std::size_t number = 0; number < m_merged.rules.size(); ++number) {
            const MergedRule& rule = m_merged.rules[number];
            if (!rule.ours)
                continue;
            const bool isChanged = rule.isMoved || rule.rule != m_presentBetween[*rule.ours];
            if (noteAge(present[*rule.ours], refAt(m_read, m_start + number), isChanged) && !isChanged)
                between.changed.push_back({present[*rule.ours], rule.rule, copyOf(rule.rule)});
        }
        append(m_change.removed, between.removed);
        append(m_change.changed, between.changed);
        append(m_change.added, between.added);
    }

    template <class Step> static void append(std::vector<Step>& steps, std::vector<Step>& more)
    {
        steps.insert(steps.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }

    const RuleRows& m_present;
    const RuleRows& m_read;
    std::size_t m_start = 0; // rows at the beginning of both that are the same rules
    std::size_t m_end = 0; // the same at the end
    std::vector<RuleValue> m_presentBetween;
    std::vector<RuleValue> m_readBetween;
    MergeResult m_merged; // of those between
    ChangeSet m_change;
    std::vector<PolicyRulePtr> m_aged;
};

} // namespace

void PreparedReload::compareWith(std::unique_ptr<RuleStore> store)
{
    const auto read = store->storedRows();
    m_readAt = static_cast<std::uint64_t>(std::time(nullptr));
    Comparison comparison(*m_from, *read);
    if (!comparison.isExact())
        return;
    m_lostUserRules = comparison.lostUserRules();
    m_change = comparison.change(m_manySteps);
    if (m_change) {
        m_aged = comparison.takeAged();
        return;
    }
    store->indexLargeGroups(); // heirs are covered and cover as what they replace
    m_succession.emplace(std::move(store), m_from, comparison.heritage());
}

} // namespace quorvane::rules
