#include "workflow/UnwritableRules.h"

#include "rules/FileLines.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleMarks.h"
#include "workflow/DifferenceText.h"
#include "workflow/ProgramSettings.h"

#include <algorithm>

namespace quorvane {

namespace {

bool readsBack(const RuleValue& rule, LineEnds lineEnds)
{
    return askValue(rule, [=](const auto& fields) { return readsBackAsWritten(fields, lineEnds); });
}

bool isSameRule(const RuleValue& a, const RuleValue& b)
{
    return isEqualRule(a, b) && hasSameMarks(a, b);
}

} // namespace

bool needsWholeLines(const RuleValue& rule)
{
    return !readsBack(rule, LineEnds::cut) && readsBack(rule, LineEnds::whole);
}

std::string wholeLinesAdvice()
{
    return "the rules file cuts lines with letters beyond ASCII, unless \"wholeLines=true\" stands in "
           "section "
           "[rules] of '"
        + defaultSettingsFile() + "'";
}

std::optional<std::string> whyUnwritable(const RuleValue& rule, LineEnds lineEnds)
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
    const std::vector<RuleRef>& rules, std::string_view fileText, LineEnds lineEnds)
{
    std::vector<RuleValue> endangered;
    for (const RuleRef& rule : rules) {
        if (lineEnds == LineEnds::cut && needsWholeLines(valueOf(rule)))
            endangered.push_back(valueOf(rule));
    }
    if (endangered.empty())
        return std::nullopt;
    RuleReader reader;
    for (const FileLine& line : fileLines(fileText)) {
        const auto rule = line.end.empty() ? std::nullopt : reader.ruleOf(line.text);
        const auto found = std::find_if(endangered.begin(), endangered.end(),
            [&](const RuleValue& other) { return rule && isSameRule(*rule, other); });
        if (found != endangered.end())
            return "the rule stands whole in the rules file and would lose its end: " + wholeLinesAdvice()
                + ": " + ruleText(*found);
    }
    return std::nullopt;
}

} // namespace quorvane
