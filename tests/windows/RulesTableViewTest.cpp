#include "windows/RulesTableView.h"

#include "tests/rules/StoreSandbox.h"
#include "windows/RulesTableModel.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPaintEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace quorvane::windows {

namespace {

using Rows = std::vector<std::size_t>;
using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

constexpr int widePart = 2; // the column that takes the remaining width

// A table of four columns, of which the second is narrow and the third takes what is left.
class RulesTableViewTest : public testing::Test {
protected:
    RulesTableViewTest()
    {
        for (int row = 0; row < 100; ++row) {
            QList<QStandardItem*> cells;
            for (const QString& text : {QString(100, QLatin1Char('w')), QStringLiteral("i"),
                     QStringLiteral("/path/%1").arg(row), QStringLiteral("some words")}) {
                cells.append(new QStandardItem(text));
                cells.back()->setEditable(cells.size() == 4);
            }
            model.appendRow(cells);
        }
        model.setHorizontalHeaderLabels({{}, {}, {}, {}});
        view.setModel(&model);
        view.setPathColumn(widePart);
        view.resize(1000, 300);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        view.fitColumns();
    }
    void select(std::initializer_list<std::pair<int, int>> ranges)
    {
        view.clearSelection();
        for (const auto& [first, last] : ranges)
            view.selectionModel()->select(
                QItemSelection(model.index(first, 0), model.index(last, 3)), QItemSelectionModel::Select);
    }
    QList<int> widths() const
    {
        QList<int> widths;
        for (int column = 0; column < 4; ++column)
            widths.append(view.columnWidth(column));
        return widths;
    }
    void resizeTo(int width)
    {
        view.resize(width, 300);
        QApplication::processEvents();
    }

    QStandardItemModel model;
    RulesTableView view;
};

// What of a widget has been painted since.
class PaintedRegion : public QObject {
public:
    explicit PaintedRegion(QWidget& widget) { widget.installEventFilter(this); }
    bool contains(const QRect& area) const { return (QRegion(area) - m_painted).isEmpty(); }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QRegion m_painted;
};

} // namespace

TEST_F(RulesTableViewTest, FitsColumnsToTheirContentsWithinLimits)
{
    EXPECT_EQ(view.columnWidth(0), 260) << "a long text";
    EXPECT_EQ(view.columnWidth(1), 30) << "a short one";
    EXPECT_GT(view.columnWidth(3), 30);
    EXPECT_LT(view.columnWidth(3), 260);
    EXPECT_EQ(view.horizontalHeader()->length(), view.viewport()->width()) << "the path takes what is left";
}

TEST_F(RulesTableViewTest, ShrinksTheWidestColumnsUntilThePathHasRoom)
{
    const QList<int> wide = widths();
    resizeTo(400);
    EXPECT_LT(view.columnWidth(0), 260);
    EXPECT_EQ(view.columnWidth(1), wide[1]) << "a narrow one gives nothing";
    EXPECT_EQ(view.columnWidth(3), wide[3]);
    EXPECT_EQ(view.columnWidth(widePart), 130);
    resizeTo(240);
    EXPECT_EQ(view.columnWidth(0), view.columnWidth(3)) << "both wide ones share";
    EXPECT_EQ(view.columnWidth(1), wide[1]);
    EXPECT_FALSE(view.areWidthsChosen());
    resizeTo(100);
    EXPECT_EQ(view.columnWidth(0), 30) << "never narrower";
    resizeTo(1000);
    EXPECT_EQ(widths(), wide);
}

TEST_F(RulesTableViewTest, MeasuresTheFirstRowsAloneHoweverManyThereAre)
{
    for (int row = 100; row < 1000; ++row)
        model.appendRow({new QStandardItem(QStringLiteral("i")), new QStandardItem(QStringLiteral("i")),
            new QStandardItem, new QStandardItem});
    model.item(900, 1)->setText(QString(20, QLatin1Char('w')));
    view.fitColumns();
    EXPECT_EQ(view.columnWidth(1), 30) << "far down";
    model.item(150, 1)->setText(QString(20, QLatin1Char('w')));
    view.fitColumns();
    EXPECT_GT(view.columnWidth(1), 100) << "out of sight, but near the top";
}

TEST_F(RulesTableViewTest, TakesUpColumnsThatHaveComeSince)
{
    model.insertColumn(4);
    view.setPathColumn(widePart);
    EXPECT_EQ(view.wishedWidths().size(), 5);
    view.setPathColumn(4);
    QApplication::processEvents();
    EXPECT_EQ(view.horizontalHeader()->sectionResizeMode(4), QHeaderView::Stretch);
    EXPECT_EQ(view.horizontalHeader()->sectionResizeMode(widePart), QHeaderView::Interactive);
    EXPECT_EQ(view.horizontalHeader()->length(), view.viewport()->width());
}

TEST_F(RulesTableViewTest, GivesThePathWhatTheWindowGains)
{
    const QList<int> before = widths();
    resizeTo(1200);
    EXPECT_EQ(view.columnWidth(widePart), before[widePart] + 200);
    EXPECT_EQ(view.columnWidth(0), before[0]);
}

TEST_F(RulesTableViewTest, MovesSidewaysByLessThanAColumnWhereThereIsNoRoomForAll)
{
    resizeTo(100);
    EXPECT_EQ(
        view.horizontalScrollBar()->maximum(), view.horizontalHeader()->length() - view.viewport()->width());
}

TEST_F(RulesTableViewTest, KeepsWidthsThatAPersonChose)
{
    EXPECT_FALSE(view.areWidthsChosen());
    view.setColumnWidth(0, 200);
    EXPECT_TRUE(view.areWidthsChosen());
    EXPECT_EQ(view.wishedWidths()[0], 200);
    view.refitColumns();
    EXPECT_EQ(view.columnWidth(0), 200);
    view.fitColumns();
    EXPECT_EQ(view.columnWidth(0), 260);
    EXPECT_FALSE(view.areWidthsChosen());
    model.item(0, 1)->setText(QStringLiteral("longer now"));
    view.refitColumns();
    EXPECT_GT(view.columnWidth(1), 30);
    view.setPathColumn(widePart);
    EXPECT_EQ(view.wishedWidths()[0], 260) << "which it was before";
}

TEST_F(RulesTableViewTest, GivesTheRoomOfHiddenColumnsAway)
{
    const QList<int> wide = widths();
    view.setColumnShown(0, false);
    EXPECT_EQ(view.shownColumns(), 3);
    EXPECT_EQ(view.wishedWidths()[0], 260);
    QApplication::processEvents();
    EXPECT_EQ(view.columnWidth(widePart), wide[widePart] + 260);
    view.setColumnShown(0, true);
    QApplication::processEvents();
    EXPECT_EQ(widths(), wide);

    resizeTo(240);
    const int shrunk = view.columnWidth(3);
    view.setColumnShown(0, false);
    EXPECT_GT(view.columnWidth(3), shrunk) << "at once";
    view.setColumnShown(0, true);
    EXPECT_EQ(view.columnWidth(3), shrunk);
    EXPECT_EQ(view.wishedWidths()[0], 260) << "for when there is more room";
    resizeTo(1000);
    EXPECT_EQ(widths(), wide);

    view.setColumnShown(widePart, false);
    resizeTo(400);
    EXPECT_GT(view.columnWidth(0), 400 - 130 - wide[1] - wide[3]) << "no room is kept for a hidden path";
}

TEST_F(RulesTableViewTest, HidesAllColumnsButOne)
{
    for (int column = 0; column < 4; ++column)
        view.setColumnShown(column, false);
    EXPECT_EQ(view.shownColumns(), 1);
    EXPECT_FALSE(view.isColumnHidden(3));
}

TEST_F(RulesTableViewTest, MovesFromAHiddenCellToOneThatIsSeen)
{
    view.setCurrentIndex(model.index(5, 0));
    view.setColumnShown(0, false);
    EXPECT_EQ(view.currentIndex(), model.index(5, 1));
    view.setCurrentIndex(model.index(7, 0));
    EXPECT_EQ(view.currentIndex(), model.index(7, 1));
}

TEST_F(RulesTableViewTest, AnswersSelectedRowsFromTheTopDownEachOnce)
{
    EXPECT_TRUE(view.selectedRanges().empty());
    EXPECT_EQ(view.onlySelectedRow(), std::nullopt);
    select({{20, 22}, {3, 3}});
    EXPECT_EQ(view.selectedRanges(), (Ranges{{3, 4}, {20, 23}}));
    select({{20, 22}, {3, 3}, {21, 24}});
    EXPECT_EQ(view.selectedRows(), (Rows{3, 20, 21, 22, 23, 24}));
    EXPECT_EQ(view.onlySelectedRow(), std::nullopt);
    select({{3, 3}});
    EXPECT_EQ(view.onlySelectedRow(), 3U);
    select({{3, 4}});
    EXPECT_EQ(view.onlySelectedRow(), std::nullopt);
}

TEST_F(RulesTableViewTest, AsksSelectedRowsUntilOneAnswers)
{
    select({{3, 9}});
    Rows asked;
    const auto isFive = [&asked](std::size_t row) {
        asked.push_back(row);
        return row == 5;
    };
    EXPECT_TRUE(view.anySelectedRow(isFive));
    EXPECT_EQ(asked, (Rows{3, 4, 5}));
    select({{6, 9}});
    EXPECT_FALSE(view.anySelectedRow(isFive));
}

TEST_F(RulesTableViewTest, SelectsRowsInRunsAndShowsTheFirst)
{
    select({{1, 1}});
    view.selectRows({});
    EXPECT_EQ(view.selectedRows(), Rows{1}) << "there was nothing to select";
    view.selectRows({60, 61, 62, 64, 70});
    EXPECT_EQ(view.selectedRows(), (Rows{60, 61, 62, 64, 70}));
    EXPECT_EQ(view.currentIndex(), model.index(60, 0));
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(model.index(60, widePart)).center()));
    EXPECT_TRUE(view.selectionModel()->isSelected(model.index(62, 3))) << "whole rows";
    view.scrollToTop();
    view.selectRows({60});
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(model.index(60, widePart)).center()))
        << "although it was the current one";
}

TEST_F(RulesTableViewTest, ScrollsToTheRowThatTheKeyboardReaches)
{
    view.setCurrentIndex(model.index(0, widePart));
    for (int step = 0; step < 40; ++step)
        QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.currentIndex().row(), 40);
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(view.currentIndex()).center()));
}

TEST_F(RulesTableViewTest, SaysInWordsThatItIsEmpty)
{
    view.setEmptyText(QStringLiteral("No rules."));
    EXPECT_EQ(view.accessibleDescription(), QString()) << "it is not";
    model.removeRows(0, model.rowCount());
    view.setEmptyText(QStringLiteral("No rules."));
    EXPECT_EQ(view.accessibleDescription(), QStringLiteral("No rules."));
    const QImage with = view.viewport()->grab().toImage();
    view.setEmptyText({});
    EXPECT_NE(view.viewport()->grab().toImage(), with);
}

TEST_F(RulesTableViewTest, ShowsAnotherTextAtOnceWhenItIsEmpty)
{
    model.removeRows(0, model.rowCount());
    for (const char* text : {"Searching", "No rules."}) {
        const PaintedRegion painted(*view.viewport());
        view.setEmptyText(QLatin1String(text));
        EXPECT_TRUE(QTest::qWaitFor([&] { return painted.contains(view.viewport()->rect()); })) << text;
    }
}

TEST_F(RulesTableViewTest, ShowsTheKeyboardFrameAroundWholeRowsAtOnce)
{
    view.setCurrentIndex(model.index(3, 1));
    QApplication::processEvents();
    view.viewport()->repaint();
    const PaintedRegion painted(*view.viewport());
    view.selectionModel()->setCurrentIndex(model.index(5, 1), QItemSelectionModel::NoUpdate);
    for (const int row : {3, 5}) {
        for (const int column : {0, 3}) {
            EXPECT_TRUE(
                QTest::qWaitFor([&] { return painted.contains(view.visualRect(model.index(row, column))); }));
        }
    }
}

TEST_F(RulesTableViewTest, MarksTheColumnOfTheOrderOrNone)
{
    view.showOrder(1, Qt::DescendingOrder);
    EXPECT_TRUE(view.horizontalHeader()->isSortIndicatorShown());
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorSection(), 1);
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    view.showOrder(0, Qt::AscendingOrder);
    EXPECT_TRUE(view.horizontalHeader()->isSortIndicatorShown());
    view.showOrder(-1, Qt::AscendingOrder);
    EXPECT_FALSE(view.horizontalHeader()->isSortIndicatorShown());
}

TEST_F(RulesTableViewTest, HandsTypedLettersOnButNoSpaces)
{
    QSignalSpy typed(&view, &RulesTableView::textTyped);
    view.setCurrentIndex(model.index(0, 0));
    QTest::keyClick(&view, Qt::Key_P);
    ASSERT_EQ(typed.count(), 1);
    EXPECT_EQ(typed[0][0].toString(), QStringLiteral("p"));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_EQ(typed.count(), 1);
    EXPECT_EQ(view.currentIndex().row(), 0) << "no row is searched for";
}

TEST_F(RulesTableViewTest, GoesToTheFirstAndTheLastRowByHomeAndEnd)
{
    view.setCurrentIndex(model.index(50, 1));
    QTest::keyClick(&view, Qt::Key_End);
    EXPECT_EQ(view.currentIndex().row(), 99);
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_EQ(view.currentIndex().row(), 0);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.currentIndex().row(), 1);
}

TEST_F(RulesTableViewTest, AsksForAMenuWhereTheRowIs)
{
    QSignalSpy asked(&view, &RulesTableView::menuRequested);
    view.setCurrentIndex(model.index(90, 0));
    view.scrollToTop();
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(2, 2));
    QApplication::sendEvent(view.viewport(), &byKey);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked[0][0].toInt(), 90);
    EXPECT_EQ(asked[0][1].toPoint(),
        view.viewport()->mapToGlobal(view.visualRect(model.index(90, 0)).bottomLeft()));
    EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(model.index(90, widePart)).center()));

    const QPoint place = view.visualRect(model.index(88, 1)).center();
    QContextMenuEvent byMouse(QContextMenuEvent::Mouse, place, QPoint(123, 45));
    QApplication::sendEvent(view.viewport(), &byMouse);
    ASSERT_EQ(asked.count(), 2);
    EXPECT_EQ(asked[1][0].toInt(), 88);
    EXPECT_EQ(asked[1][1].toPoint(), QPoint(123, 45));

    model.removeRows(1, 99);
    QContextMenuEvent below(QContextMenuEvent::Mouse, view.viewport()->rect().bottomLeft(), QPoint(123, 45));
    QApplication::sendEvent(view.viewport(), &below);
    EXPECT_EQ(asked.count(), 2) << "there is no row";
}

TEST_F(RulesTableViewTest, EditsTheOneCellOfARowThatCanBeEdited)
{
    select({{3, 4}});
    view.setColumnShown(3, false);
    view.setCurrentIndex(model.index(4, 0));
    QTest::keyClick(&view, Qt::Key_F2);
    EXPECT_FALSE(view.isColumnHidden(3));
    EXPECT_NE(view.indexWidget(model.index(4, 3)), nullptr);
    EXPECT_EQ(view.selectedRows(), Rows{4});

    for (int column = 0; column < 4; ++column)
        model.item(5, column)->setEditable(false);
    view.setCurrentIndex(model.index(5, 0));
    QTest::keyClick(&view, Qt::Key_F2);
    for (int column = 0; column < 4; ++column)
        EXPECT_EQ(view.indexWidget(model.index(5, column)), nullptr);
}

TEST_F(RulesTableViewTest, HasRowsOfOneHeightAndATitleThatIsNotMarked)
{
    EXPECT_EQ(view.rowHeight(0), 24);
    EXPECT_GE(view.horizontalHeader()->height(), 26);
    EXPECT_EQ(view.horizontalHeader()->minimumSectionSize(), 30);
    EXPECT_NE(view.horizontalHeader()->selectionModel(), view.selectionModel());
    EXPECT_FALSE(view.tabKeyNavigation());
    EXPECT_EQ(view.textElideMode(), Qt::ElideMiddle);
}

// Counts the cells that it makes.
class CountedCells : public RulesTableModel {
public:
    using RulesTableModel::RulesTableModel;
    mutable int made = 0;

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override
    {
        ++made;
        return RulesTableModel::makeCell(row, column);
    }
};

TEST(RulesTableViewOfManyRules, MakesNoRowsWhileItIsScrolledToBehindTheLast)
{
    // given a view that shows the last of many rules
    const test::StoreSandbox box;
    std::string lines;
    for (int rule = 0; rule < 2000; ++rule)
        lines += test::fileLine("/" + std::to_string(rule));
    box.writeUserRules(lines);
    const auto store = box.load();
    desktop::Workspace workspace;
    CountedCells model(*store, workspace);
    RulesTableView view;
    view.setModel(&model);
    view.resize(1000, 300);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    view.scrollToBottom();
    QApplication::processEvents();

    // when fewer are shown, and it is painted before it has scrolled back to them
    store->applyFilterWithString("/1");
    model.made = 0;
    model.reload();
    view.viewport()->repaint();

    // then it makes only those that come into view
    ASSERT_GT(model.rowCount(), 1000);
    EXPECT_TRUE(QTest::qWaitFor([&] { return model.made > 0; }));
    EXPECT_LT(model.made, 500);
}

} // namespace quorvane::windows
