#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleFindings.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the rules table shows in each cell. Pure functions of the store and the row (and of the files that the
// rules name); nothing here knows a widget.

namespace quorvane::workflow {

// The columns of the rules table, by their number.
enum class RuleColumn { application, state, ruleClass, type, operations, tag, path };
constexpr int ruleColumnCount = 7;

// The title above a column.
std::string_view columnTitle(RuleColumn column);

// What a click on the column's title sorts by.
rules::SortKey columnSortKey(RuleColumn column);

enum class CellColor { black, red, orange, blue, grey };

enum class StateImage { none, system, recent };

struct RuleCell {
    std::string text;
    CellColor color = CellColor::black;
    bool italic = false;
    // The file or bundle whose icon stands before the text, and below what it is; none for no icon.
    std::optional<std::string> iconFile;
    std::optional<platform::FileRoot> iconRoot;
    bool isIconFileMissing = false; // a placeholder stands for the icon then
    StateImage image = StateImage::none;
    // True for the application cell of a policy rule that begins a new application group.
    bool startsGroup = false;
    // What colour, icon or blank say, in words for a screen reader; empty when they say nothing.
    std::string description;
    // The whole text and the reasons of its colour; empty when there is nothing to add.
    std::string toolTip;
};

// The cell of `row`, which must be below the store's totalRules(includeSystemRules). Programs and paths are
// looked up in `place`.
RuleCell ruleCell(const rules::RuleManager& store, const rules::RuleRows& rows, std::size_t row,
    bool includeSystemRules, RuleColumn column, const RulesPlace& place = RulesPlace::thisMachine());

// The parts that other tables of rules are made of as well.

// What is wrong with the program of a rule that a table shows under `applicationName`; none when nothing is.
using ProgramQuestion = std::function<std::optional<ProgramFault>(
    const rules::PolicyRule& rule, std::string_view applicationName)>;

// The application cell of `row`: blank in the later rows of an application group. Icons are looked up in
// `place`.
RuleCell applicationCell(const rules::RuleRows& rows, std::size_t row, bool includeSystemRules,
    const RulesPlace& place, const ProgramQuestion& faultOf);

// The path cell of a rule of which `findings` are worth telling.
RuleCell pathCell(const rules::RuleRef& rule, const std::vector<RuleFinding>& findings);

// Adds words to what the cell says to a screen reader.
void describe(RuleCell& cell, std::string_view words);

} // namespace quorvane::workflow
