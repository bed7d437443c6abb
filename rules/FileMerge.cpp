#include "rules/FileMerge.h"

#include "rules/FileLines.h"
#include "rules/OccurrenceNumbering.h"
#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"
#include "rules/SequenceMatching.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

// Every line of the three files belongs to an entry: equal rules to the same one wherever they are, a text to
// the entry of the line that it equals or has replaced. Which files have a line of an entry decides whether
// it is in the result. The result is a linked list of entries: first those of ours, in their order, into
// which those of theirs are inserted one by one.

namespace quorvane::rules {

namespace {

constexpr std::uint32_t none = LineCatalogue::none;

enum Side : std::size_t { base, ours, theirs, sides };

// One line across the files: its position in each.
struct Entry {
    std::array<std::uint32_t, sides> at{none, none, none};
    bool isRule = false;
    bool isRepeated = false; // a rule that occurred earlier in the file

    bool isIn(Side side) const { return at[side] != none; }
};

struct File {
    std::vector<FileLine> lines;
    Sequence numbers; // by line: of its text
    Sequence entries; // by line; none while unknown
};

// Determines which lines of the files correspond.
class Alignment {
public:
    Alignment(LineCatalogue& catalogue, std::array<File, sides>& files)
        : m_catalogue(catalogue)
        , m_files(files)
    {
    }

    std::vector<Entry> entries()
    {
        OccurrenceNumbering occurrences;
        for (const Side side : {base, ours, theirs})
            enterRules(side, occurrences);
        enterTexts(base);
        for (const Side side : {ours, theirs}) {
            matchSingleTexts(side);
            matchTexts(base, side);
        }
        enterTexts(ours);
        matchTexts(ours, theirs);
        enterTexts(theirs);
        return std::move(m_entries);
    }

private:
    bool isText(Side side, std::size_t line) const
    {
        return m_catalogue.ruleNumber(m_files[side].numbers[line]) == none;
    }

    void enterRules(Side side, OccurrenceNumbering& occurrences)
    {
        File& file = m_files[side];
        file.entries.assign(file.lines.size(), none);
        std::vector<bool> isMet(m_catalogue.ruleCount());
        occurrences.beginList();
        for (std::size_t line = 0; line < file.lines.size(); ++line) {
            const std::uint32_t rule = m_catalogue.ruleNumber(file.numbers[line]);
            if (rule == none)
                continue;
            const std::uint32_t entry = occurrences.numberOf(rule);
            if (entry == m_entries.size())
                m_entries.push_back({.isRule = true, .isRepeated = isMet[rule]});
            isMet[rule] = true;
            enter(side, line, entry);
        }
    }

    // Gives each text without an entry a new one.
    void enterTexts(Side side)
    {
        for (std::size_t line = 0; line < m_files[side].lines.size(); ++line) {
            if (m_files[side].entries[line] != none)
                continue;
            m_entries.emplace_back();
            enter(side, line, static_cast<std::uint32_t>(m_entries.size() - 1));
        }
    }

    void enter(Side side, std::size_t line, std::uint32_t entry)
    {
        m_files[side].entries[line] = entry;
        m_entries[entry].at[side] = static_cast<std::uint32_t>(line);
    }

    // By text: its line in `side` if it occurs there exactly once, is not a rule and not empty.
    std::vector<std::uint32_t> singleTexts(Side side) const
    {
        constexpr std::uint32_t several = none - 1;
        const File& file = m_files[side];
        std::vector<std::uint32_t> places(m_catalogue.size(), none);
        for (std::size_t line = 0; line < file.lines.size(); ++line) {
            std::uint32_t& place = places[file.numbers[line]];
            const bool isSingle = place == none && isText(side, line) && !file.lines[line].text.empty();
            place = isSingle ? static_cast<std::uint32_t>(line) : several;
        }
        std::replace(places.begin(), places.end(), several, none);
        return places;
    }

    // A text that occurs once in both is the same line wherever it has moved.
    void matchSingleTexts(Side side)
    {
        const std::vector<std::uint32_t> inBase = singleTexts(base);
        const std::vector<std::uint32_t> inSide = singleTexts(side);
        for (std::size_t number = 0; number < inBase.size(); ++number) {
            if (inBase[number] != none && inSide[number] != none)
                enter(side, inSide[number], m_files[base].entries[inBase[number]]);
        }
    }

    // The keys by which lines of `side` are compared with those of `other`: entries that are in both.
    Sequence comparedBy(Side side, Side other) const
    {
        const File& file = m_files[side];
        Sequence elements(file.lines.size());
        for (std::size_t line = 0; line < elements.size(); ++line) {
            const std::uint32_t entry = file.entries[line];
            const bool isInBoth
                = entry != none && m_entries[entry].isIn(side) && m_entries[entry].isIn(other);
            elements[line] = isInBoth || !isText(side, line)
                ? entry
                : static_cast<std::uint32_t>(m_entries.size()) + file.numbers[line];
        }
        return elements;
    }

    // Texts of `side` that align with an equal one of `reference` join its entry; between such positions,
    // texts missing from base and texts added there are taken for changed ones.
    void matchTexts(Side reference, Side side)
    {
        if (!hasUnmatchedText(side))
            return;
        std::uint32_t from = 0;
        std::uint32_t sideFrom = 0;
        auto pairs = matchingPlaces(comparedBy(reference, side), comparedBy(side, reference));
        pairs.emplace_back(m_files[reference].lines.size(), m_files[side].lines.size());
        for (const auto& [place, sidePlace] : pairs) {
            if (reference == base)
                matchChangedTexts(side, {from, place}, {sideFrom, sidePlace});
            from = place + 1;
            sideFrom = sidePlace + 1;
            if (sidePlace < m_files[side].lines.size() && m_files[side].entries[sidePlace] == none)
                enter(side, sidePlace, m_files[reference].entries[place]);
        }
    }

    bool hasUnmatchedText(Side side) const
    {
        const Sequence& entries = m_files[side].entries;
        return std::find(entries.begin(), entries.end(), none) != entries.end();
    }

    // The first removed text is paired with the first added one, and so on. Empty lines are not paired.
    void matchChangedTexts(Side side, PlacePair inBase, PlacePair inSide)
    {
        std::uint32_t line = inSide.first;
        for (std::uint32_t gone = inBase.first; gone < inBase.second; ++gone) {
            const std::uint32_t entry = m_files[base].entries[gone];
            if (m_entries[entry].isRule || m_entries[entry].isIn(side)
                || m_files[base].lines[gone].text.empty())
                continue;
            while (line < inSide.second && !isNewText(side, line))
                ++line;
            if (line == inSide.second)
                return;
            enter(side, line, entry);
        }
    }

    bool isNewText(Side side, std::uint32_t line) const
    {
        return m_files[side].entries[line] == none && !m_files[side].lines[line].text.empty();
    }

    LineCatalogue& m_catalogue;
    std::array<File, sides>& m_files;
    std::vector<Entry> m_entries;
};

class FileMerge {
public:
    FileMerge(std::string_view baseText, std::string_view oursText, std::string_view theirsText)
    {
        read(base, baseText);
        read(ours, oursText);
        read(theirs, theirsText);
        m_entries = Alignment(m_catalogue, m_files).entries();
        m_next.assign(m_entries.size() + 2, none);
        m_result.text.reserve(oursText.size() + oursText.size() / 8);
    }

    FileMergeResult result()
    {
        chainOurs();
        hangInTheirs();
        placeTheStartOfTheirs();
        m_lineEnd = usualLineEnd();
        for (std::uint32_t number = m_next[chainStart()]; number != none; number = m_next[number])
            append(m_entries[number]);
        return std::move(m_result);
    }

private:
    void read(Side side, std::string_view text)
    {
        File& file = m_files[side];
        file.lines = fileLines(text);
        file.numbers = m_catalogue.numbersOf(file.lines);
    }

    const FileLine& lineOf(const Entry& entry, Side side) const
    {
        return m_files[side].lines[entry.at[side]];
    }
    std::uint32_t numberOf(const Entry& entry, Side side) const
    {
        return m_files[side].numbers[entry.at[side]];
    }
    RuleValue ruleOf(const Entry& entry, Side side) { return m_catalogue.ruleOf(numberOf(entry, side)); }

    bool hasSameText(const Entry& entry, Side a, Side b) const
    {
        return numberOf(entry, a) == numberOf(entry, b);
    }

    // --- The contents of the result and their order

    static Side onlySide(const Entry& entry) { return entry.isIn(ours) ? ours : theirs; }

    bool isInResult(const Entry& entry)
    {
        if (!entry.isIn(ours) && !entry.isIn(theirs))
            return false;
        return (entry.isIn(ours) && entry.isIn(theirs)) || !entry.isIn(base) || isKeptForItsChange(entry);
    }

    bool isKeptForItsChange(const Entry& entry)
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
            if (isInResult(m_entries[number]))
                last = m_next[last] = number;
        }
    }

    void hangInTheirs()
    {
        std::uint32_t behind = theirsStart();
        for (const std::uint32_t number : m_files[theirs].entries) {
            const Entry& entry = m_entries[number];
            if (!isInResult(entry))
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
        const auto isTextOfOurs
            = [](const Entry& entry) { return !entry.isRule && !entry.isIn(base) && !entry.isIn(theirs); };
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

    bool isWatchRule(std::uint32_t number) const
    {
        const Entry& entry = m_entries[number];
        return m_catalogue.isWatchRule(m_catalogue.ruleNumber(numberOf(entry, onlySide(entry))));
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

    void append(const Entry& entry)
    {
        if (m_lacksLineEnd)
            m_result.text.append(m_lineEnd);
        m_lacksLineEnd = false;
        if (entry.isIn(ours) && entry.isIn(theirs))
            return appendOfBoth(entry);
        const Side side = onlySide(entry);
        if (entry.isIn(base))
            reportKept(entry, side);
        const FileLine& line = lineOf(entry, side);
        append(line.text, side == ours ? line.end : m_lineEnd);
    }

    void append(std::string_view text, std::string_view end)
    {
        m_result.text.append(text).append(end);
        m_lacksLineEnd = end.empty();
    }

    void appendOfBoth(const Entry& entry)
    {
        const std::string_view end = lineOf(entry, endComesFrom(entry)).end;
        if (const auto side = textComesFrom(entry))
            append(lineOf(entry, *side).text, end);
        else
            appendMergedRule(entry, end);
    }

    Side endComesFrom(const Entry& entry) const
    {
        const bool isUnchanged = entry.isIn(base) && lineOf(entry, ours).end == lineOf(entry, base).end;
        return isUnchanged ? theirs : ours;
    }

    // The side whose line is copied to the result; none when a rule is to be merged.
    std::optional<Side> textComesFrom(const Entry& entry)
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

    void appendMergedRule(const Entry& entry, std::string_view end)
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

    void reportKept(const Entry& entry, Side side)
    {
        if (entry.isRule)
            m_result.conflicts.emplace_back(
                MergeReport{MergeReport::keptForItsTag, ruleOf(entry, side), ruleOf(entry, base)});
        else
            m_result.conflicts.emplace_back(TextConflict{TextConflict::keptForItsChange,
                std::string(lineOf(entry, side).text), std::string(lineOf(entry, base).text)});
    }

    LineCatalogue m_catalogue{RuleLines::usable};
    std::array<File, sides> m_files;
    std::vector<Entry> m_entries;
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
