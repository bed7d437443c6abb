#pragma once

#include "desktop/Workspace.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeApplication.h"
#include "windows/RulesTableView.h"
#include "workflow/RunState.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace quorvane::test {

// A window with a table of rules as a person sees it, and what it is given. Controls are found by their
// names, columns by `Column`.
template <class Window, class Column> class TableWindow : public testing::Test {
protected:
    // Shows the window that has been made.
    void show()
    {
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        table = window->template findChild<windows::RulesTableView*>();
        QApplication::processEvents(); // the rows in view are made when they are painted
    }

    template <class Child> Child* in(const char* name) const
    {
        auto* child = window->template findChild<Child*>(QString::fromLatin1(name));
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    QAction* action(const char* name) const { return in<QAction>(name); }
    QString label(const char* name) const { return in<QLabel>(name)->text(); }
    QString counts() const { return label("countLabel"); }

    QModelIndex cell(int row, Column column) const
    {
        return table->model()->index(row, static_cast<int>(column));
    }
    QString text(int row, Column column) const { return cell(row, column).data().toString(); }
    // Of all rows, or of the selected ones, from the top down.
    QString shownPaths() const
    {
        QStringList paths;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            paths.append(text(row, Column::path));
        return paths.join(QLatin1Char(' '));
    }
    // Those of another table of rules, each with a bar behind it.
    static std::string pathsIn(const QAbstractItemView& list)
    {
        std::string paths;
        for (int row = 0; row < list.model()->rowCount(); ++row)
            paths += list.model()->index(row, static_cast<int>(Column::path)).data().toString().toStdString()
                + "|";
        return paths;
    }
    QString selectedPaths() const
    {
        QStringList paths;
        for (const int row : selectedRows())
            paths.append(text(row, Column::path));
        return paths.join(QLatin1Char(' '));
    }
    QList<int> selectedRows() const
    {
        QList<int> rows;
        for (const QModelIndex& index : table->selectionModel()->selectedRows())
            rows.append(index.row());
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    // In the order given.
    void select(std::initializer_list<int> rows) const
    {
        table->clearSelection();
        for (const int row : rows)
            table->selectionModel()->select(
                cell(row, Column::path), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    void click(int row, Column column) const
    {
        QTest::mouseClick(
            table->viewport(), Qt::LeftButton, {}, table->visualRect(cell(row, column)).center());
    }
    void clickTitle(Column column) const
    {
        QHeaderView* header = table->horizontalHeader();
        const int middle = header->sectionViewportPosition(static_cast<int>(column))
            + header->sectionSize(static_cast<int>(column)) / 2;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(middle, header->height() / 2));
    }

    CapturedLog log;
    FakeApplication application;
    workflow::RunState run;
    desktop::Workspace workspace;
    std::unique_ptr<Window> window;
    windows::RulesTableView* table = nullptr;
};

} // namespace quorvane::test
