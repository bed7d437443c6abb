#include "workflow/ShownRows.h"

namespace quorvane {

namespace {

bool shaded = false;

ShownRow makeRow(std::size_t row, const ShownRows::MakeCell& makeCell)
{
    ShownRow made;
    for (int column = 0; column < ruleColumnCount; ++column) {
        RuleCell& cell = made.cells[static_cast<std::size_t>(column)];
        cell = makeCell(row, static_cast<RuleColumn>(column));
        if (cell.startsGroup)
            shaded = !shaded;
    }
    made.shaded = shaded;
    return made;
}

} // namespace

void ShownRows::show(std::size_t first, std::size_t end, const MakeCell& makeCell)
{
    m_rows.erase(m_rows.begin(), m_rows.lower_bound(first));
    m_rows.erase(m_rows.lower_bound(end), m_rows.end());
    for (std::size_t row = first; row < end; ++row) {
        if (!m_rows.contains(row))
            m_rows.emplace(row, makeRow(row, makeCell));
    }
}

const ShownRow* ShownRows::find(std::size_t row) const
{
    const auto found = m_rows.find(row);
    return found == m_rows.end() ? nullptr : &found->second;
}

} // namespace quorvane
