#include "windows/ColumnsMenu.h"
#include "tests/windows/EditorTable.h"

#include <QMenu>

namespace quorvane::windows {

namespace {

class ColumnsMenuTest : public test::EditorTable {
protected:
    ColumnsMenuTest()
    {
        open("allow prefix \"/a/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
             "deny path \"/c\" \"/bin/vi\" w \"two\" \"\" \"0\"\n");
        menu = in<QMenu>("columnsMenu");
    }

    QAction* item(const QString& text, const QMenu& of) const
    {
        for (QAction* each : of.actions()) {
            if (each->text().remove(QLatin1Char('&')) == text)
                return each;
        }
        ADD_FAILURE() << text.toStdString();
        return nullptr;
    }
    void choose(const char* text) const
    {
        Q_EMIT menu->aboutToShow();
        item(QString::fromLatin1(text), *menu)->trigger();
    }
    void putFirst(const char* text) const
    {
        item(QString::fromLatin1(text), *item(QStringLiteral("Put First"), *menu)->menu())->trigger();
    }
    // The titles of the columns that are shown, from left to right.
    std::string shown() const
    {
        std::string titles;
        const QHeaderView* header = table->horizontalHeader();
        for (int place = 0; place < header->count(); ++place) {
            const int column = header->logicalIndex(place);
            if (!table->isColumnHidden(column))
                titles += table->model()->headerData(column, Qt::Horizontal).toString().toStdString() + " ";
        }
        return titles;
    }

    QMenu* menu = nullptr;
};

constexpr const char* usual = "Application State Class Type Operations Tag Path ";

} // namespace

TEST_F(ColumnsMenuTest, HidesAndShowsColumns)
{
    EXPECT_EQ(shown(), usual);
    choose("Type");
    choose("Application");
    EXPECT_EQ(shown(), "State Class Operations Tag Path ");
    choose("Type");
    EXPECT_EQ(shown(), "State Class Type Operations Tag Path ");
    choose("Usual Columns");
    EXPECT_EQ(shown(), usual);
}

TEST_F(ColumnsMenuTest, SetsItsColumnsApartFromWhatIsAboutAll)
{
    EXPECT_TRUE(menu->actions().at(workflow::ruleColumnCount)->isSeparator());
}

TEST_F(ColumnsMenuTest, LeavesOneColumnAtLeast)
{
    for (const char* title : {"Application", "State", "Class", "Type", "Operations", "Path"})
        choose(title);
    EXPECT_EQ(shown(), "Tag ");
    Q_EMIT menu->aboutToShow();
    EXPECT_FALSE(item(QStringLiteral("Tag"), *menu)->isEnabled());
    EXPECT_TRUE(item(QStringLiteral("Path"), *menu)->isEnabled());
    table->setColumnShown(static_cast<int>(workflow::RuleColumn::tag), false);
    EXPECT_EQ(shown(), "Tag ");
}

TEST_F(ColumnsMenuTest, PutsAColumnFirstWhichIsShownThen)
{
    choose("Path");
    putFirst("Path");
    putFirst("Class");
    EXPECT_EQ(shown(), "Class Path Application State Type Operations Tag ");
    choose("Usual Columns");
    EXPECT_EQ(shown(), usual);
}

TEST_F(ColumnsMenuTest, ShowsTheUsualColumnsAgain)
{
    putFirst("Tag");
    choose("Class");
    table->setWishedWidths(QList<int>(table->model()->columnCount(), 50));
    choose("Usual Columns");
    EXPECT_EQ(shown(), usual);
    EXPECT_FALSE(table->areWidthsChosen()) << "each as wide as its contents need";
}

TEST_F(ColumnsMenuTest, TicksAndOffersWhatCanBeHidden)
{
    choose("Type");
    Q_EMIT menu->aboutToShow();
    EXPECT_FALSE(item(QStringLiteral("Type"), *menu)->isChecked());
    EXPECT_TRUE(item(QStringLiteral("Class"), *menu)->isChecked());
    for (const char* column : {"State", "Class", "Operations", "Tag", "Path"}) {
        Q_EMIT menu->aboutToShow();
        EXPECT_TRUE(item(QStringLiteral("Application"), *menu)->isEnabled()) << column;
        choose(column);
    }
    Q_EMIT menu->aboutToShow();
    EXPECT_FALSE(item(QStringLiteral("Application"), *menu)->isEnabled()) << "the last one";
    EXPECT_TRUE(item(QStringLiteral("Tag"), *menu)->isEnabled());
    choose("Usual Columns");
}

TEST_F(ColumnsMenuTest, OpensOnTheTitlesWhichCanBeMoved)
{
    QHeaderView* header = table->horizontalHeader();
    EXPECT_TRUE(header->sectionsMovable());
    QContextMenuEvent press(QContextMenuEvent::Mouse, QPoint(30, 5), header->mapToGlobal(QPoint(30, 5)));
    QApplication::sendEvent(header->viewport(), &press);
    EXPECT_TRUE(menu->isVisible());
    menu->close();
}

TEST_F(ColumnsMenuTest, GivesTheRoomOfAHiddenColumnToThePath)
{
    const auto path = static_cast<int>(workflow::RuleColumn::path);
    const auto tag = static_cast<int>(workflow::RuleColumn::tag);
    const int before = table->columnWidth(path);
    const int tagWidth = table->columnWidth(tag);
    choose("Tag");
    QApplication::processEvents();
    EXPECT_EQ(table->columnWidth(path), before + tagWidth);
    choose("Tag");
    QApplication::processEvents();
    EXPECT_EQ(table->columnWidth(tag), tagWidth);
    EXPECT_EQ(table->columnWidth(path), before);
}

TEST_F(ColumnsMenuTest, SortsByTheColumnThatIsClickedWhereverItStands)
{
    putFirst("Path");
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(shownPaths(), QStringLiteral("/a/ /c"));
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(shownPaths(), QStringLiteral("/c /a/"));
}

TEST_F(ColumnsMenuTest, KeysGoOnWithoutTheFirstColumn)
{
    select({0});
    table->setCurrentIndex(cell(0, workflow::RuleColumn::application));
    choose("Application");
    putFirst("Path");
    QTest::keyClick(table, Qt::Key_Down);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/c"));
    window->selectRules({store->allRules().front()});
    QTest::keyClick(table, Qt::Key_Down);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/c"));
    QTest::keyClick(table, Qt::Key_Home);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a/"));
}

TEST_F(ColumnsMenuTest, ShowsTheTagThatIsEdited)
{
    choose("Tag");
    select({0});
    action("editTagMenuItem")->trigger();
    EXPECT_EQ(shown(), usual);
    EXPECT_NE(table->indexWidget(cell(0, workflow::RuleColumn::tag)), nullptr);
}

TEST_F(ColumnsMenuTest, ARuleFarDownComesIntoViewWithoutTheFirstColumn)
{
    std::string many;
    for (int rule = 0; rule < 200; ++rule)
        many += "allow path \"/many/" + std::to_string(rule) + "\" \"/bin/zz\" r \"\" \"\" \"0\"\n";
    window.reset();
    open(many);
    menu = in<QMenu>("columnsMenu");
    choose("Application");
    window->selectRules({store->allRules().back()});
    EXPECT_TRUE(table->viewport()->rect().contains(
        table->visualRect(cell(199, workflow::RuleColumn::path)).center()));
}

} // namespace quorvane::windows
