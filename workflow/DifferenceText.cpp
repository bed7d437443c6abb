#include "workflow/DifferenceText.h"

#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"
#include "rules/RuleProperties.h"

#include <ctime>
#include <memory>
#include <type_traits>
#include <variant>

namespace quorvane::workflow {

namespace {

std::string quoted(const rules::NullableText& text)
{
    return "\"" + std::string(text.written()) + "\"";
}

std::string tagChangeText(const rules::RuleValue& before, const rules::RuleValue& after)
{
    if (hasSameTag(before, after))
        return {};
    if (tagOf(before).view().empty())
        return "tag set to " + quoted(tagOf(after));
    if (tagOf(after).view().empty())
        return "tag " + quoted(tagOf(before)) + " removed";
    return "tag changed from " + quoted(tagOf(before)) + " to " + quoted(tagOf(after));
}

// "class changed from allow to deny"; empty when both are the same.
std::string changeOf(const char* property, const std::string& before, const std::string& after)
{
    return before == after ? "" : std::string(property) + " changed from " + before + " to " + after;
}

std::string classWord(const rules::PolicyRuleFields& rule)
{
    return std::string(rules::policyClassDescription(rule.policyClass));
}

std::string classWord(const rules::WatchRuleFields&)
{
    return std::string(rules::policyClassDescription(rules::PolicyClass::watch));
}

std::string constraintOf(const rules::PolicyRuleFields& rule)
{
    return quoted(rule.constraint);
}

std::string constraintOf(const rules::WatchRuleFields&)
{
    return {};
}

// Properties that take part in rule equality, which bulk changes can change.
template <class Fields> std::vector<std::string> identityChanges(const Fields& before, const Fields& after)
{
    return {changeOf("class", classWord(before), classWord(after)),
        changeOf("process", quoted(before.processName), quoted(after.processName)),
        changeOf("operations", rules::operationsDescription(static_cast<std::int32_t>(before.operations)),
            rules::operationsDescription(static_cast<std::int32_t>(after.operations))),
        changeOf("constraint", constraintOf(before), constraintOf(after))};
}

// Appends "2 rules added", or ", 2 added" after other words; nothing for 0.
void appendCount(std::string& text, std::string_view noun, std::size_t count, const char* word)
{
    if (count == 0)
        return;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ';
    if (text.find(noun) == std::string::npos)
        text.append(noun) += count == 1 ? " " : "s ";
    text += word;
}

} // namespace

std::string ruleText(const rules::RuleValue& rule)
{
    std::string line = askValue(rule, [](const auto& fields) { return ruleLine(fields); });
    line.pop_back(); // the line feed
    return line;
}

std::string changeText(const rules::RuleValue& before, const rules::RuleValue& after)
{
    std::vector<std::string> changes = askValue(before, [&after](const auto& fields) {
        using Value = std::shared_ptr<const std::remove_cvref_t<decltype(fields)>>;
        return identityChanges(fields, *std::get<Value>(after));
    });
    changes.push_back(tagChangeText(before, after));
    changes.push_back(changeOf("creation time", timeText(createdOf(before)), timeText(createdOf(after))));
    std::string text;
    for (const std::string& change : changes)
        text += (text.empty() || change.empty() ? "" : ", ") + change;
    return text;
}

void RowsOfRules::add(const rules::RuleValue& rule, std::size_t row)
{
    m_rows.emplace(addressOf(rule), row);
}

std::string RowsOfRules::prefixOf(const rules::RuleValue& rule) const
{
    const auto found = m_rows.find(addressOf(rule));
    return found == m_rows.end() ? "" : "row " + std::to_string(found->second) + ": ";
}

std::vector<std::string> differenceTexts(const rules::RulesDifference& difference)
{
    return differenceTexts(difference, {});
}

std::vector<std::string> differenceTexts(const rules::RulesDifference& difference, const RowsOfRules& rows)
{
    std::vector<std::string> texts;
    for (const rules::RuleValue& rule : difference.added)
        texts.push_back("added: " + ruleText(rule));
    for (const rules::RuleValue& rule : difference.removed)
        texts.push_back(rows.prefixOf(rule) + "removed: " + ruleText(rule));
    for (const auto& [before, after] : difference.changed)
        texts.push_back(
            rows.prefixOf(before) + "changed: " + ruleText(after) + ": " + changeText(before, after));
    return texts;
}

std::string changeSummary(std::size_t added, std::size_t removed, std::size_t changed)
{
    return countsText("rule", added, removed, changed);
}

std::string countsText(std::string_view noun, std::size_t added, std::size_t removed, std::size_t changed)
{
    std::string text;
    appendCount(text, noun, added, "added");
    appendCount(text, noun, removed, "removed");
    appendCount(text, noun, changed, "changed");
    return text.empty() ? "no " + std::string(noun) + " changed" : text;
}

std::string differenceSummary(const rules::RulesDifference& difference)
{
    return changeSummary(difference.added.size(), difference.removed.size(), difference.changed.size());
}

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

std::string reportText(const rules::MergeReport& report)
{
    const std::string kept = quoted(tagOf(report.kept));
    const std::string other = quoted(tagOf(report.other));
    const std::string rule = ruleText(report.kept);
    switch (report.kind) {
    case rules::MergeReport::tagSetOnBothSides:
        return "both sides changed the tag: " + kept + " is kept, not " + other + ": " + rule;
    case rules::MergeReport::keptForItsTag:
        return "one side removed the rule, the other changed its tag: it is kept: " + rule;
    case rules::MergeReport::addedWithOtherTag:
        return "both sides added the rule: the tag " + kept + " is kept, not " + other + ": " + rule;
    }
    return {};
}

std::string conflictText(const rules::FileConflict& conflict)
{
    if (const auto* rule = std::get_if<rules::MergeReport>(&conflict))
        return reportText(*rule);
    const auto& text = std::get<rules::TextConflict>(conflict);
    const std::string kept = "\"" + text.kept + "\"";
    return text.kind == rules::TextConflict::changedOnBothSides
        ? "both sides changed a line: " + kept + " is kept, not \"" + text.other + "\""
        : "one side removed a line, the other changed it: it is kept: " + kept;
}

} // namespace quorvane::workflow
