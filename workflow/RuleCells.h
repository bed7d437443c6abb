#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleFindings.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The contents of the rules table's cells. Pure functions of the store and the row (and of the files that the
// rules name), without widgets. For the thread that owns the store.

namespace quorvane::workflow {

// The columns of the rules table, by number.
enum class RuleColumn { application, state, ruleClass, type, operations, tag, path };
constexpr int ruleColumnCount = 7;

// The title above a column.
std::string_view columnTitle(RuleColumn column);

// The key that a click on the column's title sorts by.
rules::SortKey columnSortKey(RuleColumn column);

enum class CellColor { black, red, orange, blue, grey };

enum class StateImage { none, system, recent };

struct RuleCell {
    std::string text;
    CellColor color = CellColor::black;
    bool italic = false;
    // The file or bundle whose icon precedes the text, and the root that contains it; none for no icon.
    std::optional<std::string> iconFile;
    std::optional<platform::FileRoot> iconRoot;
    bool isIconFileMissing = false; // then a placeholder is shown
    StateImage image = StateImage::none;
    // True for the application cell of a policy rule that begins a new application group.
    bool startsGroup = false;
    // The meaning of colour, icon or blank, in words for a screen reader; empty when there is none.
    std::string description;
    // The whole text and the reasons of its colour; empty when there is nothing to add.
    std::string toolTip;
};

// The cell of `row`, which must be below the store's totalRules(includeSystemRules). Programs and paths are
// looked up in `place`.
RuleCell ruleCell(const rules::RuleManager& store, const rules::RuleRows& rows, std::size_t row,
    bool includeSystemRules, RuleColumn column, const RulesPlace& place = RulesPlace::thisMachine());

// Parts shared with other tables of rules.

// The fault of the program of a rule that a table shows under `applicationName`; none when there is none.
using ProgramQuestion = std::function<std::optional<ProgramFault>(
    const rules::PolicyRule& rule, std::string_view applicationName)>;

// The application cell of `row`: blank in the later rows of an application group. Icons are looked up in
// `place`.
RuleCell applicationCell(const rules::RuleRows& rows, std::size_t row, bool includeSystemRules,
    const RulesPlace& place, const ProgramQuestion& faultOf);

// The path cell of a rule with these `findings`.
RuleCell pathCell(const rules::RuleRef& rule, const std::vector<RuleFinding>& findings);

// Adds words to the cell's description for screen readers.
void describe(RuleCell& cell, std::string_view words);

} // namespace quorvane::workflow
