#include "workflow/DocumentTexts.h"

#include "rules/RuleMarks.h"
#include "workflow/DifferenceText.h"

namespace quorvane::workflow {

std::string countedRules(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " rule" : " rules");
}

std::string mergeText(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports)
{
    constexpr std::size_t mostReports = 3;
    std::string text;
    if (!done.added.empty())
        text += " " + countedRules(done.added.size()) + " of another program "
            + (done.added.size() == 1 ? "was kept." : "were kept.");
    if (!done.removed.empty())
        text += " " + countedRules(done.removed.size()) + " that another program removed "
            + (done.removed.size() == 1 ? "is gone." : "are gone.");
    if (!done.changed.empty())
        text += " Another program changed the tag or time of " + countedRules(done.changed.size()) + ".";
    for (std::size_t number = 0; number < reports.size() && number < mostReports; ++number)
        text += " Conflict: " + reportText(reports[number]) + ".";
    if (reports.size() > mostReports)
        text += " So it is with " + countedRules(reports.size() - mostReports) + " more.";
    return text.empty() ? text : text.substr(1);
}

std::string unwritableText(std::size_t cut, std::size_t others)
{
    const auto doNotComeBack = [](std::size_t count) {
        return countedRules(count) + (count == 1 ? " does" : " do")
            + " not come back from the rules file as written: ";
    };
    std::string text;
    if (cut > 0)
        text = doNotComeBack(cut) + "the format cuts lines with letters beyond ASCII. The history keeps "
            + (cut == 1 ? "it whole." : "them whole.");
    if (others > 0)
        text += (text.empty() ? "" : " ") + doNotComeBack(others)
            + "the format has no place for quotes, blanks at the end, or rules without operations.";
    return text;
}

std::string remainingText(const std::vector<rules::RuleRef>& remaining)
{
    if (remaining.size() > 1)
        return "Each of " + countedRules(remaining.size())
            + " that were selected is there twice: the first was deleted, the selected one remains.";
    const rules::RuleValue rule = valueOf(remaining.front());
    const std::string tag(tagOf(rule).view());
    return "Of two equal rules the first was deleted. The selected one remains: "
        + (tag.empty() ? "without a tag" : "tagged \u201c" + tag + "\u201d")
        + (createdOf(rule) == 0 ? "." : ", made " + timeText(createdOf(rule)) + ".");
}

} // namespace quorvane::workflow
