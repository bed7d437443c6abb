#include "windows/RulesEditorTableController.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "tests/windows/EditorTable.h"
#include "windows/PlainText.h"
#include "windows/RulesTableModel.h"
#include "workflow/RuleEdits.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>

namespace quorvane::windows {

namespace {

class MainWindow : public test::TableWindow<RulesEditorTableController, workflow::RuleColumn> {
protected:
    MainWindow()
    {
        store.addWatchRule(
            test::watchRule({.path = "/w", .processName = "/bin/sh", .tag = "hidden", .operations = 1}));
        for (const char* path : {"/b", "/a", "/c"})
            store.addPolicyRule(
                test::policyRule({.path = path, .processName = "/bin/sh", .tag = "shell", .operations = 1}));
        store.addPolicyRule(
            test::policyRule({.path = "/s", .processName = "/bin/sh", .operations = 2, .system = true}));
        window
            = std::make_unique<RulesEditorTableController>(document, application, run, workspace, log.log());
        show();
        search = in<QLineEdit>("searchField");
    }
    ~MainWindow() override { window.reset(); } // before the document

    rules::RuleManager store{platform::Locations("/root", "ann"), test::silentLog()};
    test::TestDocument document{store, run};
    QLineEdit* search = nullptr;
};

using MainWindowOnAFile = test::EditorTable;

} // namespace

TEST_F(MainWindow, TellsAtItsFootWhyPreferencesWereNotSavedUntilTheyAre)
{
    const auto* failure = window->findChild<QLabel*>(QStringLiteral("failureLabel"));
    window->showPreferencesFailure(QStringLiteral("Failed to save"));
    EXPECT_EQ(failure->text(), QStringLiteral("Failed to save"));
    EXPECT_EQ(failure->toolTip(), plainToolTip(QStringLiteral("Failed to save")));
    window->reloadData();
    EXPECT_EQ(failure->text(), QStringLiteral("Failed to save"));
    store.setLastErrorMessage("Failed to write");
    window->reloadData();
    EXPECT_EQ(failure->text(), QString::fromUtf8("Failed to write  \xE2\x80\xA2  Failed to save"));
    window->showPreferencesFailure({});
    EXPECT_EQ(failure->text(), QStringLiteral("Failed to write"));
}

TEST_F(MainWindow, NamesTheRulesFileInItsTitle)
{
    EXPECT_EQ(window->windowTitle(),
        QStringLiteral("Quorvane Configuration - /root/Users/Shared/Quorvane/ann.quorvane.rc"));
}

TEST_F(MainWindow, EndsTheProgramWhenItIsClosed)
{
    window->close();
    EXPECT_EQ(application.terminations, 1);
    EXPECT_EQ(log.lines().back(), "-[RulesEditorTableController windowWillClose:] exiting");
}

TEST_F(MainWindow, LeavesTheProgramRunningWhenItWasStartedForThePreferences)
{
    run.openedWithOptions = true;
    window->close();
    EXPECT_EQ(application.terminations, 0);
}

TEST_F(MainWindow, MarksEveryReloadAsItsOwn)
{
    window->reloadData();
    EXPECT_TRUE(run.internalWrite);
}

TEST_F(MainWindow, LeavesTheMarkAloneWhenItIsOnlySorted)
{
    run.internalWrite = false;
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    EXPECT_FALSE(run.internalWrite);
}

TEST_F(MainWindow, OpensWithUserRulesInStoredOrder)
{
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a /c"));
    EXPECT_EQ(counts(), QStringLiteral("4 of 5 rules shown, 1 system rule hidden"));
}

TEST_F(MainWindow, FiltersWhileOneTypesAndLogsIt)
{
    QTest::keyClicks(search, QStringLiteral("SHEL"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c"));
    EXPECT_EQ(counts(), QStringLiteral("3 of 5 rules shown"));
    EXPECT_EQ(log.lines().back(), "search field text changed: SHEL");
    QTest::keyClicks(search, QStringLiteral("x"));
    EXPECT_EQ(counts(), QStringLiteral("0 of 5 rules shown"));
    search->clear();
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a /c"));
    EXPECT_EQ(log.lines().back(), "search field text changed: ");
}

TEST_F(MainWindow, ShowsAndHidesSystemRulesAndSaysWhatItWillDoNext)
{
    QAction* system = action("hideSystemToolbarItem");
    EXPECT_EQ(system->text(), QStringLiteral("Show System Rules"));
    system->trigger();
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a /c /s"));
    EXPECT_EQ(system->text(), QStringLiteral("Hide System Rules"));
    EXPECT_EQ(log.lines().back(), "-[RulesEditorTableController hideSystemAction:] show system rules: NO");
    system->trigger();
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a /c"));
    EXPECT_EQ(system->text(), QStringLiteral("Show System Rules"));
    EXPECT_EQ(log.lines().back(), "-[RulesEditorTableController hideSystemAction:] show system rules: YES");
}

TEST_F(MainWindow, SortsByClicksOnTitlesWithEarlierClicksBreakingTies)
{
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c /w"));
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /c /b /a"));
    clickTitle(workflow::RuleColumn::tag);
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /c /b /a"));
    clickTitle(workflow::RuleColumn::tag);
    EXPECT_EQ(shownPaths(), QStringLiteral("/c /b /a /w"));
}

TEST_F(MainWindow, SortsByTheDateThatNoColumnShows)
{
    const auto dated = [this](const char* path, std::uint64_t created) {
        store.addPolicyRule(
            test::policyRule({.path = path, .processName = "/bin/sh", .operations = 1, .created = created}));
    };
    dated("/new", 1700000000);
    dated("/old", 1600000000);
    window->reloadData();
    clickTitle(workflow::RuleColumn::path);
    QAction* date = window->findChild<QMenu*>(QStringLiteral("sortMenu"))->actions().last();
    ASSERT_EQ(date->text(), QStringLiteral("Date"));
    date->trigger();
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /a /b /c /old /new"));
    EXPECT_TRUE(date->isChecked());
    EXPECT_FALSE(table->horizontalHeader()->isSortIndicatorShown());
    date->trigger();
    EXPECT_TRUE(shownPaths().startsWith(QStringLiteral("/new /old")));
    clickTitle(workflow::RuleColumn::path);
    EXPECT_TRUE(table->horizontalHeader()->isSortIndicatorShown());
    EXPECT_FALSE(date->isChecked());
}

TEST_F(MainWindow, SortedByClassWatchRulesStandApart)
{
    clickTitle(workflow::RuleColumn::path);
    clickTitle(workflow::RuleColumn::ruleClass);
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c /w"));
}

TEST_F(MainWindow, StaysSortedWhileItIsFiltered)
{
    clickTitle(workflow::RuleColumn::path);
    QTest::keyClicks(search, QStringLiteral("shell"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
}

TEST_F(MainWindow, KeepsTheSelectedRulesSelectedWhereverTheyGo)
{
    // given the rule on /b selected
    table->selectRow(1);
    // when rows change places and number
    clickTitle(workflow::RuleColumn::path);
    // then it is the same rule that is selected and current
    ASSERT_EQ(table->selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(
        table->selectionModel()->selectedRows(static_cast<int>(workflow::RuleColumn::path)).front().data(),
        QStringLiteral("/b"));
    EXPECT_EQ(table->currentIndex().row(), 1);
    QTest::keyClicks(search, QStringLiteral("/c"));
    EXPECT_TRUE(table->selectionModel()->selectedRows().isEmpty());
}

TEST_F(MainWindow, EscapeEmptiesTheSearchFieldAndThenLeavesIt)
{
    window->focusSearchField();
    QTest::keyClicks(search, QStringLiteral("shell"));
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_EQ(search->text(), QString());
    EXPECT_TRUE(search->hasFocus());
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(table->hasFocus());
}

TEST_F(MainWindow, ReturnInTheSearchFieldGoesOnToTheRows)
{
    window->focusSearchField();
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_TRUE(table->hasFocus());
}

TEST_F(MainWindow, OpensWithTheKeyboardInItsTable)
{
    EXPECT_EQ(window->focusWidget(), table);
}

TEST_F(MainWindow, FindGoesToTheSearchFieldAndSelectsWhatStandsThere)
{
    search->setText(QStringLiteral("shell"));
    search->setFocus();
    search->deselect();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    action("findMenuItem")->trigger();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_TRUE(search->hasFocus());
    EXPECT_EQ(search->selectedText(), QStringLiteral("shell"));
}

TEST_F(MainWindow, LeavesItsDocumentToOthersWhenItIsGone)
{
    window.reset();
    document.perform(workflow::deletionOf(store, {store.userRules().front()}), {"Delete Rule"});
    EXPECT_EQ(store.userRules().size(), 3U);
}

TEST_F(MainWindow, LettersTypedOverTheTableGoOnInTheSearchField)
{
    table->setFocus();
    QTest::keyClick(table, Qt::Key_S);
    EXPECT_TRUE(search->hasFocus());
    QTest::keyClicks(search, QStringLiteral("hell"));
    EXPECT_EQ(search->text(), QStringLiteral("shell"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c"));
}

TEST_F(MainWindow, AnEmptyTableSaysWhyInWords)
{
    QTest::keyClicks(search, QStringLiteral("nothing like this"));
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("No rule matches."));
    search->clear();
    EXPECT_EQ(table->accessibleDescription(), QString());

    document.perform(workflow::deletionOf(store, store.userRules()), {"Delete Rules"});
    window->reloadData();
    EXPECT_EQ(table->accessibleDescription(),
        QStringLiteral("Only system rules match. “Show System Rules” shows them."));
}

TEST_F(MainWindowOnAFile, SaysThatThereAreNoRulesYetOrNoneThatNarrowLeaves)
{
    open("");
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("There are no rules yet."));
    open(test::firstLine);
    action("narrowMenuItem")->trigger();
    in<QComboBox>("classChoice")->setCurrentIndex(2);
    EXPECT_TRUE(QTest::qWaitFor([this] {
        return table->accessibleDescription()
            == QStringLiteral("No rule matches what is chosen under Narrow.");
    }));
}

TEST_F(MainWindow, AsksTheProgramForPreferencesAndHelp)
{
    action("preferencesMenuItem")->trigger();
    EXPECT_EQ(application.preferencesShown, 1);
    action("userGuideMenuItem")->trigger();
    EXPECT_EQ(application.helpShown, 1);
    action("quitMenuItem")->trigger();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(MainWindow, EveryControlSaysItsName)
{
    EXPECT_EQ(search->findChild<QToolButton*>()->accessibleName(), QStringLiteral("Clear"));
    EXPECT_EQ(table->accessibleName(), QStringLiteral("Rules"));
    EXPECT_EQ(search->accessibleName(), QStringLiteral("Search"));
    EXPECT_EQ(in<QLabel>("searchLabel")->buddy(), search);
}

TEST_F(MainWindow, SortsFromTheMenuAsWell)
{
    for (QAction* item : in<QMenu>("sortMenu")->actions()) {
        if (item->text() == QStringLiteral("Path"))
            item->trigger();
    }
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c /w"));
}

TEST_F(MainWindow, TicksInTheMenuWhatItIsSortedBy)
{
    const auto ticked = [this] {
        QStringList titles;
        for (const QAction* item : in<QMenu>("sortMenu")->actions()) {
            if (item->isChecked())
                titles.append(item->text());
        }
        return titles.join(QLatin1Char(' '));
    };
    EXPECT_EQ(ticked(), QString());
    QAction* date = in<QMenu>("sortMenu")->actions().last();
    date->trigger();
    EXPECT_EQ(ticked(), QStringLiteral("Date"));
    date->trigger();
    EXPECT_EQ(ticked(), QStringLiteral("Date")) << "the other way round";
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(ticked(), QStringLiteral("Path"));
    clickTitle(workflow::RuleColumn::path);
    EXPECT_EQ(ticked(), QStringLiteral("Path"));
}

TEST_F(MainWindow, RemembersItsSizeAndColumnWidths)
{
    // given a window that the user has arranged
    window->resize(701, 507);
    table->setColumnWidth(0, 171);
    window->close();
    // when the next one opens
    RulesEditorTableController next(document, application, run, workspace, log.log());
    next.show();
    // then it is arranged so
    EXPECT_EQ(next.size(), QSize(701, 507));
    EXPECT_EQ(next.findChild<RulesTableView*>()->columnWidth(0), 171);
}

TEST_F(MainWindow, FitsItsColumnsAnewWhileNobodyHasArrangedThem)
{
    QFile::remove(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME"))
        + QStringLiteral("/Vantreal/Quorvane Configuration.ini"));
    const auto widthWith = [&](rules::RuleManager& rules) {
        test::TestDocument rulesDocument(rules, run);
        RulesEditorTableController next(rulesDocument, application, run, workspace, log.log());
        next.show();
        const int width = next.findChild<RulesTableView*>()->columnWidth(0);
        next.close();
        return width;
    };
    rules::RuleManager empty{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    rules::RuleManager longNames{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    longNames.addPolicyRule(
        test::policyRule({.path = "/a", .processName = "/bin/a-program-with-a-long-name", .operations = 1}));
    EXPECT_LT(widthWith(empty), widthWith(longNames));
}

TEST_F(MainWindow, AnswersForAMillionRowsAtOnce)
{
    // Not timed: with a row made twice or all rows made at once this would take minutes.
    for (int number = 0; number < 200000; ++number)
        store.addPolicyRule(test::policyRule(
            {.path = "/many/" + std::to_string(number), .processName = "/bin/many", .operations = 1}));
    window->reloadData();
    QApplication::processEvents();
    table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
    table->viewport()->repaint();
    EXPECT_EQ(table->model()->rowCount(), 200004);
    EXPECT_EQ(table->model()->index(200003, static_cast<int>(workflow::RuleColumn::path)).data().toString(),
        QStringLiteral("/c"));
}

TEST_F(MainWindow, APastedLineEndDoesNotStayInTheSearchField)
{
    QApplication::clipboard()->setText(QStringLiteral("/a\n"));
    search->paste();
    EXPECT_EQ(search->text(), QStringLiteral("/a"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a"));
}

TEST_F(MainWindow, SearchFieldAndPathStayInViewWhenItIsNarrow)
{
    const int path = static_cast<int>(workflow::RuleColumn::path);
    // Long names, so that the columns beside the path are wide.
    store.addPolicyRule(test::policyRule({.path = "/d",
        .processName = "/bin/" + std::string(100, 'n'),
        .tag = std::string(100, 't'),
        .operations = 31}));
    window->reloadData();
    window->resize(1100, 500);
    table->fitColumns();
    const QList<int> wide = table->wishedWidths();
    const auto applicationWidth = [this] { return table->columnWidth(0); };
    const int wideApplication = applicationWidth();

    window->resize(560, 500);
    ASSERT_TRUE(QTest::qWaitFor([this] { return window->width() == 560 && search->isVisible(); }));
    EXPECT_TRUE(window->rect().contains(QRect(search->mapTo(window.get(), QPoint()), search->size())));
    EXPECT_GE(search->width(), 100);
    EXPECT_GE(table->columnWidth(path), 100);
    EXPECT_LE(table->columnViewportPosition(path) + table->columnWidth(path), table->viewport()->width());
    EXPECT_EQ(table->wishedWidths(), wide) << "giving way is no wish";

    window->resize(1100, 500);
    EXPECT_TRUE(QTest::qWaitFor([&] { return applicationWidth() == wideApplication; }));
}

} // namespace quorvane::windows
