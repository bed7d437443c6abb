#pragma once

#include "workflow/RuleCells.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quorvane::workflow {

// The cells of one row while it is in view.
struct ShownRow {
    std::vector<RuleCell> cells; // by column
    bool shaded = false; // its band colour
    bool hasOtherRowAbove = false; // since its cells were made
};

// The rows of a table that are in view. Their cells are made once, when the row comes into view, and kept
// until it leaves or the table reloads: never again just for a repaint. Only when the row above was removed
// is it checked again whether a row begins its group. User interface thread only.
//
// Column 0 is the application.
//
// Rows of one application group share a band. Deliberate: the band flips whenever a cell that begins a group
// is made, and is never reset; so bands depend on the order in which rows came into view.
class VisibleRows {
public:
    using MakeCell = std::function<RuleCell(std::size_t row, int column)>;

    // `shaded` is the band of the row made last. It is shared by all tables of the kind in the process, and
    // must outlive this object.
    VisibleRows(int columns, bool& shaded);

    // Sets the rows in view: from `first` up to, not including, `end`. New ones are made from the top down.
    void show(std::size_t first, std::size_t end, const MakeCell& makeCell);

    // Removes `count` rows from `first` on; those below keep their cells under their new numbers, except for
    // the application of the first of them if it now begins its group or no longer does.
    void remove(std::size_t first, std::size_t count);

    // Makes one cell of a row in view again, and its band with it. False when the row is not in view.
    bool remake(std::size_t row, int column, const MakeCell& makeCell);

    // Shows `text` in a cell until it is made again; does nothing when its row is not in view.
    void setText(std::size_t row, int column, std::string text);

    // The row while it is in view, else null. Valid until the next call of another operation.
    const ShownRow* find(std::size_t row) const;

    // Drops all cells, for a reload of the table.
    void forget() { m_rows.clear(); }

private:
    bool bandAfter(const RuleCell& cell);
    ShownRow makeRow(std::size_t row, const MakeCell& makeCell);
    void followRowAbove(std::size_t row, ShownRow& shown, const MakeCell& makeCell);

    const int m_columns;
    bool& m_shaded;
    std::map<std::size_t, ShownRow> m_rows;
};

} // namespace quorvane::workflow
