#include "cli/RowOutput.h"

#include "cli/Output.h"
#include "cli/RuleJson.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleCells.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::cli {

namespace {

bool isRedundant(const rules::RuleManager& store, const rules::PolicyRule& rule)
{
    return store.isRedundant(rule);
}

bool isRedundant(const rules::RuleManager&, const rules::WatchRule&)
{
    return false;
}

bool isValid(const rules::PolicyRule& rule, const workflow::RulesPlace& place)
{
    return isValidApplicationPath(rule, shownApplicationNameForRule(rule), place);
}

bool isValid(const rules::WatchRule&, const workflow::RulesPlace&)
{
    return true;
}

// Makes the lines of rules. What rules of one application have in common is found out once for those that
// follow each other, as they do in a store that is not sorted, instead of a look at the disk for each.
class JsonRows {
public:
    JsonRows(const rules::RuleManager& store, const workflow::RulesPlace& place)
        : m_store(store)
        , m_place(place)
    {
    }

    // The line of a rule; valid until the next call.
    template <class Rule> std::string_view line(std::size_t row, const Rule& rule)
    {
        const auto& fields = rule.fields();
        const Application& application = applicationOf(rule);
        m_text.clear();
        JsonLine line(m_text);
        line.add("row", row);
        addProperties(line, fields);
        line.add("sequence", fields.sequence);
        line.add("system", fields.system);
        line.add("ruleState", rule.getRuleState());
        line.add("applicationName", application.name);
        line.add("applicationGroupIdentity", application.groupIdentity);
        line.add("redundant", isRedundant(m_store, rule));
        line.add("valid", application.isValid);
        line.finish();
        return m_text;
    }

private:
    struct Application {
        std::string name;
        std::string groupIdentity;
        std::optional<bool> isValid; // none where nothing is looked up
    };

    template <class Rule> Application newApplicationOf(const Rule& rule) const
    {
        return {applicationNameForRule(rule), applicationGroupIdentityForRule(rule),
            m_place.isNowhere() ? std::nullopt : std::optional(isValid(rule, m_place))};
    }
    const Application& applicationOf(const rules::WatchRule& rule)
    {
        m_lastPolicy.reset();
        return m_last = newApplicationOf(rule);
    }
    const Application& applicationOf(const rules::PolicyRule& rule)
    {
        const rules::PolicyRuleFields& fields = rule.fields();
        if (m_lastPolicy && workflow::haveSameProgram(fields, **m_lastPolicy))
            return m_last;
        m_lastPolicy = rule.presentValue();
        return m_last = newApplicationOf(rule);
    }

    const rules::RuleManager& m_store;
    const workflow::RulesPlace& m_place;
    std::string m_text;
    Application m_last;
    std::optional<rules::PolicyValue> m_lastPolicy; // a rule of that application; none for a watch rule's
};

// The texts of one row, in the order in which they are printed.
using PrintedRow = std::array<std::string, 7>;

std::string joined(const std::string& text, const std::string& description)
{
    return text + (text.empty() || description.empty() ? "" : ", ") + description;
}

PrintedRow printedRow(const rules::RuleManager& store, const rules::RuleRows& rows, std::size_t row,
    bool includeSystemRules, const workflow::RulesPlace& place)
{
    const auto cell = [&](workflow::RuleColumn column) {
        return ruleCell(store, rows, row, includeSystemRules, column, place);
    };
    const workflow::RuleCell application = cell(workflow::RuleColumn::application);
    return {std::to_string(row), cell(workflow::RuleColumn::ruleClass).text,
        cell(workflow::RuleColumn::type).text, cell(workflow::RuleColumn::operations).text,
        joined(application.text, application.description), cell(workflow::RuleColumn::tag).text,
        visitRule(rows.at(row, includeSystemRules),
            [](const auto& rule) { return std::string(rule.fields().path.view()); })};
}

// The columns are wide enough for most texts; a longer one shifts the rest of its line. They are the same for
// all lists, so that a comparison of two shows only the rules that differ.
void writeLine(Output& output, const PrintedRow& row)
{
    constexpr std::array<std::size_t, 6> widths{6, 5, 6, 5, 32, 16};
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
        std::string text = printable(row[column]);
        if (column < widths.size())
            text.resize(std::max(text.size(), widths[column]), ' ');
        line.append(text).append(column + 1 < row.size() ? "  " : "\n");
    }
    output.write(line);
}

} // namespace

void writeRows(Output& output, const rules::RuleManager& store, const std::vector<std::size_t>& rows,
    bool includeSystemRules, const workflow::RulesPlace& place, bool asJson)
{
    if (!asJson)
        writeLine(output, {"Row", "Class", "Type", "Ops", "Application", "Tag", "Path"});
    const auto present = store.rows();
    JsonRows lines(store, place);
    present->forEach(rows, includeSystemRules, [&](std::size_t row, const rules::RuleRef& rule) {
        if (asJson)
            output.write(visitRule(rule, [&](const auto& record) { return lines.line(row, record); }));
        else
            writeLine(output, printedRow(store, *present, row, includeSystemRules, place));
    });
}

} // namespace quorvane::cli
