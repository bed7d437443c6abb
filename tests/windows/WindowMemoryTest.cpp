#include "windows/WindowMemory.h"

#include "windows/RulesTableView.h"

#include <QDialog>
#include <QDockWidget>
#include <QHeaderView>
#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <limits>

namespace quorvane::windows {

namespace {

constexpr int columns = 4;

class WindowMemory : public testing::Test {
protected:
    WindowMemory() { settings().clear(); }
    ~WindowMemory() override { settings().clear(); }

    // Those of the user, which the program shares between its windows.
    static QSettings settings()
    {
        return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Vantreal"),
            QStringLiteral("Quorvane Configuration"));
    }
    // Another value in place of everything that is remembered.
    static void spoil(const QVariant& value)
    {
        QSettings all = settings();
        ASSERT_FALSE(all.allKeys().isEmpty());
        for (const QString& key : all.allKeys())
            all.setValue(key, value);
    }
};

// A table of four columns, each 100 wide.
class Table {
public:
    Table()
    {
        view.setModel(&model);
        view.setPathColumn(columns - 1);
        view.setWishedWidths(QList<int>(columns, 100));
        view.resize(2000, 200);
    }
    // The columns from left to right, those that are hidden in brackets.
    QString arrangement() const
    {
        QString text;
        for (int place = 0; place < columns; ++place) {
            const int column = view.horizontalHeader()->logicalIndex(place);
            const bool isHidden = view.horizontalHeader()->isSectionHidden(column);
            text += (isHidden ? QStringLiteral("(%1)") : QStringLiteral("%1")).arg(column);
        }
        return text;
    }

    QStandardItemModel model{1, columns};
    RulesTableView view;
};

} // namespace

TEST_F(WindowMemory, KeepsTheSizeOfEachWindowByItsName)
{
    QWidget window;
    EXPECT_FALSE(restoreWindowSize(window, QStringLiteral("one"))) << "nothing to restore";
    window.resize(321, 234);
    rememberWindowSize(window, QStringLiteral("one"));
    window.resize(400, 300);
    rememberWindowSize(window, QStringLiteral("two"));

    EXPECT_TRUE(restoreWindowSize(window, QStringLiteral("one")));
    EXPECT_EQ(window.size(), QSize(321, 234));
    EXPECT_TRUE(restoreWindowSize(window, QStringLiteral("two")));
    EXPECT_EQ(window.size(), QSize(400, 300));
}

TEST_F(WindowMemory, RestoresNoWindowLargerThanItsScreenOrSmallerThanItsContents)
{
    const QString name = QStringLiteral("window");
    QWidget window;
    window.resize(window.screen()->availableSize() + QSize(500, 500));
    rememberWindowSize(window, name);
    EXPECT_TRUE(restoreWindowSize(window, name));
    EXPECT_EQ(window.size(), window.screen()->availableSize());

    window.resize(1, 1);
    rememberWindowSize(window, name);
    QDialog dialog;
    Table table;
    table.view.setParent(&dialog);
    EXPECT_TRUE(restoreWindowSize(dialog, name));
    EXPECT_EQ(dialog.size(), dialog.size().expandedTo(dialog.minimumSizeHint()));
    table.view.setParent(nullptr);
}

TEST_F(WindowMemory, KeepsTheUsualSizeOfAWindowThatFillsTheScreen)
{
    QWidget window;
    window.resize(300, 200);
    rememberWindowSize(window);
    for (const auto state : {Qt::WindowMaximized, Qt::WindowFullScreen}) {
        window.resize(700, 600);
        window.setWindowState(state);
        rememberWindowSize(window);
    }
    QWidget next;
    EXPECT_TRUE(restoreWindowSize(next));
    EXPECT_EQ(next.size(), QSize(300, 200));
}

TEST_F(WindowMemory, KeepsTheSizeOfADialogWhenItCloses)
{
    const QString name = QStringLiteral("dialog");
    {
        QDialog dialog;
        EXPECT_FALSE(keepSize(dialog, name));
        dialog.resize(345, 210);
        dialog.reject();
    }
    QDialog next;
    EXPECT_TRUE(keepSize(next, name));
    EXPECT_EQ(next.size(), QSize(345, 210));
}

TEST_F(WindowMemory, KeepsTheWidthsOfAllColumnsButTheLast)
{
    Table table;
    EXPECT_FALSE(restoreColumnWidths(table.view));
    table.view.setWishedWidths({50, 60, 70, 80});
    rememberColumnWidths(table.view);

    Table next;
    EXPECT_TRUE(restoreColumnWidths(next.view));
    EXPECT_EQ(next.view.wishedWidths(), (QList<int>{50, 60, 70, 100}));

    forgetColumnWidths();
    EXPECT_FALSE(restoreColumnWidths(next.view));
}

TEST_F(WindowMemory, RestoresWidthsThatCanBeSeenAndDragged)
{
    Table table;
    table.view.setWishedWidths({0, -7, std::numeric_limits<int>::max(), 80});
    rememberColumnWidths(table.view);
    EXPECT_TRUE(restoreColumnWidths(table.view));
    EXPECT_EQ(table.view.wishedWidths().mid(0, 3), (QList<int>{24, 24, 10000}));
}

TEST_F(WindowMemory, ForgetsTheWidthsOfATableOfOtherColumns)
{
    Table table;
    rememberColumnWidths(table.view);
    table.model.setColumnCount(columns + 1);
    EXPECT_FALSE(restoreColumnWidths(table.view));
}

TEST_F(WindowMemory, KeepsWhichColumnsAreShownAndTheirOrder)
{
    Table table;
    EXPECT_FALSE(restoreColumns(table.view));
    table.view.horizontalHeader()->moveSection(2, 0);
    table.view.horizontalHeader()->moveSection(1, 3);
    table.view.setColumnShown(1, false);
    const QString arrangement = table.arrangement();
    ASSERT_EQ(arrangement, QStringLiteral("2(1)30"));
    rememberColumns(table.view);

    Table next;
    EXPECT_TRUE(restoreColumns(next.view));
    EXPECT_EQ(next.arrangement(), arrangement);
}

TEST_F(WindowMemory, RestoresNoOrderThatIsNotOneOfTheseColumns)
{
    for (const QVariantList& order : {QVariantList{}, QVariantList{0, 1, 2}, QVariantList{0, 1, 2, 3, 4},
             QVariantList{0, 1, 2, 2}, QVariantList{-1, 0, 1, 2}, QVariantList{1, 2, 3, 4}}) {
        Table table;
        rememberColumns(table.view);
        spoil(order);
        EXPECT_FALSE(restoreColumns(table.view));
        EXPECT_EQ(table.arrangement(), QStringLiteral("0123"));
    }
}

TEST_F(WindowMemory, KeepsWhichDocksAreShown)
{
    const auto addDock = [](QMainWindow& window) {
        auto* dock = new QDockWidget(&window);
        dock->setObjectName(QStringLiteral("dock"));
        window.addDockWidget(Qt::LeftDockWidgetArea, dock);
        return dock;
    };
    QMainWindow window;
    addDock(window)->hide();
    EXPECT_FALSE(restoreDocks(window));
    rememberDocks(window);

    QMainWindow next;
    auto* dock = addDock(next);
    EXPECT_TRUE(restoreDocks(next));
    EXPECT_TRUE(dock->isHidden());
}

TEST_F(WindowMemory, KeepsAllUnderNamesThatOtherVersionsOfTheProgramKnow)
{
    QMainWindow window;
    const Table table;
    rememberWindowSize(window);
    rememberDocks(window);
    rememberColumns(table.view);
    rememberColumnWidths(table.view);
    rememberHiddenKinds({QStringLiteral("overlap")});
    EXPECT_EQ(settings().allKeys().join(QLatin1Char(' ')),
        QStringLiteral("mainWindow/columnOrder mainWindow/columnWidths mainWindow/docks "
                       "mainWindow/hiddenColumns mainWindow/size problems/hiddenKinds"));
}

TEST_F(WindowMemory, TellsNoHiddenKindsFromNoneChosen)
{
    EXPECT_EQ(rememberedHiddenKinds(), std::nullopt);
    rememberHiddenKinds({});
    EXPECT_EQ(rememberedHiddenKinds(), QStringList());
    const QStringList kinds{QStringLiteral("missing"), QStringLiteral("overlap")};
    rememberHiddenKinds(kinds);
    EXPECT_EQ(rememberedHiddenKinds(), kinds);
}

TEST_F(WindowMemory, TakesSettingsThatAreNoneForMissing)
{
    Table table;
    QMainWindow window;
    rememberWindowSize(window);
    rememberColumnWidths(table.view);
    rememberColumns(table.view);
    rememberDocks(window);
    for (const QVariant& value :
        {QVariant(QStringLiteral("garbage")), QVariant(QString()), QVariant(-1), QVariant(QSize(0, -5))}) {
        spoil(value);
        EXPECT_FALSE(restoreWindowSize(window));
        EXPECT_FALSE(restoreColumnWidths(table.view));
        EXPECT_FALSE(restoreColumns(table.view));
        EXPECT_FALSE(restoreDocks(window));
        EXPECT_EQ(table.arrangement(), QStringLiteral("0123"));
    }
}

} // namespace quorvane::windows
