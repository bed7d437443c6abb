#pragma once

#include "workflow/RuleCells.h"

#include <array>
#include <cstddef>
#include <functional>
#include <map>

namespace quorvane {

// The cells of one row while it is in view.
struct ShownRow {
    std::array<RuleCell, ruleColumnCount> cells;
    bool shaded = false; // its band
};

// The rows in view. Their cells are made once, when the row comes into view, and kept until it leaves or the
// table reloads: never again merely to paint.
//
// Rows of one application group share a band. Deliberate: the band flips, for the whole process, whenever the
// cell that begins a group is made, and is never reset; so bands depend on the order in which rows came into
// view.
class ShownRows {
public:
    using MakeCell = std::function<RuleCell(std::size_t row, RuleColumn column)>;

    // From now on the rows from `first` up to, not including, `end` are in view. Those that come into view
    // are made from the top down.
    void show(std::size_t first, std::size_t end, const MakeCell& makeCell);

    // The row while it is in view, else null. Lasts until the next call of show() or forget().
    const ShownRow* find(std::size_t row) const;

    // The table reloads: no cell is kept.
    void forget() { m_rows.clear(); }

private:
    std::map<std::size_t, ShownRow> m_rows;
};

} // namespace quorvane
