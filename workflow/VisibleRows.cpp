#include "workflow/VisibleRows.h"

#include <utility>

namespace quorvane::workflow {

VisibleRows::VisibleRows(int columns, bool& shaded)
    : m_columns(columns)
    , m_shaded(shaded)
{
}

// The band of a row whose cell has just been made.
bool VisibleRows::bandAfter(const RuleCell& cell)
{
    if (cell.startsGroup)
        m_shaded = !m_shaded;
    return m_shaded;
}

ShownRow VisibleRows::makeRow(std::size_t row, const MakeCell& makeCell)
{
    ShownRow made;
    for (int column = 0; column < m_columns; ++column) {
        made.cells.push_back(makeCell(row, column));
        made.shaded = bandAfter(made.cells.back());
    }
    return made;
}

void VisibleRows::show(std::size_t first, std::size_t end, const MakeCell& makeCell)
{
    m_rows.erase(m_rows.begin(), m_rows.lower_bound(first));
    m_rows.erase(m_rows.lower_bound(end), m_rows.end());
    for (std::size_t row = first; row < end; ++row) {
        const auto found = m_rows.find(row);
        if (found == m_rows.end())
            m_rows.emplace(row, makeRow(row, makeCell));
        else if (std::exchange(found->second.hasOtherRowAbove, false))
            followRowAbove(row, found->second, makeCell);
    }
}

// A row that continues a group keeps its band, which the rest of its group has.
void VisibleRows::followRowAbove(std::size_t row, ShownRow& shown, const MakeCell& makeCell)
{
    RuleCell& application = shown.cells.front();
    RuleCell made = makeCell(row, 0);
    if (made.startsGroup == application.startsGroup)
        return;
    application = std::move(made);
    if (application.startsGroup)
        shown.shaded = bandAfter(application);
}

void VisibleRows::remove(std::size_t first, std::size_t count)
{
    std::map<std::size_t, ShownRow> kept;
    for (auto& [row, shown] : m_rows) {
        if (row < first || row >= first + count)
            kept.emplace(row < first ? row : row - count, std::move(shown));
    }
    m_rows = std::move(kept);
    if (const auto below = m_rows.find(first); below != m_rows.end())
        below->second.hasOtherRowAbove = true;
}

bool VisibleRows::remake(std::size_t row, int column, const MakeCell& makeCell)
{
    const auto found = m_rows.find(row);
    if (found == m_rows.end())
        return false;
    RuleCell& cell = found->second.cells[static_cast<std::size_t>(column)];
    cell = makeCell(row, column);
    found->second.shaded = bandAfter(cell);
    return true;
}

void VisibleRows::setText(std::size_t row, int column, std::string text)
{
    const auto found = m_rows.find(row);
    if (found != m_rows.end())
        found->second.cells[static_cast<std::size_t>(column)].text = std::move(text);
}

const ShownRow* VisibleRows::find(std::size_t row) const
{
    const auto found = m_rows.find(row);
    return found == m_rows.end() ? nullptr : &found->second;
}

} // namespace quorvane::workflow
