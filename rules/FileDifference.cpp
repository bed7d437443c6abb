#include "rules/FileDifference.h"

#include "rules/FileLines.h"
#include "rules/RuleMarks.h"
#include "rules/RulesText.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace quorvane::rules {

namespace {

// By rule: the first line with it; `none` when there is none.
std::vector<std::uint32_t> firstLines(const LineCatalogue& catalogue, const std::vector<std::uint32_t>& lines)
{
    std::vector<std::uint32_t> first(catalogue.ruleCount(), LineCatalogue::none);
    for (const std::uint32_t line : lines) {
        const std::uint32_t rule = catalogue.ruleNumber(line);
        if (rule != LineCatalogue::none && first[rule] == LineCatalogue::none)
            first[rule] = line;
    }
    return first;
}

// Calls `use` with the rule and the line of the first line of each rule, in order.
template <class Use>
void forEachFirstLine(const LineCatalogue& catalogue, const std::vector<std::uint32_t>& lines, const Use& use)
{
    std::vector<bool> isMet(catalogue.ruleCount());
    for (const std::uint32_t line : lines) {
        const std::uint32_t rule = catalogue.ruleNumber(line);
        if (rule == LineCatalogue::none || isMet[rule])
            continue;
        isMet[rule] = true;
        use(rule, line);
    }
}

// Reports each rule of the later file to `differences`, and what differs.
template <class Differences>
void forEachDifference(std::string_view beforeText, std::string_view afterText, Differences& differences)
{
    LineCatalogue catalogue(RuleLines::all);
    const std::vector<std::uint32_t> before = catalogue.numbersOf(fileLines(readableText(beforeText)));
    const std::vector<std::uint32_t> after = catalogue.numbersOf(fileLines(readableText(afterText)));
    const std::vector<std::uint32_t> earlier = firstLines(catalogue, before);
    const std::vector<std::uint32_t> later = firstLines(catalogue, after);
    forEachFirstLine(catalogue, after, [&](std::uint32_t rule, std::uint32_t line) {
        differences.meet();
        if (earlier[rule] == line)
            return;
        if (earlier[rule] == LineCatalogue::none) {
            differences.add(catalogue, line);
            return;
        }
        RuleValue old = catalogue.ruleOf(earlier[rule]);
        RuleValue value = catalogue.ruleOf(line);
        if (!hasSameMarks(old, value))
            differences.change(std::move(old), std::move(value));
    });
    forEachFirstLine(catalogue, before, [&](std::uint32_t rule, std::uint32_t line) {
        if (later[rule] == LineCatalogue::none)
            differences.remove(catalogue, line);
    });
}

struct ListedDifferences {
    RulesDifference lists{};

    void meet() { }
    void add(LineCatalogue& catalogue, std::uint32_t line) { lists.added.push_back(catalogue.ruleOf(line)); }
    void remove(LineCatalogue& catalogue, std::uint32_t line)
    {
        lists.removed.push_back(catalogue.ruleOf(line));
    }
    void change(RuleValue before, RuleValue after)
    {
        lists.changed.emplace_back(std::move(before), std::move(after));
    }
};

struct CountedDifferences {
    FileDifferenceCounts counts{};

    void meet() { ++counts.rulesAfter; }
    void add(const LineCatalogue& /*catalogue*/, std::uint32_t /*line*/) { ++counts.added; }
    void remove(const LineCatalogue& /*catalogue*/, std::uint32_t /*line*/) { ++counts.removed; }
    void change(const RuleValue& /*before*/, const RuleValue& /*after*/) { ++counts.changed; }
};

} // namespace

RulesDifference fileDifference(std::string_view before, std::string_view after)
{
    ListedDifferences differences;
    forEachDifference(before, after, differences);
    return std::move(differences.lists);
}

FileDifferenceCounts fileDifferenceCounts(std::string_view before, std::string_view after)
{
    CountedDifferences differences;
    forEachDifference(before, after, differences);
    return differences.counts;
}

} // namespace quorvane::rules
