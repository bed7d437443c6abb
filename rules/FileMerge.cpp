#include "rules/FileMerge.h"

#include "rules/FileAlignment.h"
#include "rules/FileLines.h"
#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <unordered_map>
#include <utility>

// Which files have a line of an entry (FileAlignment.h) decides whether it is in the result. The result is a
// linked list of entries: first those of ours, in their order, into which those of theirs are inserted one by
// one.

namespace quorvane::rules {

namespace {

constexpr std::uint32_t none = AlignedLine::none;

class FileMerge {
    using Side = MergeSide::Value;
    using enum MergeSide::Value;

public:
    FileMerge(std::string_view baseText, std::string_view oursText, std::string_view theirsText)
    {
        read(base, baseText);
        read(ours, oursText);
        read(theirs, theirsText);
        m_entries = alignLines(m_catalogue, m_files);
        m_next.assign(m_entries.size() + 2, none);
        m_result.text.reserve(oursText.size() + oursText.size() / 8);
    }

    FileMergeResult result()
    {
        chooseEntries();
        chainOurs();
        hangInTheirs();
        placeTheStartOfTheirs();
        m_lineEnd = usualLineEnd();
        for (const std::uint32_t number : order())
            append(m_entries[number]);
        return std::move(m_result);
    }

private:
    void read(Side side, std::string_view text)
    {
        AlignedFile& file = m_files[side];
        file.lines = fileLines(text);
        file.numbers = m_catalogue.numbersOf(file.lines);
    }

    const FileLine& lineOf(const AlignedLine& entry, Side side) const
    {
        return m_files[side].lines[entry.at[side]];
    }
    std::uint32_t numberOf(const AlignedLine& entry, Side side) const
    {
        return m_files[side].numbers[entry.at[side]];
    }
    RuleValue ruleOf(const AlignedLine& entry, Side side)
    {
        return m_catalogue.ruleOf(numberOf(entry, side));
    }

    bool hasSameText(const AlignedLine& entry, Side a, Side b) const
    {
        return numberOf(entry, a) == numberOf(entry, b);
    }

    // --- The contents of the result and their order

    static Side onlySide(const AlignedLine& entry) { return entry.isIn(ours) ? ours : theirs; }

    void chooseEntries()
    {
        m_isChosen.reserve(m_entries.size());
        for (const AlignedLine& entry : m_entries) {
            m_isChosen.push_back(belongsInResult(entry));
            m_hasRepeated |= m_isChosen.back() && entry.isRepeated;
        }
        if (m_hasRepeated)
            chooseFirstOfRepeated();
    }

    // What one side has added to equal rules goes before those that the other has removed: the last ones.
    void chooseFirstOfRepeated()
    {
        std::unordered_map<std::uint32_t, std::deque<std::uint32_t>> removed; // by rule, if it is repeated
        for (std::uint32_t number = 0; number < m_entries.size(); ++number) {
            if (m_isChosen[number] && m_entries[number].isRepeated)
                removed.try_emplace(ruleNumberOf(m_entries[number]));
        }
        for (std::uint32_t number = 0; number < m_entries.size(); ++number) {
            const AlignedLine& entry = m_entries[number];
            const bool isInAny = entry.isIn(ours) || entry.isIn(theirs);
            const auto found = entry.isRule && isInAny ? removed.find(ruleNumberOf(entry)) : removed.end();
            if (found == removed.end() || (m_isChosen[number] && found->second.empty()))
                continue;
            found->second.push_back(number);
            if (!m_isChosen[number])
                continue;
            m_isChosen[number] = false;
            m_isChosen[found->second.front()] = true;
            found->second.pop_front();
        }
    }

    bool belongsInResult(const AlignedLine& entry)
    {
        if (!entry.isIn(ours) && !entry.isIn(theirs))
            return false;
        return (entry.isIn(ours) && entry.isIn(theirs)) || !entry.isIn(base) || isKeptForItsChange(entry);
    }

    bool isKeptForItsChange(const AlignedLine& entry)
    {
        const Side side = onlySide(entry);
        if (hasSameText(entry, base, side) || entry.isRepeated)
            return false;
        return !entry.isRule || !hasSameTag(ruleOf(entry, base), ruleOf(entry, side));
    }

    // Two more links: the start of the list, and the start of theirs while it is not in the list.
    std::uint32_t chainStart() const { return static_cast<std::uint32_t>(m_entries.size()); }
    std::uint32_t theirsStart() const { return chainStart() + 1; }

    void chainOurs()
    {
        std::uint32_t last = chainStart();
        for (const std::uint32_t number : m_files[ours].entries) {
            if (m_isChosen[number])
                last = m_next[last] = number;
        }
    }

    void hangInTheirs()
    {
        std::uint32_t behind = theirsStart();
        for (const std::uint32_t number : m_files[theirs].entries) {
            const AlignedLine& entry = m_entries[number];
            if (!m_isChosen[number])
                continue;
            if (!entry.isIn(ours)) {
                const std::uint32_t place = entry.isRule ? behind : behindTextsOfOurs(behind);
                m_next[number] = m_next[place];
                m_next[place] = number;
            }
            behind = number;
        }
    }

    // The last of the texts that ours has added directly behind an entry; the entry itself if there are none.
    std::uint32_t behindTextsOfOurs(std::uint32_t number) const
    {
        const auto isTextOfOurs = [](const AlignedLine& entry) {
            return !entry.isRule && !entry.isIn(base) && !entry.isIn(theirs);
        };
        while (m_next[number] != none && isTextOfOurs(m_entries[m_next[number]]))
            number = m_next[number];
        return number;
    }

    void placeTheStartOfTheirs()
    {
        const std::uint32_t first = m_next[theirsStart()];
        if (first == none)
            return;
        const std::uint32_t place
            = m_entries[first].isRule ? endOfKind(isWatchRule(first)) : behindTextsOfOurs(chainStart());
        std::uint32_t last = first;
        while (m_next[last] != none)
            last = m_next[last];
        m_next[last] = m_next[place];
        m_next[place] = first;
    }

    // The first of equal rules is the one that counts: what theirs would put before it comes behind it.
    std::vector<std::uint32_t> order() const
    {
        const std::vector<std::uint32_t> former = formerEqualRules();
        std::vector<bool> isPlaced(former.size());
        std::unordered_map<std::uint32_t, std::uint32_t> waiting; // by what they wait for
        std::vector<std::uint32_t> order;
        for (std::uint32_t number = m_next[chainStart()]; number != none; number = m_next[number]) {
            if (!former.empty() && former[number] != none && !isPlaced[former[number]]) {
                waiting.emplace(former[number], number);
                continue;
            }
            order.push_back(number);
            if (former.empty())
                continue;
            isPlaced[number] = true;
            for (auto next = waiting.find(number); next != waiting.end(); next = waiting.find(next->second)) {
                order.push_back(next->second);
                isPlaced[next->second] = true;
            }
        }
        return order;
    }

    // By entry: the equal rule before it, of those in the result. Empty when there are none.
    std::vector<std::uint32_t> formerEqualRules() const
    {
        std::vector<std::uint32_t> former;
        if (!m_hasRepeated)
            return former;
        std::vector<std::uint32_t> last(m_catalogue.ruleCount(), none);
        former.assign(m_entries.size(), none);
        for (std::uint32_t number = 0; number < m_entries.size(); ++number) {
            if (m_isChosen[number] && m_entries[number].isRule)
                former[number] = std::exchange(last[ruleNumberOf(m_entries[number])], number);
        }
        return former;
    }

    std::uint32_t ruleNumberOf(const AlignedLine& entry) const
    {
        return m_catalogue.ruleNumber(numberOf(entry, onlySide(entry)));
    }

    bool isWatchRule(std::uint32_t number) const
    {
        return m_catalogue.isWatchRule(ruleNumberOf(m_entries[number]));
    }

    std::uint32_t endOfKind(bool watchRules) const
    {
        std::uint32_t place = none;
        std::uint32_t last = chainStart();
        for (std::uint32_t number = m_next[last]; number != none; number = m_next[number]) {
            last = number;
            if (m_entries[number].isRule && isWatchRule(number) == watchRules)
                place = number;
        }
        if (place != none)
            return place;
        return watchRules ? chainStart() : last;
    }

    // --- The lines

    // The line end of an added line: that of the file's first line.
    std::string_view usualLineEnd() const
    {
        for (const Side side : {ours, base}) {
            const std::vector<FileLine>& lines = m_files[side].lines;
            if (!lines.empty() && !lines.front().end.empty())
                return lines.front().end;
        }
        return "\n";
    }

    void append(const AlignedLine& entry)
    {
        if (m_lacksLineEnd)
            m_result.text.append(m_lineEnd);
        m_lacksLineEnd = false;
        if (entry.isIn(ours) && entry.isIn(theirs))
            return appendOfBoth(entry);
        const Side side = onlySide(entry);
        if (entry.isIn(base) && isKeptForItsChange(entry))
            reportKept(entry, side);
        const FileLine& line = lineOf(entry, side);
        append(line.text, side == ours ? line.end : m_lineEnd);
    }

    void append(std::string_view text, std::string_view end)
    {
        m_result.text.append(text).append(end);
        m_lacksLineEnd = end.empty();
    }

    void appendOfBoth(const AlignedLine& entry)
    {
        const std::string_view end = lineOf(entry, endComesFrom(entry)).end;
        if (const auto side = textComesFrom(entry))
            append(lineOf(entry, *side).text, end);
        else
            appendMergedRule(entry, end);
    }

    Side endComesFrom(const AlignedLine& entry) const
    {
        const bool isUnchanged = entry.isIn(base) && lineOf(entry, ours).end == lineOf(entry, base).end;
        return isUnchanged ? theirs : ours;
    }

    // The side whose line is copied to the result; none when a rule is to be merged.
    std::optional<Side> textComesFrom(const AlignedLine& entry)
    {
        if (hasSameText(entry, ours, theirs))
            return ours;
        if (entry.isIn(base) && hasSameText(entry, base, ours))
            return theirs;
        if ((entry.isIn(base) && hasSameText(entry, base, theirs)) || entry.isRepeated)
            return ours;
        if (entry.isRule)
            return std::nullopt;
        m_result.conflicts.emplace_back(TextConflict{TextConflict::changedOnBothSides,
            std::string(lineOf(entry, ours).text), std::string(lineOf(entry, theirs).text)});
        return ours;
    }

    void appendMergedRule(const AlignedLine& entry, std::string_view end)
    {
        const RuleValue rule = ruleOf(entry, ours);
        const std::optional<RuleValue> before
            = entry.isIn(base) ? std::optional(ruleOf(entry, base)) : std::nullopt;
        const MergedMarks merged = mergeMarks(before ? &*before : nullptr, rule, ruleOf(entry, theirs));
        if (merged.report)
            m_result.conflicts.emplace_back(*merged.report);
        if (hasSameMarks(merged.rule, rule))
            return append(lineOf(entry, ours).text, end);
        std::string line = askValue(merged.rule, [](const auto& fields) { return ruleLine(fields); });
        line.pop_back(); // the line feed
        append(line, end);
    }

    void reportKept(const AlignedLine& entry, Side side)
    {
        if (entry.isRule)
            m_result.conflicts.emplace_back(
                MergeReport{MergeReport::keptForItsTag, ruleOf(entry, side), ruleOf(entry, base)});
        else
            m_result.conflicts.emplace_back(TextConflict{TextConflict::keptForItsChange,
                std::string(lineOf(entry, side).text), std::string(lineOf(entry, base).text)});
    }

    LineCatalogue m_catalogue{RuleLines::usable};
    std::array<AlignedFile, MergeSide::count> m_files;
    std::vector<AlignedLine> m_entries;
    std::vector<bool> m_isChosen; // by entry: it is in the result
    bool m_hasRepeated = false; // there are equal rules in the result
    std::vector<std::uint32_t> m_next; // by entry: the next one of the list
    std::string_view m_lineEnd;
    bool m_lacksLineEnd = false; // the last line of the result, so far
    FileMergeResult m_result;
};

} // namespace

FileMergeResult mergeFiles(std::string_view baseText, std::string_view oursText, std::string_view theirsText)
{
    return FileMerge(baseText, oursText, theirsText).result();
}

} // namespace quorvane::rules
