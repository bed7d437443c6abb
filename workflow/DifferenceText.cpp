#include "workflow/DifferenceText.h"

#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"

#include <cstdint>
#include <ctime>

namespace quorvane {

namespace {

std::string quoted(const NullableText& text)
{
    return "\"" + std::string(text.written()) + "\"";
}

// A creation time in UTC; as a number when no calendar reaches it.
std::string timeText(std::uint64_t seconds)
{
    if (seconds == 0)
        return "none";
    const auto time = static_cast<std::time_t>(seconds);
    std::tm date{};
    char text[64];
    constexpr std::uint64_t endOfYear9999 = 253402300799;
    if (seconds > endOfYear9999 || gmtime_r(&time, &date) == nullptr)
        return std::to_string(static_cast<std::int64_t>(seconds));
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &date)};
}

std::string tagChangeText(const RuleValue& before, const RuleValue& after)
{
    if (hasSameTag(before, after))
        return {};
    if (tagOf(before).view().empty())
        return "tag set to " + quoted(tagOf(after));
    if (tagOf(after).view().empty())
        return "tag " + quoted(tagOf(before)) + " removed";
    return "tag changed from " + quoted(tagOf(before)) + " to " + quoted(tagOf(after));
}

std::string timeChangeText(const RuleValue& before, const RuleValue& after)
{
    if (createdOf(before) == createdOf(after))
        return {};
    return "creation time changed from " + timeText(createdOf(before)) + " to " + timeText(createdOf(after));
}

// Appends "2 rules added", or ", 2 added" behind other words; nothing for none.
void appendCount(std::string& text, std::size_t count, const char* word)
{
    if (count == 0)
        return;
    const std::string noun = count == 1 ? " rule " : " rules ";
    text += (text.empty() ? "" : ", ") + std::to_string(count) + (text.empty() ? noun : " ") + word;
}

} // namespace

std::string ruleText(const RuleValue& rule)
{
    std::string line = askValue(rule, [](const auto& fields) { return ruleLine(fields); });
    line.pop_back(); // the line feed
    return line;
}

std::string changeText(const RuleValue& before, const RuleValue& after)
{
    const std::string tag = tagChangeText(before, after);
    const std::string time = timeChangeText(before, after);
    return tag + (tag.empty() || time.empty() ? "" : ", ") + time;
}

std::vector<std::string> differenceTexts(const RulesDifference& difference)
{
    std::vector<std::string> texts;
    for (const RuleValue& rule : difference.added)
        texts.push_back("added: " + ruleText(rule));
    for (const RuleValue& rule : difference.removed)
        texts.push_back("removed: " + ruleText(rule));
    for (const auto& [before, after] : difference.changed)
        texts.push_back("changed: " + ruleText(after) + ": " + changeText(before, after));
    return texts;
}

std::string differenceSummary(const RulesDifference& difference)
{
    std::string text;
    appendCount(text, difference.added.size(), "added");
    appendCount(text, difference.removed.size(), "removed");
    appendCount(text, difference.changed.size(), "changed");
    return text.empty() ? "no rule changed" : text;
}

std::string reportText(const MergeReport& report)
{
    const std::string kept = quoted(tagOf(report.kept));
    const std::string other = quoted(tagOf(report.other));
    const std::string rule = ruleText(report.kept);
    switch (report.kind) {
    case MergeReport::tagSetOnBothSides:
        return "both sides changed the tag: " + kept + " is kept, not " + other + ": " + rule;
    case MergeReport::keptForItsTag:
        return "one side removed the rule, the other changed its tag: it is kept: " + rule;
    case MergeReport::addedWithOtherTag:
        return "both sides added the rule: the tag " + kept + " is kept, not " + other + ": " + rule;
    }
    return {};
}

std::string conflictText(const FileConflict& conflict)
{
    if (const auto* rule = std::get_if<MergeReport>(&conflict))
        return reportText(*rule);
    const auto& text = std::get<TextConflict>(conflict);
    const std::string kept = "\"" + text.kept + "\"";
    return text.kind == TextConflict::changedOnBothSides
        ? "both sides changed a line: " + kept + " is kept, not \"" + text.other + "\""
        : "one side removed a line, the other changed it: it is kept: " + kept;
}

} // namespace quorvane
