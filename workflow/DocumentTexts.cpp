#include "workflow/DocumentTexts.h"

#include "workflow/DifferenceText.h"

namespace quorvane {

std::string countedRules(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " rule" : " rules");
}

std::string mergeText(const ChangeSet& done, const std::vector<MergeReport>& reports)
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

std::string unwritableText(std::size_t count)
{
    return countedRules(count) + (count == 1 ? " does" : " do")
        + " not come back from the rules file as written: the format cuts lines with letters beyond ASCII, "
          "and has no "
          "place for quotes, blanks at the end, or rules without operations. The history keeps the cut lines "
          "whole.";
}

} // namespace quorvane
