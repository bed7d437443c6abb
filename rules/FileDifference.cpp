#include "rules/FileDifference.h"

#include "rules/FileLines.h"
#include "rules/RuleMarks.h"

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

} // namespace

RulesDifference fileDifference(std::string_view beforeText, std::string_view afterText)
{
    LineCatalogue catalogue(RuleLines::all);
    const std::vector<std::uint32_t> before = catalogue.numbersOf(fileLines(beforeText));
    const std::vector<std::uint32_t> after = catalogue.numbersOf(fileLines(afterText));
    const std::vector<std::uint32_t> earlier = firstLines(catalogue, before);
    const std::vector<std::uint32_t> later = firstLines(catalogue, after);
    RulesDifference difference;
    forEachFirstLine(catalogue, after, [&](std::uint32_t rule, std::uint32_t line) {
        if (earlier[rule] == line)
            return;
        RuleValue value = catalogue.ruleOf(line);
        if (earlier[rule] == LineCatalogue::none) {
            difference.added.push_back(std::move(value));
            return;
        }
        RuleValue old = catalogue.ruleOf(earlier[rule]);
        if (!hasSameMarks(old, value))
            difference.changed.emplace_back(std::move(old), std::move(value));
    });
    forEachFirstLine(catalogue, before, [&](std::uint32_t rule, std::uint32_t line) {
        if (later[rule] == LineCatalogue::none)
            difference.removed.push_back(catalogue.ruleOf(line));
    });
    return difference;
}

} // namespace quorvane::rules
