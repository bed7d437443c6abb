#include "rules/FileAlignment.h"

#include "rules/OccurrenceNumbering.h"

#include <algorithm>
#include <utility>

namespace quorvane::rules {

namespace {

// Determines which lines of the files correspond.
class Alignment {
    using Side = MergeSide::Value;
    using enum MergeSide::Value;
    static constexpr std::uint32_t none = AlignedLine::none;

public:
    Alignment(const LineCatalogue& catalogue, std::array<AlignedFile, MergeSide::count>& files)
        : m_catalogue(catalogue)
        , m_files(files)
    {
    }

    std::vector<AlignedLine> entries()
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
        AlignedFile& file = m_files[side];
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
        const AlignedFile& file = m_files[side];
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
        const AlignedFile& file = m_files[side];
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

    const LineCatalogue& m_catalogue;
    std::array<AlignedFile, MergeSide::count>& m_files;
    std::vector<AlignedLine> m_entries;
};

} // namespace

std::vector<AlignedLine> alignLines(
    const LineCatalogue& catalogue, std::array<AlignedFile, MergeSide::count>& files)
{
    return Alignment(catalogue, files).entries();
}

} // namespace quorvane::rules
