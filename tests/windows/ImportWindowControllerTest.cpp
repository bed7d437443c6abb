#include "windows/ImportWindowController.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "tests/windows/TableWindow.h"
#include "windows/ImportTableModel.h"
#include "windows/QtText.h"
#include "workflow/ImportCells.h"
#include "workflow/ImportDelegate.h"

#include <QItemSelectionRange>
#include <QMenu>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace quorvane::windows {

namespace {

// Notes what it is given, in words.
class NotingDelegate : public workflow::ImportDelegate {
public:
    void importRule(const rules::RuleRef& rule) override
    {
        calls += visitRule(rule, [](const auto& record) { return std::string(record.fields().path.view()); })
            + " ";
        if (meanwhile)
            meanwhile();
    }
    bool didFinishImportingRules() override
    {
        calls += "end";
        return succeeds;
    }

    std::string calls;
    bool succeeds = true;
    std::function<void()> meanwhile;
};

class ImportWindow : public test::TableWindow<ImportWindowController, workflow::ImportColumn> {
protected:
    ~ImportWindow() override { window.reset(); } // before the document
    void open(const std::string& file)
    {
        window = std::make_unique<ImportWindowController>(document, workspace, log.log());
        window->setDelegate(&delegate);
        window->setPath(file);
        show();
    }
    // A file of three policy rules of one program, in this order: /b, /a, /c.
    void openThree()
    {
        open(folder.write("Three.quorv",
            "allow prefix \"/b\" \"/bin/sh\" r\n"
            "allow prefix \"/a\" \"/bin/sh\" w\n"
            "deny prefix \"/c\" \"/bin/sh\" r\n"));
    }

    // One letter for each row: x when it is ticked.
    QString ticks() const
    {
        QString letters;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            letters += cell(row, workflow::ImportColumn::tick).data(Qt::CheckStateRole) == Qt::Checked ? u'x'
                                                                                                       : u'-';
        return letters;
    }
    QPushButton* button(const char* name) const { return in<QPushButton>(name); }
    void sortByPath() const { clickTitle(workflow::ImportColumn::path); }

    test::TemporaryFolder folder;
    rules::RuleManager store{platform::Locations(folder.path("root"), "ann"), test::silentLog()};
    test::TestDocument document{store, run};
    NotingDelegate delegate;
};

} // namespace

TEST_F(ImportWindow, ListsTheRulesOfTheFileAllTicked)
{
    openThree();
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c"));
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
    EXPECT_EQ(counts(), QStringLiteral("3 of 3 rules ticked"));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Import Rules - ") + toQt(folder.path("Three.quorv")));
    EXPECT_EQ(QApplication::focusWidget(), table);
}

TEST_F(ImportWindow, ReadsALongFileBesideAndImportsNothingBeforeItIsThere)
{
    constexpr int rules = 20'000;
    std::string lines;
    for (int number = 0; number < rules; ++number)
        lines
            += "allow prefix \"/a/folder/whose/name/is/long/" + std::to_string(number) + "\" \"/bin/sh\" r\n";
    open(folder.write("Long.quorv", lines));
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("Reading the rules\u2026"));
    EXPECT_FALSE(button("importButton")->isEnabled());
    window->importAction();
    EXPECT_EQ(delegate.calls, "");
    EXPECT_TRUE(window->isVisible());

    EXPECT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules; }));
    EXPECT_TRUE(button("importButton")->isEnabled());
    EXPECT_EQ(counts(), QStringLiteral("20,000 of 20,000 rules ticked"));
}

TEST_F(ImportWindow, ImportsNothingOfAFileForWhichMemoryDoesNotSuffice)
{
    open(folder.write("Long.quorv", std::string(1U << 20U, ';') + "\nallow prefix \"/a\" \"/bin/sh\" r\n"));
    window->takeRead({});
    EXPECT_EQ(
        table->accessibleDescription(), QStringLiteral("There is not enough memory to read this file."));
    EXPECT_FALSE(button("importButton")->isEnabled());
    window->importAction();
    EXPECT_EQ(delegate.calls, "");
    EXPECT_TRUE(window->isVisible());
}

TEST_F(ImportWindow, CanBeClosedWhileALongFileIsRead)
{
    open(folder.write("Long.quorv", std::string(1U << 20U, ';') + "\nallow prefix \"/a\" \"/bin/sh\" r\n"));
    window.reset();
    QTest::qWait(1);
    EXPECT_EQ(delegate.calls, "");
}

TEST_F(ImportWindow, TellsHowManyRulesAreAlreadyPresent)
{
    store.addPolicyRule(test::policyRule({.path = "/a", .processName = "/bin/sh", .operations = 2}));
    openThree();
    const QString counted = QStringLiteral("3 of 3 rules ticked, 1 already present (in italics)");
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == counted; })) << fromQt(counts());
}

TEST_F(ImportWindow, MarksPresentRulesAnewWhenTheyChangeAndKeepsTheRest)
{
    const auto rule = test::policyRule({.path = "/a", .processName = "/bin/sh", .operations = 2});
    openThree();
    const auto isMarked
        = [this] { return cell(0, workflow::ImportColumn::path).data(Qt::FontRole).value<QFont>().italic(); };
    sortByPath();
    click(1, workflow::ImportColumn::tick);
    table->selectRow(0);
    EXPECT_FALSE(isMarked());

    store.addPolicyRule(rule);
    window->presentRulesDidChange();
    const QString counted = QStringLiteral("2 of 3 rules ticked, 1 already present (in italics)");
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == counted; })) << fromQt(counts());
    EXPECT_TRUE(QTest::qWaitFor(isMarked));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
    EXPECT_EQ(ticks(), QStringLiteral("x-x"));
    EXPECT_EQ(table->selectedRows(), std::vector<std::size_t>{0});

    store.deletePolicyRule(*rule);
    window->presentRulesDidChange();
    EXPECT_TRUE(QTest::qWaitFor([this] { return counts() == QStringLiteral("2 of 3 rules ticked"); }));
    EXPECT_FALSE(isMarked());
}

TEST_F(ImportWindow, LogsThePathAndTheNumberOfRules)
{
    openThree();
    const std::string file = folder.path("Three.quorv");
    const auto lines = log.lines();
    EXPECT_EQ(lines.front(), "path set to " + file);
    EXPECT_EQ(lines.back(), "total rules: 3 for path " + file);
}

TEST_F(ImportWindow, ItsRulesAreNoRulesOfTheSystem)
{
    openThree();
    window->importAction();
    EXPECT_EQ(delegate.calls, "/b /a /c end");
}

TEST_F(ImportWindow, StaysEmptyWithoutAPathAndTriesAgainTheNextTimeItIsShown)
{
    open("");
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Import Rules"));
    EXPECT_EQ(counts(), QStringLiteral("0 of 0 rules ticked"));
    EXPECT_TRUE(button("takeApartButton")->isHidden());
    window->hide();
    window->setPath(folder.write("One.quorv", "allow prefix \"/b\" \"/bin/sh\" r\n"));
    window->show();
    EXPECT_EQ(shownPaths(), QStringLiteral("/b"));
}

TEST_F(ImportWindow, ReadsTheFileOnceHoweverOftenItIsShown)
{
    openThree();
    click(0, workflow::ImportColumn::tick);
    window->hide();
    window->show();
    EXPECT_EQ(ticks(), QStringLiteral("-xx"));
}

TEST_F(ImportWindow, ReadingTheFileAgainTicksAllRulesAgain)
{
    openThree();
    click(0, workflow::ImportColumn::tick);
    folder.write("Three.quorv", "allow prefix \"/d\" \"/bin/sh\" r\nallow prefix \"/e\" \"/bin/sh\" r\n");
    window->reloadData();
    EXPECT_EQ(shownPaths(), QStringLiteral("/d /e"));
    EXPECT_EQ(ticks(), QStringLiteral("xx"));
    EXPECT_EQ(counts(), QStringLiteral("2 of 2 rules ticked"));
}

TEST_F(ImportWindow, ReadingTheFileAgainForgetsTheOrder)
{
    openThree();
    window->sortByColumn(static_cast<int>(workflow::ImportColumn::path));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
    EXPECT_TRUE(table->horizontalHeader()->isSortIndicatorShown());
    window->reloadData();
    EXPECT_FALSE(table->horizontalHeader()->isSortIndicatorShown());
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c"));
    window->sortByColumn(
        static_cast<int>(workflow::ImportColumn::path)); // not turned round: it is the first again
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
}

TEST_F(ImportWindow, WithoutAFileItsTitlesDoNothing)
{
    open("");
    for (const auto column : {workflow::ImportColumn::path, workflow::ImportColumn::tick})
        clickTitle(column);
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_EQ(counts(), QStringLiteral("0 of 0 rules ticked"));
}

TEST_F(ImportWindow, FitsItsColumnsToTheFileButThatOfTheTicks)
{
    openThree();
    const int column = static_cast<int>(workflow::ImportColumn::application);
    const int narrow = table->columnWidth(column);
    folder.write("Three.quorv", "allow prefix \"/d\" \"/bin/a program of several words\" r\n");
    window->resize(1300, 500);
    window->reloadData();
    EXPECT_GT(table->columnWidth(column), narrow + 50);
    EXPECT_EQ(table->horizontalHeader()->sectionResizeMode(static_cast<int>(workflow::ImportColumn::tick)),
        QHeaderView::Fixed);
}

TEST_F(ImportWindow, TheSpaceBarOnAButtonPressesIt)
{
    openThree();
    table->selectRow(0);
    button("cancelButton")->setFocus();
    QTest::keyClick(button("cancelButton"), Qt::Key_Space);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
}

TEST_F(ImportWindow, AClickUnticksARuleAndAnotherTicksItAgain)
{
    openThree();
    click(1, workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("x-x"));
    EXPECT_EQ(counts(), QStringLiteral("2 of 3 rules ticked"));
    click(1, workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
    click(1, workflow::ImportColumn::path);
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
}

TEST_F(ImportWindow, ADoubleClickOnACheckBoxIsTwoClicks)
{
    openThree();
    const QPoint place = table->visualRect(cell(1, workflow::ImportColumn::tick)).center();
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
}

TEST_F(ImportWindow, SortingKeepsEachRulesTick)
{
    openThree();
    click(0, workflow::ImportColumn::tick);
    sortByPath();
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
    EXPECT_EQ(ticks(), QStringLiteral("x-x"));
    sortByPath();
    EXPECT_EQ(shownPaths(), QStringLiteral("/c /b /a"));
    EXPECT_EQ(ticks(), QStringLiteral("x-x"));
    clickTitle(workflow::ImportColumn::ruleClass);
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c")) << "the order before breaks ties";
    EXPECT_EQ(ticks(), QStringLiteral("-xx"));
}

TEST_F(ImportWindow, TheTitleAboveTheTicksTicksAllOrNone)
{
    openThree();
    clickTitle(workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("---"));
    EXPECT_EQ(counts(), QStringLiteral("0 of 3 rules ticked"));
    click(2, workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("--x"));
    clickTitle(workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c")) << "it sorts nothing";
}

TEST_F(ImportWindow, TheSpaceBarTogglesTheTicksOfTheSelectedRows)
{
    openThree();
    click(1, workflow::ImportColumn::path);
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(ticks(), QStringLiteral("x-x"));
    QTest::keyClick(table, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(table, Qt::Key_Space); // one of the two is ticked, so both become so
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(ticks(), QStringLiteral("x--"));
    QTest::keyClick(table, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(ticks(), QStringLiteral("xxx"));
}

TEST_F(ImportWindow, PaintsTheTicksThatTheSpaceBarToggles)
{
    openThree();
    click(1, workflow::ImportColumn::path);
    QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
    QTest::keyClick(table, Qt::Key_Space);
    const QModelIndex tick = cell(1, workflow::ImportColumn::tick);
    EXPECT_TRUE(std::any_of(changed.begin(), changed.end(), [&](const QList<QVariant>& corners) {
        return QItemSelectionRange(corners[0].toModelIndex(), corners[1].toModelIndex()).contains(tick);
    }));
}

TEST_F(ImportWindow, ItsMenuSortsAsItsTitlesDo)
{
    openThree();
    for (QAction* action : table->findChild<QMenu*>()->findChild<QMenu*>()->actions()) {
        if (action->text() == QStringLiteral("Path"))
            action->trigger();
    }
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b /c"));
}

TEST_F(ImportWindow, ReturnImportsTheTickedRulesInTheOrderOfTheRows)
{
    openThree();
    click(2, workflow::ImportColumn::tick);
    sortByPath();
    QTest::keyClick(table, Qt::Key_Return);
    EXPECT_EQ(delegate.calls, "/a /b end");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(log.lines().back(), "-[ImportWindowController windowWillClose:] closing");
}

TEST_F(ImportWindow, ImportWithEveryBoxUntickedEndsTheImportAndClosesTheWindow)
{
    openThree();
    clickTitle(workflow::ImportColumn::tick);
    button("importButton")->click();
    EXPECT_EQ(delegate.calls, "end");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(ImportWindow, ImportOfAFileThatCannotBeReadEndsTheImport)
{
    open(folder.path("missing.quorv"));
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("This file holds no rules."));
    button("importButton")->click();
    EXPECT_EQ(delegate.calls, "end");
}

TEST_F(ImportWindow, TellsWhyRulesOfTheFileAreNotListed)
{
    const std::string file = folder.write("File.quorv", "allow prefix \"/b\" \"/bin/sh\" r\n");
    const std::string link = folder.path("link.quorv");
    std::filesystem::create_symlink(file, link);
    open(link);
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_TRUE(
        table->accessibleDescription().startsWith(QStringLiteral("Failed to open file '") + toQt(link)));
    EXPECT_EQ(counts(), QStringLiteral("0 of 0 rules ticked")) << "the table says it";

    using namespace std::string_literals;
    open(folder.write("Cut.quorv",
        "allow prefix \"/b\" \"/bin/sh\" r\n\0"
        "allow prefix \"/c\" \"/bin/sh\" r\n"s));
    EXPECT_EQ(shownPaths(), QStringLiteral("/b"));
    EXPECT_EQ(counts(),
        QStringLiteral("1 of 1 rules ticked\nThe rules file '%1' holds a NUL byte: nothing behind it is read")
            .arg(toQt(folder.path("Cut.quorv"))));
}

TEST_F(ImportWindow, ImportWithoutADelegateOnlyClosesTheWindow)
{
    openThree();
    window->setDelegate(nullptr);
    button("importButton")->click();
    EXPECT_EQ(delegate.calls, "");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(ImportWindow, EscapeCancelAndCloseImportNothing)
{
    const struct {
        const char* why;
        std::function<void()> act;
    } cases[] = {
        {"Escape", [this] { QTest::keyClick(table, Qt::Key_Escape); }},
        {"Cancel", [this] { button("cancelButton")->click(); }},
        {"the close control", [this] { window->close(); }},
    };
    for (const auto& c : cases) {
        openThree();
        const std::size_t before = log.lines().size();
        c.act();
        EXPECT_FALSE(window->isVisible()) << c.why;
        EXPECT_EQ(delegate.calls, "") << c.why;
        EXPECT_EQ(log.lines().size(), before + 1) << c.why << " closes once";
    }
}

TEST_F(ImportWindow, HoweverItClosesTheFailSafeFilesGoAlsoWhenAnotherFileWasUnderReview)
{
    const platform::Locations& locations = store.locations();
    const struct {
        const char* why;
        std::function<void()> act;
    } cases[] = {
        {"Escape", [this] { QTest::keyClick(table, Qt::Key_Escape); }},
        {"Cancel", [this] { button("cancelButton")->click(); }},
        {"the close control", [this] { window->close(); }},
        {"Import", [this] { window->importAction(); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const std::string failSafe = folder.write("root/Users/Shared/Quorvane/failsafe.rc", "");
        folder.write("root/Users/Shared/Quorvane/failsafe.rc.strict", "");
        ASSERT_EQ(failSafe, locations.failSafeFile());
        openThree();
        c.act();
        EXPECT_FALSE(std::filesystem::exists(locations.failSafeFile()));
        EXPECT_FALSE(std::filesystem::exists(locations.failSafeStrictMarker()));
        EXPECT_TRUE(std::filesystem::exists(folder.path("Three.quorv")));
    }
}

TEST_F(ImportWindow, RulesThatCouldNotBeWrittenLeaveTheFailSafeFilesAlone)
{
    folder.write("root/Users/Shared/Quorvane/failsafe.rc", "");
    delegate.succeeds = false;
    openThree();
    window->importAction();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(std::filesystem::exists(store.locations().failSafeFile()));
}

TEST_F(ImportWindow, AWindowThatIsReplacedLeavesTheFailSafeFilesAlone)
{
    folder.write("root/Users/Shared/Quorvane/failsafe.rc", "");
    openThree();
    window.reset();
    EXPECT_TRUE(std::filesystem::exists(store.locations().failSafeFile()));
}

TEST_F(ImportWindow, TellsHowFarALongImportIsAndTakesNoInputMeanwhile)
{
    openThree();
    QWidget other;
    other.show();
    bool wasBlocked = false;
    delegate.meanwhile = [&] {
        auto* progress = window->findChild<QProgressDialog*>();
        ASSERT_NE(progress, nullptr);
        ASSERT_TRUE(QTest::qWaitFor([progress] { return progress->isVisible(); }));
        EXPECT_EQ(QApplication::activeModalWidget(), progress);
        progress->close();
        QTest::keyClick(progress, Qt::Key_Escape);
        window->close();
        window->reject();
        window->importAction();
        EXPECT_TRUE(progress->isVisible());
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->isImporting());
        wasBlocked = true;
    };
    button("importButton")->click();
    EXPECT_TRUE(wasBlocked);
    EXPECT_EQ(delegate.calls, "/b /a /c end");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(ImportWindow, HandlesEventsBeforeItTellsHowFarAnImportIs)
{
    openThree();
    bool isHandled = false;
    QTimer::singleShot(0, [&isHandled] { isHandled = true; });
    std::string before;
    delegate.meanwhile = [&] {
        EXPECT_FALSE(window->findChild<QProgressDialog*>()->isVisible());
        if (isHandled && before.empty())
            before = delegate.calls;
        QThread::msleep(50); // longer than between two looks at the events
    };
    window->importAction();
    EXPECT_EQ(before, "/b /a ");
}

TEST_F(ImportWindow, TogglesTheTicksOfManyRowsTogether)
{
    std::string text;
    constexpr int rules = 20000;
    for (int number = 0; number < rules; ++number)
        text += "allow path \"/f" + std::to_string(number) + "\" \"/bin/sh\" r\n";
    open(folder.write("Many.quorv", text));
    QTest::keyClick(table, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(counts(), QStringLiteral("0 of 20,000 rules ticked"));
    EXPECT_EQ(cell(rules - 1, workflow::ImportColumn::tick).data(Qt::CheckStateRole), Qt::Unchecked);
    QTest::keyClick(table, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(counts(), QStringLiteral("20,000 of 20,000 rules ticked"));
}

TEST_F(ImportWindow, TheCountLineTellsOfLettersThatTheRulesFileCuts)
{
    const std::string file = folder.write(
        "Letters.quorv", "allow prefix \"/a\" \"/bin/sh\" r\nallow prefix \"/K\u00e4se\" \"/bin/sh\" r\n");
    open(file);
    const QString told = QStringLiteral(", 1 with letters beyond ASCII, whose lines the rules file cuts");
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts().contains(told); })) << counts().toStdString();
    workflow::ProgramSettings wholeLines;
    wholeLines.wholeLines = true;
    document.setSettings(wholeLines);
    window->presentRulesDidChange();
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == QStringLiteral("2 of 2 rules ticked"); }))
        << counts().toStdString();
}

TEST_F(ImportWindow, LinesThatHoldSeveralRulesAreTakenApartOnRequest)
{
    open(folder.write("Joined.quorv",
        "allow prefix \"/a\" \"/bin/sh\" r \"\" \"\" \"0\"\n"
        "allow prefix \"/b\" \"/bin/sh\" r \"\" \"\" \"0\"deny path \"/c\" \"/bin/cat\" w \"\" \"\" \"0\"\n"
        "allow prefix \"/d\" \"/bin/sh\" r \"very impordeny path \"/e\" \"/bin/cat\" w \"\" \"\" \"0\"\n"));
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_TRUE(counts().contains(QStringLiteral("2 lines of the file hold several rules each")))
        << counts().toStdString();
    ASSERT_TRUE(button("takeApartButton")->isVisible());
    button("takeApartButton")->click();
    EXPECT_FALSE(button("takeApartButton")->isVisible());
    EXPECT_EQ(table->model()->rowCount(), 5);
    EXPECT_EQ(ticks().count(u'-'), 1);
    for (int row = 0; row < 5; ++row) {
        if (ticks()[row] == u'-') {
            EXPECT_EQ(text(row, workflow::ImportColumn::path), QStringLiteral("/d")) << "it has lost text";
        }
    }
    window->importAction();
    for (const char* path : {"/a ", "/b ", "/c ", "/e ", "end"})
        EXPECT_NE(delegate.calls.find(path), std::string::npos) << path;
    EXPECT_EQ(delegate.calls.find("/d "), std::string::npos);
}

TEST_F(ImportWindow, SeveralLinesThatHoldSeveralRulesAreCounted)
{
    const std::string line = "allow prefix \"/b\" \"/bin/sh\" r \"\" \"\" \"0\"deny path \"/c\" "
                             "\"/bin/cat\" w \"\" \"\" \"0\"\n";
    open(folder.write("Joined.quorv", line + line));
    EXPECT_TRUE(counts().endsWith(
        QStringLiteral("\n2 lines of the file hold several rules each, of which the first alone counts.")))
        << counts().toStdString();
}

TEST_F(ImportWindow, OneLineThatHoldsSeveralRulesIsToldAsOne)
{
    open(folder.write("Joined.quorv",
        "allow prefix \"/b\" \"/bin/sh\" r \"\" \"\" \"0\"deny path \"/c\" \"/bin/cat\" w \"\" \"\" "
        "\"0\"\n"));
    EXPECT_TRUE(counts().endsWith(
        QStringLiteral("\n1 line of the file holds several rules, of which the first alone counts.")))
        << counts().toStdString();
    button("takeApartButton")->click();
    EXPECT_TRUE(counts().endsWith(QStringLiteral("\nRules that have lost text are not ticked.")))
        << counts().toStdString();
}

TEST_F(ImportWindow, ItsMenuOpensOnItsRows)
{
    openThree();
    auto* menu = table->findChild<QMenu*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_NE(menu, nullptr);
    QContextMenuEvent press(QContextMenuEvent::Mouse, QPoint(9, 9), table->mapToGlobal(QPoint(9, 9)));
    QApplication::sendEvent(table->viewport(), &press);
    EXPECT_TRUE(menu->isVisible());
    menu->close();
}

TEST_F(ImportWindow, NothingIsOfferedWhereNoLineHoldsSeveralRules)
{
    openThree();
    EXPECT_FALSE(button("takeApartButton")->isVisible());
}

namespace {

// The button of a kind in the bar above the list.
class ImportForesightBar : public ImportWindow {
protected:
    void openFile()
    {
        store.addPolicyRule(test::policyRule({.path = "/a", .processName = "/bin/sh", .operations = 1}));
        open(folder.write("Four.quorv",
            "allow prefix \"/a\" \"/bin/sh\" r\n"
            "allow prefix \"/b/\" \"/bin/sh\" r\n"
            "allow prefix \"/b/c\" \"/bin/sh\" r\n"
            "allow prefix \"/d\" \"/nowhere/tool\" r\n"));
        waitFor("Failing 1");
    }
    void waitFor(const char* text) const
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return find(text) != nullptr; })) << text;
    }
    QToolButton* find(const char* text) const
    {
        for (auto* button : window->findChildren<QToolButton*>()) {
            if (button->text() == QString::fromLatin1(text))
                return button;
        }
        return nullptr;
    }
    void choose(const char* text) const
    {
        ASSERT_NE(find(text), nullptr) << text;
        find(text)->click();
    }
};

} // namespace

TEST_F(ImportForesightBar, CountsWhatTheImportWouldComeTo)
{
    openFile();
    for (const char* text : {"All 4", "New 3", "Present 1", "Redundant 1", "Failing 1", "Joined 0"})
        EXPECT_NE(find(text), nullptr) << text;
    EXPECT_FALSE(find("Joined 0")->isEnabled());
}

TEST_F(ImportForesightBar, ShowsTheRulesOfOneKindAlone)
{
    openFile();
    choose("New 3");
    EXPECT_EQ(shownPaths(), QStringLiteral("/b/ /b/c /d"));
    choose("Present 1");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a"));
    choose("Redundant 1");
    EXPECT_EQ(shownPaths(), QStringLiteral("/b/c"));
    choose("Failing 1");
    EXPECT_EQ(shownPaths(), QStringLiteral("/d"));
    sortByPath();
    EXPECT_EQ(shownPaths(), QStringLiteral("/d"));
    EXPECT_EQ(table->accessibleDescription(), QString());
    choose("All 4");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b/ /b/c /d"));
}

TEST_F(ImportForesightBar, ImportsTickedRulesThatAreNotShownAndSaysSo)
{
    openFile();
    choose("Failing 1");
    EXPECT_TRUE(counts().startsWith(
        QStringLiteral("4 of 4 rules ticked (3 of them not shown, and imported all the same)")))
        << fromQt(counts());
    click(0, workflow::ImportColumn::tick);
    window->importAction();
    EXPECT_EQ(delegate.calls, "/a /b/ /b/c end");
}

TEST_F(ImportForesightBar, LetsTheTitleTickWhatIsShownAndNoMore)
{
    openFile();
    choose("New 3");
    clickTitle(workflow::ImportColumn::tick);
    EXPECT_EQ(ticks(), QStringLiteral("---"));
    choose("All 4");
    EXPECT_EQ(ticks().count(u'x'), 1);
    choose("Present 1");
    EXPECT_EQ(ticks(), QStringLiteral("x"));
}

TEST_F(ImportForesightBar, SaysWhenNoRuleIsOfTheChosenKindAnyMore)
{
    openFile();
    choose("Present 1");
    store.deletePolicyRule(*std::get<rules::PolicyRulePtr>(store.userRules().front()));
    window->presentRulesDidChange();
    waitFor("Present 0");
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("No rule is of this kind."));
}

TEST_F(ImportForesightBar, ForgetsWhatItCountedWhenTheFileIsReadAgain)
{
    openFile();
    choose("Present 1");
    folder.write("Four.quorv", "allow prefix \"/e\" \"/bin/sh\" r\n");
    window->reloadData();
    EXPECT_EQ(shownPaths(), QStringLiteral("/e"));
    EXPECT_EQ(counts(), QStringLiteral("1 of 1 rules ticked"));
    waitFor("Failing 0");
    EXPECT_NE(find("Present 0"), nullptr);
    EXPECT_EQ(counts(), QStringLiteral("1 of 1 rules ticked"));
}

TEST_F(ImportForesightBar, FollowsTheUsersRules)
{
    openFile();
    choose("Present 1");
    store.addPolicyRule(test::policyRule({.path = "/d", .processName = "/nowhere/tool", .operations = 1}));
    window->presentRulesDidChange();
    waitFor("Present 2");
    EXPECT_EQ(shownPaths().split(QLatin1Char(' ')).size(), 2);
}

TEST_F(ImportForesightBar, FindsRulesOfJoinedLines)
{
    open(folder.write("Joined.quorv",
        "allow prefix \"/a\" \"/bin/sh\" r \"\" \"\" \"0\"allow prefix \"/b\" \"/bin/sh\" r \"\" \"\" \"0\"\n"
        "allow prefix \"/c\" \"/bin/sh\" r \"\" \"\" \"0\"\n"));
    waitFor("Joined 1");
    choose("Joined 1");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a"));
    button("takeApartButton")->click();
    waitFor("Joined 2");
    choose("Joined 2");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b"));
}

} // namespace quorvane::windows
