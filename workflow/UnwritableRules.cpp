#include "workflow/UnwritableRules.h"

#include "rules/FileLines.h"
#include "rules/RuleMarks.h"
#include "rules/RulesDiff.h"
#include "rules/RulesText.h"
#include "workflow/DifferenceText.h"
#include "workflow/ProgramSettings.h"

#include <algorithm>

namespace quorvane::workflow {

namespace {

bool readsBack(const rules::RuleValue& rule, rules::LineEnds lineEnds)
{
    return askValue(rule, [=](const auto& fields) { return readsBackAsWritten(fields, lineEnds); });
}

// The first of these rules that is complete in the file, in words.
std::optional<std::string> whyCut(const std::vector<rules::RuleValue>& endangered, std::string_view fileText)
{
    if (endangered.empty())
        return std::nullopt;
    rules::RuleReader reader;
    for (const rules::FileLine& line : rules::fileLines(fileText)) {
        const auto rule = line.end.empty() ? std::nullopt : reader.ruleOf(line.text);
        const auto found = std::find_if(endangered.begin(), endangered.end(),
            [&](const rules::RuleValue& other) { return rule && isEqualWithMarks(*rule, other); });
        if (found != endangered.end())
            return "the rule stands whole in the rules file and would lose its end: " + wholeLinesAdvice()
                + ": " + ruleText(*found);
    }
    return std::nullopt;
}

} // namespace

bool needsWholeLines(const rules::RuleValue& rule)
{
    return !readsBack(rule, rules::LineEnds::cut) && readsBack(rule, rules::LineEnds::whole);
}

void UnwritableRules::add(const rules::RuleValue& rule)
{
    ++(needsWholeLines(rule) ? cut : others);
    if (first.size() < mostKept)
        first.push_back(rule);
}

std::string wholeLinesAdvice()
{
    return "the rules file cuts lines with letters beyond ASCII, unless \"wholeLines=true\" stands in "
           "section "
           "[rules] of '"
        + defaultSettingsFile() + "'";
}

std::optional<std::string> whyUnwritable(const rules::RuleValue& rule, rules::LineEnds lineEnds)
{
    if (readsBack(rule, lineEnds))
        return std::nullopt;
    if (needsWholeLines(rule))
        return wholeLinesAdvice() + ": " + ruleText(rule);
    if (askValue(rule, [](const auto& fields) { return fields.operations; }) == 0)
        return "a rules file cannot hold a rule without operations: " + ruleText(rule);
    return "a rules file cannot hold a rule with a double quote, a blank at the end of a field, or a line "
           "end: "
        + ruleText(rule);
}

std::optional<std::string> whyRewritingCuts(
    const std::vector<rules::RuleRef>& rules, std::string_view fileText, rules::LineEnds lineEnds)
{
    std::vector<rules::RuleValue> endangered;
    for (const rules::RuleRef& rule : rules) {
        if (lineEnds == rules::LineEnds::cut && needsWholeLines(valueOf(rule)))
            endangered.push_back(valueOf(rule));
    }
    return whyCut(endangered, fileText);
}

std::optional<std::string> whyRewritingCuts(const rules::RulesSnapshot& rules, std::string_view fileText)
{
    std::vector<rules::RuleValue> endangered;
    rules.forEach([&endangered](const rules::RuleValue& rule) {
        if (needsWholeLines(rule))
            endangered.push_back(rule);
    });
    return whyCut(endangered, fileText);
}

std::optional<std::string> whyLost(const rules::RulesSnapshot& rules, std::string_view content)
{
    const rules::RulesDifference unread = rulesDifference(rules::rulesOfText(content), rules.values());
    std::vector<rules::RuleValue> lost = unread.added;
    for (const auto& [read, meant] : unread.changed)
        lost.push_back(meant);
    const auto found = std::find_if(lost.begin(), lost.end(),
        [](const rules::RuleValue& rule) { return readsBack(rule, rules::LineEnds::cut); });
    if (found == lost.end())
        return std::nullopt;
    return "the rule would be lost behind one that is cut: " + wholeLinesAdvice() + ": " + ruleText(*found);
}

} // namespace quorvane::workflow
