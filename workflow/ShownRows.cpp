#include "workflow/ShownRows.h"

namespace quorvane {

ShownRows::ShownRows(int columns, bool& shaded)
    : m_columns(columns)
    , m_shaded(shaded)
{
}

ShownRow ShownRows::makeRow(std::size_t row, const MakeCell& makeCell)
{
    ShownRow made;
    for (int column = 0; column < m_columns; ++column) {
        made.cells.push_back(makeCell(row, column));
        if (made.cells.back().startsGroup)
            m_shaded = !m_shaded;
    }
    made.shaded = m_shaded;
    return made;
}

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
