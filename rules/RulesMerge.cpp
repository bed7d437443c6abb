#include "rules/RulesMerge.h"

#include "rules/AscendingRun.h"
#include "rules/OccurrenceNumbering.h"
#include "rules/RuleMarks.h"
#include "rules/RuleNumbering.h"

#include <algorithm>
#include <cstdint>

// Every rule of the three lists gets an entry, equal rules the same one. Only the lists that contain an entry
// decide whether it is in the result. The result is a linked list of entries: first those of ours in their
// order, into which those of theirs are inserted one by one, each behind the last one of theirs that is
// already linked.

namespace quorvane::rules {

namespace {

constexpr std::uint32_t absent = UINT32_MAX;

// A rule, and its position in each list.
struct MergedRule {
    std::uint32_t base = absent;
    std::uint32_t ours = absent;
    std::uint32_t theirs = absent;
};

// Gives matching rules the same number: equal rules, the first of a list with the first of another, the
// second with the second.
class EntryNumbering {
public:
    void beginList() { m_occurrences.beginList(); }
    std::uint32_t numberOf(const RuleValue& rule)
    {
        return m_occurrences.numberOf(m_numbering.numberOf(rule));
    }

private:
    RuleNumbering m_numbering;
    OccurrenceNumbering m_occurrences;
};

class Merge {
public:
    Merge(const std::vector<RuleValue>& base, const std::vector<RuleValue>& ours,
        const std::vector<RuleValue>& theirs)
        : m_base(base)
        , m_ours(ours)
        , m_theirs(theirs)
    {
        EntryNumbering numbering;
        enter(base, numbering, &MergedRule::base);
        m_oursEntries = enter(ours, numbering, &MergedRule::ours);
        m_theirsEntries = enter(theirs, numbering, &MergedRule::theirs);
        m_isMoved.resize(m_entries.size());
        m_next.assign(m_entries.size() + 2, absent);
    }

    // Rules of all three lists that theirs has in another order than the base move to their place in theirs.
    void moveWhatTheirsMoved()
    {
        std::vector<std::uint32_t> entries;
        std::vector<std::uint32_t> places;
        for (const std::uint32_t number : m_theirsEntries) {
            const MergedRule& entry = m_entries[number];
            if (entry.base != absent && entry.ours != absent) {
                entries.push_back(number);
                places.push_back(entry.base);
            }
        }
        if (std::is_sorted(places.begin(), places.end()))
            return;
        const std::vector<bool> isOut = outOfOrder(places);
        for (std::size_t i = 0; i < entries.size(); ++i)
            m_isMoved[entries[i]] = isOut[i];
    }

    MergeResult result(Placement placement)
    {
        chainOurs();
        hangInTheirs();
        placeTheStartOfTheirs(placement);
        MergeResult merged;
        for (std::uint32_t number = m_next[chainStart()]; number != absent; number = m_next[number])
            addTo(merged, number);
        return merged;
    }

private:
    // Two more links: the start of the list, and the start of theirs while it is not in the list.
    std::uint32_t chainStart() const { return static_cast<std::uint32_t>(m_entries.size()); }
    std::uint32_t theirsStart() const { return chainStart() + 1; }

    std::vector<std::uint32_t> enter(
        const std::vector<RuleValue>& rules, EntryNumbering& numbering, std::uint32_t MergedRule::*place)
    {
        std::vector<std::uint32_t> numbers;
        numbers.reserve(rules.size());
        numbering.beginList();
        for (std::size_t i = 0; i < rules.size(); ++i) {
            const std::uint32_t number = numbering.numberOf(rules[i]);
            if (number == m_entries.size())
                m_entries.emplace_back();
            m_entries[number].*place = static_cast<std::uint32_t>(i);
            numbers.push_back(number);
        }
        return numbers;
    }

    // The rule of an entry of one side only.
    const RuleValue& onlyRule(const MergedRule& entry) const
    {
        return entry.ours != absent ? m_ours[entry.ours] : m_theirs[entry.theirs];
    }

    bool isInResult(const MergedRule& entry) const
    {
        if (entry.ours == absent && entry.theirs == absent)
            return false;
        const bool isInBoth = entry.ours != absent && entry.theirs != absent;
        return isInBoth || entry.base == absent || !hasSameTag(m_base[entry.base], onlyRule(entry));
    }

    void chainOurs()
    {
        std::uint32_t last = chainStart();
        for (const std::uint32_t number : m_oursEntries) {
            if (isInResult(m_entries[number]) && !m_isMoved[number])
                last = m_next[last] = number;
        }
    }

    void hangInTheirs()
    {
        std::uint32_t behind = theirsStart();
        for (const std::uint32_t number : m_theirsEntries) {
            if (!isInResult(m_entries[number]))
                continue;
            if (m_entries[number].ours == absent || m_isMoved[number]) {
                m_next[number] = m_next[behind];
                m_next[behind] = number;
            }
            behind = number;
        }
    }

    bool isWatchRule(std::uint32_t number) const
    {
        return std::holds_alternative<WatchValue>(onlyRule(m_entries[number]));
    }

    // The entry behind which rules of that kind begin or end.
    std::uint32_t placeOfKind(bool watchRules, Placement placement) const
    {
        std::uint32_t place = absent;
        std::uint32_t last = chainStart();
        for (std::uint32_t number = m_next[last]; number != absent; last = number, number = m_next[number]) {
            if (isWatchRule(number) != watchRules)
                continue;
            if (placement == Placement::startOfKind)
                return last;
            place = number;
        }
        if (place != absent)
            return place;
        return watchRules ? chainStart() : last;
    }

    void placeTheStartOfTheirs(Placement placement)
    {
        const std::uint32_t first = m_next[theirsStart()];
        if (first == absent)
            return;
        const std::uint32_t place = placeOfKind(isWatchRule(first), placement);
        std::uint32_t last = first;
        while (m_next[last] != absent)
            last = m_next[last];
        m_next[last] = m_next[place];
        m_next[place] = first;
    }

    void addTo(MergeResult& merged, std::uint32_t number) const
    {
        const MergedRule& entry = m_entries[number];
        if (entry.ours != absent && entry.theirs != absent) {
            addOfBoth(merged, entry, m_isMoved[number]);
            return;
        }
        const RuleValue& rule = onlyRule(entry);
        if (entry.base != absent)
            merged.reports.push_back({MergeReport::keptForItsTag, rule, m_base[entry.base]});
        const bool isOurs = entry.ours != absent;
        merged.rules.push_back({rule, isOurs ? std::optional<std::size_t>(entry.ours) : std::nullopt});
    }

    void addOfBoth(MergeResult& merged, const MergedRule& entry, bool isMoved) const
    {
        const RuleValue* base = entry.base == absent ? nullptr : &m_base[entry.base];
        MergedMarks marks = mergeMarks(base, m_ours[entry.ours], m_theirs[entry.theirs]);
        if (marks.report)
            merged.reports.push_back(std::move(*marks.report));
        merged.rules.push_back({std::move(marks.rule), entry.ours, isMoved});
    }

    const std::vector<RuleValue>& m_base;
    const std::vector<RuleValue>& m_ours;
    const std::vector<RuleValue>& m_theirs;
    std::vector<MergedRule> m_entries;
    std::vector<std::uint32_t> m_oursEntries;
    std::vector<std::uint32_t> m_theirsEntries;
    std::vector<bool> m_isMoved; // by entry
    std::vector<std::uint32_t> m_next; // by entry: the next one of the list
};

} // namespace

MergedMarks mergeMarks(const RuleValue* base, const RuleValue& ours, const RuleValue& theirs)
{
    const RuleValue& before = base == nullptr ? theirs : *base; // without a base, ours counts as the change
    const bool takesTheirTag = hasSameTag(before, ours);
    const bool takesTheirTime = createdOf(before) == createdOf(ours);
    MergedMarks merged{
        withMarks(ours, takesTheirTag ? theirs : ours, takesTheirTime ? theirs : ours), std::nullopt};
    if (hasSameTag(merged.rule, theirs))
        return merged;
    if (base == nullptr)
        merged.report = {MergeReport::addedWithOtherTag, merged.rule, theirs};
    else if (!hasSameTag(before, theirs))
        merged.report = {MergeReport::tagSetOnBothSides, merged.rule, theirs};
    return merged;
}

MergeResult mergeRules(const std::vector<RuleValue>& base, const std::vector<RuleValue>& ours,
    const std::vector<RuleValue>& theirs, Placement placement)
{
    Merge merge(base, ours, theirs);
    if (placement == Placement::startOfKind)
        merge.moveWhatTheirsMoved();
    return merge.result(placement);
}

} // namespace quorvane::rules
