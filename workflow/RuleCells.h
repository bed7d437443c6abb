#pragma once

#include "rules/RuleManager.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// What the rules table shows in each cell. Pure functions of the store and the row (and of the files that the
// rules name); nothing here knows a widget.

namespace quorvane {

// The columns of the rules table, by their number.
enum class RuleColumn { application, state, ruleClass, type, operations, tag, path };
constexpr int ruleColumnCount = 7;

// The title above a column.
std::string_view columnTitle(RuleColumn column);

// What a click on the column's title sorts by.
SortKey columnSortKey(RuleColumn column);

enum class CellColor { black, red, orange, blue };

enum class StateImage { none, system, recent };

struct RuleCell {
    std::string text;
    CellColor color = CellColor::black;
    // The file or bundle whose icon stands before the text; none for no icon.
    std::optional<std::string> iconFile;
    StateImage image = StateImage::none;
    // True for the application cell of a policy rule that begins a new application group.
    bool startsGroup = false;
    // What colour, icon or blank say, in words for a screen reader; empty when they say nothing.
    std::string description;
    // The whole text and the reasons of its colour; empty when there is nothing to add.
    std::string toolTip;
};

// The cell of `row`, which must be below the store's totalRules(includeSystemRules).
RuleCell ruleCell(const RuleManager& store, const RuleRows& rows, std::size_t row, bool includeSystemRules,
    RuleColumn column);

} // namespace quorvane
