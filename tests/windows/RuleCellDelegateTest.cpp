#include "windows/RuleCellDelegate.h"
#include "windows/Shades.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <string>

namespace quorvane::windows {

namespace {

class OpenDelegate : public RuleCellDelegate {
public:
    using RuleCellDelegate::initStyleOption;
};

// A table of three columns that has the keyboard in its second row.
class CellsInATable : public testing::Test {
protected:
    CellsInATable()
    {
        model.setHorizontalHeaderLabels(
            {QStringLiteral("Program"), QStringLiteral("Tag"), QStringLiteral("Path")});
        view.setItemDelegate(&delegate);
        view.setModel(&model);
        view.setShowGrid(false);
        view.resize(400, 200);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        view.setFocus();
        view.setCurrentIndex(model.index(1, 1));
    }
    // "left right" of each cell of the row whose edge there is one of the frame, with a bar behind it.
    std::string closedEdges(int row)
    {
        const QImage image = view.viewport()->grab().toImage();
        std::string edges;
        for (int column = 0; column < model.columnCount(); ++column) {
            const QRect cell = view.visualRect(model.index(row, column));
            const auto isFrame = [&](int x) {
                return !cell.isEmpty() && image.pixelColor(x, cell.center().y()) == shades::keyboardFrame;
            };
            edges += std::string(isFrame(cell.left()) ? "left" : "") + (isFrame(cell.right()) ? "right" : "")
                + "|";
        }
        return edges;
    }

    QStandardItemModel model{3, 3};
    RuleCellDelegate delegate;
    QTableView view;
};

} // namespace

TEST_F(CellsInATable, FrameTheWholeRowWithTheKeyboardAndNoOther)
{
    EXPECT_EQ(closedEdges(1), "left||right|");
    EXPECT_EQ(closedEdges(0), "|||");
    view.setColumnHidden(0, true);
    view.setColumnHidden(2, true);
    EXPECT_EQ(closedEdges(1), "|leftright||");
    view.setColumnHidden(0, false);
    EXPECT_EQ(closedEdges(1), "left|right||");
    view.horizontalHeader()->moveSection(1, 0);
    EXPECT_EQ(closedEdges(1), "right|left||") << "in the order that is seen";
    view.clearFocus();
    EXPECT_EQ(closedEdges(1), "|||");
}

TEST_F(CellsInATable, FrameTheRowAboveAndBelowOneDotInside)
{
    const QImage image = view.viewport()->grab().toImage();
    for (int column = 0; column < model.columnCount(); ++column) {
        const QRect cell = view.visualRect(model.index(1, column));
        for (const int x : {cell.left(), cell.center().x(), cell.right()}) {
            EXPECT_EQ(image.pixelColor(x, cell.top()), shades::keyboardFrame) << column;
            EXPECT_EQ(image.pixelColor(x, cell.bottom() - 1), shades::keyboardFrame) << column;
            EXPECT_NE(image.pixelColor(x, cell.bottom()), shades::keyboardFrame) << column;
        }
    }
}

TEST_F(CellsInATable, FrameTheRowInAMirroredTableToo)
{
    view.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(closedEdges(1), "right||left|");
}

TEST_F(CellsInATable, AreEditedInAFieldOfTheColumnsNameThatCutsNothing)
{
    const QString text(100'000, QLatin1Char('x'));
    model.setData(model.index(1, 1), text);
    view.edit(model.index(1, 1));
    auto* field = qobject_cast<QLineEdit*>(view.indexWidget(model.index(1, 1)));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->accessibleName(), QStringLiteral("Tag"));
    EXPECT_EQ(field->text(), text);
    field->setText(QStringLiteral("one\ntwo"));
    EXPECT_EQ(field->text(), QStringLiteral("onetwo"));
}

TEST_F(CellsInATable, HaveRoomBesideTheirTexts)
{
    QStyleOptionViewItem option;
    model.setData(model.index(0, 0), QStringLiteral("text"));
    EXPECT_EQ(delegate.sizeHint(option, model.index(0, 0)).width(),
        QStyledItemDelegate().sizeHint(option, model.index(0, 0)).width() + 10);
}

TEST_F(CellsInATable, ShowTextsFromLeftToRightInAMirroredTable)
{
    const OpenDelegate open;
    model.setData(model.index(0, 0), QStringLiteral("/a/"));
    const auto shown = [&](int column, Qt::LayoutDirection direction) {
        QStyleOptionViewItem option;
        option.direction = direction;
        open.initStyleOption(&option, model.index(0, column));
        return option.text;
    };
    EXPECT_EQ(shown(0, Qt::LeftToRight), QStringLiteral("/a/"));
    EXPECT_EQ(shown(0, Qt::RightToLeft), QStringLiteral("\u2066/a/\u2069"));
    EXPECT_EQ(shown(1, Qt::RightToLeft), QString()) << "which has an image alone, in its middle";
}

TEST(RuleCellDelegate, ASelectedCellKeepsTheColoursOfItsIconAndItsText)
{
    const QColor color(200, 100, 50);
    QPixmap icon(16, 16);
    icon.fill(color);
    QStandardItemModel model;
    auto* item = new QStandardItem(QIcon(icon), QStringLiteral("\u2588\u2588"));
    item->setForeground(QColor(shades::red));
    item->setBackground(QColor(shades::band));
    model.appendRow(item);
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 200, 24);
    option.decorationSize = QSize(16, 16);
    option.state = QStyle::State_Enabled | QStyle::State_Active | QStyle::State_Selected;
    option.showDecorationSelected = true;
    option.palette = QApplication::palette();
    QImage image(200, 24, QImage::Format_RGB32);
    QPainter painter(&image);
    RuleCellDelegate().paint(&painter, option, model.index(0, 0));
    painter.end();
    const auto count = [&image](const QColor& sought) {
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                pixels += image.pixelColor(x, y) == sought ? 1 : 0;
        return pixels;
    };
    EXPECT_EQ(count(color), 16 * 16);
    EXPECT_GT(count(shades::red), 20);
    EXPECT_GT(count(shades::selection), 1000);
    EXPECT_EQ(count(shades::band), 0);
}

} // namespace quorvane::windows
