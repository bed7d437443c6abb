#include "rules/PreparedReload.h"

#include "rules/MergedChange.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"
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
    }

    // None when it would not lead to exactly the rules that were read, in their order.
    std::optional<ChangeSet> change()
    {
        const std::size_t shorter = std::min(size(m_present), size(m_read));
        std::size_t start = 0;
        while (start < shorter && isSameAt(start, start))
            ++start;
        std::size_t end = 0;
        while (end < shorter - start && isSameAt(size(m_present) - end - 1, size(m_read) - end - 1))
            ++end;
        const std::size_t from = start > 0 ? start - 1 : 0; // with the rule behind which others are placed
        for (std::size_t row = 0; row < from; ++row)
            keep(refAt(m_present, row), refAt(m_read, row));
        if (!compareBetween(from, size(m_present) - end, size(m_read) - end))
            return std::nullopt;
        for (; end > 0; --end)
            keep(refAt(m_present, size(m_present) - end), refAt(m_read, size(m_read) - end));
        return std::move(m_change);
    }

    std::vector<PolicyRulePtr> takeAged() { return std::move(m_aged); }

private:
    static std::size_t size(const RuleRows& rows) { return rows.count(true); }
    static const RuleRef& refAt(const RuleRows& rows, std::size_t row) { return rows.at(row, true); }
    bool isSameAt(std::size_t present, std::size_t read) const
    {
        return isSameRule(valueOf(refAt(m_present, present)), presentValueOf(refAt(m_read, read)));
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

    // The rows from `from` up to the ends.
    bool compareBetween(std::size_t from, std::size_t presentEnd, std::size_t readEnd)
    {
        std::vector<RuleRef> present;
        std::vector<RuleValue> values;
        for (std::size_t row = from; row < presentEnd; ++row) {
            present.push_back(refAt(m_present, row));
            values.push_back(valueOf(present.back()));
        }
        std::vector<RuleValue> read;
        for (std::size_t row = from; row < readEnd; ++row)
            read.push_back(presentValueOf(refAt(m_read, row)));
        const MergeResult merged = mergeRules(values, values, read, Placement::startOfKind);
        const bool isExact = std::equal(merged.rules.begin(), merged.rules.end(), read.begin(), read.end(),
            [](const MergedRule& rule, const RuleValue& wanted) {
                return isSameRule(rule.rule, wanted) && hasSameMarks(rule.rule, wanted);
            });
        if (!isExact)
            return false;
        ChangeSet between = changeTo(merged, present);
        for (std::size_t number = 0; number < merged.rules.size(); ++number) {
            const MergedRule& rule = merged.rules[number];
            if (!rule.ours)
                continue;
            const bool isChanged = rule.isMoved || rule.rule != values[*rule.ours];
            if (noteAge(present[*rule.ours], refAt(m_read, from + number), isChanged) && !isChanged)
                between.changed.push_back({present[*rule.ours], rule.rule, copyOf(rule.rule)});
        }
        append(m_change.removed, between.removed);
        append(m_change.changed, between.changed);
        append(m_change.added, between.added);
        return true;
    }

    template <class Step> static void append(std::vector<Step>& steps, std::vector<Step>& more)
    {
        steps.insert(steps.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }

    const RuleRows& m_present;
    const RuleRows& m_read;
    ChangeSet m_change;
    std::vector<PolicyRulePtr> m_aged;
};

} // namespace

void PreparedReload::compareWith(const RuleRows& read)
{
    m_readAt = static_cast<std::uint64_t>(std::time(nullptr));
    Comparison comparison(*m_from, read);
    m_change = comparison.change();
    m_aged = comparison.takeAged();
}

} // namespace quorvane::rules
