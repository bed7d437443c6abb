#include "windows/ColumnsMenu.h"

#include "windows/RulesTableView.h"

#include <QHeaderView>
#include <QMenu>

namespace quorvane::windows {

ColumnsMenu::ColumnsMenu(RulesTableView& table, QMenu& menu)
    : m_table(table)
{
    auto* first = new QMenu(tr("Put &First"), &menu);
    const int columns = table.model()->columnCount();
    for (int column = 0; column < columns; ++column) {
        const QString title = table.model()->headerData(column, Qt::Horizontal).toString();
        QAction* item = menu.addAction(title);
        item->setCheckable(true);
        connect(item, &QAction::triggered, this,
            [this, column](bool isShown) { m_table.setColumnShown(column, isShown); });
        m_columns.push_back(item);
        connect(first->addAction(title), &QAction::triggered, this, [this, column] { putFirst(column); });
    }
    menu.addSeparator();
    menu.addMenu(first);
    connect(menu.addAction(tr("&Usual Columns")), &QAction::triggered, this, &ColumnsMenu::showUsualColumns);
    connect(&menu, &QMenu::aboutToShow, this, &ColumnsMenu::update);

    QHeaderView* header = table.horizontalHeader();
    header->setSectionsMovable(true);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this,
        [header, &menu](const QPoint& place) { menu.popup(header->mapToGlobal(place)); });
}

void ColumnsMenu::update()
{
    const bool isOneLeft = m_table.shownColumns() == 1;
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        const bool isShown = !m_table.isColumnHidden(static_cast<int>(column));
        m_columns[column]->setChecked(isShown);
        m_columns[column]->setEnabled(!isShown || !isOneLeft);
    }
}

void ColumnsMenu::putFirst(int column)
{
    QHeaderView* header = m_table.horizontalHeader();
    header->moveSection(header->visualIndex(column), 0);
    m_table.setColumnShown(column, true);
}

void ColumnsMenu::showUsualColumns()
{
    QHeaderView* header = m_table.horizontalHeader();
    for (int column = 0; column < header->count(); ++column) {
        header->moveSection(header->visualIndex(column), column);
        m_table.setColumnShown(column, true);
    }
    m_table.fitColumns();
}

} // namespace quorvane::windows
