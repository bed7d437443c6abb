#include "platform/FileLock.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "tests/windows/TableWindow.h"
#include "windows/BackgroundThread.h"
#include "windows/RulesEditorTableController.h"
#include "workflow/RuleCells.h"

#include <QLineEdit>

#include <future>

// The main window with so many rules that sorts and searches are computed on another thread, which reads and
// writes their file as well.

namespace quorvane::windows {

namespace {

class ManyRows : public test::TableWindow<RulesEditorTableController, workflow::RuleColumn> {
protected:
    static constexpr int rules = 21'000;

    ManyRows()
    {
        for (int number = 0; number < rules; ++number)
            store.addPolicyRule(test::policyRule({.path = pathOf(number), .processName = "/bin/sh"}));
        window
            = std::make_unique<RulesEditorTableController>(document, application, run, workspace, log.log());
        show();
        search = in<QLineEdit>("searchField");
    }
    ~ManyRows() override { window.reset(); } // before the document

    // In stored order no path stands where it does when sorted.
    static std::string pathOf(int number) { return "/" + std::to_string(10 * rules - 1 - number); }
    QString pathAt(int row) const { return text(row, workflow::RuleColumn::path); }
    rules::RuleRef ruleAt(int row) const
    {
        return store.storedRows()->at(static_cast<std::size_t>(row), true);
    }

    rules::RuleManager store{platform::Locations("/root", "ann"), test::silentLog()};
    test::TestDocument document{store, run};
    QLineEdit* search = nullptr;
};

class ManyRowsOfAFile : public test::TableWindow<RulesEditorTableController, workflow::RuleColumn> {
protected:
    static constexpr int rules = 21'000;

    ManyRowsOfAFile()
    {
        box.writeUserRules(lines());
        store = box.load();
        document = std::make_unique<workflow::RulesDocument>(*store, run,
            workflow::DocumentOwner{
                .program = "test", .stateFolder = box.folder.path("state"), .background = &background},
            test::silentLog());
        window
            = std::make_unique<RulesEditorTableController>(*document, application, run, workspace, log.log());
        show();
    }
    ~ManyRowsOfAFile() override { window.reset(); } // before the document

    static std::string lines()
    {
        std::string text;
        for (int number = 0; number < rules; ++number)
            text += test::fileLine("/" + std::to_string(number));
        return text;
    }
    void addAsAnotherProgram(const std::string& path)
    {
        box.writeUserRules(test::fileLine(path) + lines());
        document->takeForeignChanges();
    }
    bool waitForTheDocument() const
    {
        return QTest::qWaitFor([this] { return !document->isWorking(); }, 60'000);
    }
    QString pathAt(int row) const { return text(row, workflow::RuleColumn::path); }
    // Another process that writes the file, until the result is destroyed.
    platform::FileLock writer() const
    {
        return platform::FileLock::take(
            box.locations.userRulesFile(), platform::LockMode::exclusive, std::chrono::seconds(1));
    }
    bool waitForCounts(const QString& expected) const
    {
        return QTest::qWaitFor([&] { return counts() == expected; }, 60'000);
    }

    test::StoreSandbox box;
    std::unique_ptr<rules::RuleManager> store;
    BackgroundThread background;
    std::unique_ptr<workflow::RulesDocument> document;
};

} // namespace

TEST_F(ManyRows, KeepTheirOrderUntilTheNewOneIsComputed)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));

    EXPECT_EQ(pathAt(0), QStringLiteral("/209999"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return pathAt(0) == QStringLiteral("/189000"); }));
    EXPECT_EQ(pathAt(rules - 1), QStringLiteral("/209999"));
}

TEST_F(ManyRows, ShowTheLastOfTheTextsThatAreTypedMeanwhile)
{
    for (const char* typed : {"2", "20", "209", "2099", "20999", "209998"})
        search->setText(QString::fromLatin1(typed));

    EXPECT_EQ(table->model()->rowCount(), rules);
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() != rules; }));
    EXPECT_EQ(shownPaths(), QStringLiteral("/209998"));
    EXPECT_EQ(counts(), QStringLiteral("1 of 21,000 rules shown"));
}

TEST_F(ManyRows, OfASortThatTheSearchOvertookAreSortedAll)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    search->setText(QStringLiteral("19999"));

    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() != rules; }));
    EXPECT_EQ(shownPaths(),
        QStringLiteral("/199990 /199991 /199992 /199993 /199994 /199995 /199996 /199997 "
                       "/199998 /199999"));
}

TEST_F(ManyRows, KeepSelectionAndTheRuleOfACommandGivenMeanwhile)
{
    select({7});
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    window->deleteRow(3);

    EXPECT_EQ(store.storedRules(), rules - 1U);
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules - 1; }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/209992"));
    EXPECT_EQ(pathAt(rules - 2), QStringLiteral("/209999"));
    EXPECT_EQ(pathAt(rules - 5), QStringLiteral("/209995")); // /209996 is gone
}

TEST_F(ManyRows, RevealARuleThatTheSearchHides)
{
    search->setText(QStringLiteral("209998"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == 1; }));

    window->revealRule(ruleAt(5));

    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules; }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/209994"));
}

TEST_F(ManyRows, AreSelectedWhenTheyAreShown)
{
    search->setText(QStringLiteral("209998"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == 1; }));

    search->setText(QStringLiteral("20999"));
    window->selectRules({ruleAt(5), ruleAt(7)});

    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == 10; }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/209994 /209992"));
}

TEST_F(ManyRows, AreNoLongerComputedWhenTheWindowCloses)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    window.reset();
    QApplication::processEvents();
    EXPECT_EQ(store.ruleAtIndex(0, false), ruleAt(rules - 1));
}

TEST_F(ManyRowsOfAFile, StayInUseWhileWhatAnotherProgramHasWrittenIsRead)
{
    select({7});
    addAsAnotherProgram("/foreign");
    EXPECT_TRUE(document->isWorking());
    EXPECT_EQ(pathAt(0), QStringLiteral("/0"));
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));

    ASSERT_TRUE(waitForTheDocument());
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules + 1; }));
    EXPECT_EQ(pathAt(rules), QStringLiteral("/foreign"));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/7"));
    EXPECT_EQ(counts(), QStringLiteral("21,001 of 21,001 rules shown"));
}

TEST_F(ManyRowsOfAFile, HaveACountThatSaysWhenReadingTheFileTakesLong)
{
    box.writeUserRules(lines() + test::fileLine("/foreign"));
    platform::FileLock lock = writer();
    document->takeForeignChanges();
    EXPECT_EQ(counts(), QStringLiteral("21,000 of 21,000 rules shown"));
    EXPECT_TRUE(waitForCounts(QStringLiteral("21,000 of 21,000 rules shown, reading the file\u2026")));
    lock = platform::FileLock();
    EXPECT_TRUE(waitForCounts(QStringLiteral("21,001 of 21,001 rules shown")));
}

TEST_F(ManyRowsOfAFile, HaveACountThatSaysWhenWritingTheFileTakesLong)
{
    platform::FileLock lock = writer();
    window->deleteRow(3);
    EXPECT_TRUE(waitForCounts(QStringLiteral("20,999 of 20,999 rules shown, writing the file\u2026")));
    lock = platform::FileLock();
    EXPECT_TRUE(waitForCounts(QStringLiteral("20,999 of 20,999 rules shown")));
    EXPECT_EQ(document->failure(), std::nullopt);
}

TEST_F(ManyRowsOfAFile, HaveACountThatSaysWhenAnUndoneActionOfAnEarlierRunTakesLong)
{
    window->deleteRow(3);
    ASSERT_TRUE(waitForTheDocument());
    document->forgetSteps();
    std::promise<void> goesOn;
    background.run([&goesOn] { goesOn.get_future().wait(); }, [] {});
    window->undo();
    EXPECT_TRUE(waitForCounts(QStringLiteral("20,999 of 20,999 rules shown, reading the history\u2026")));
    goesOn.set_value();
    EXPECT_TRUE(waitForCounts(QStringLiteral("21,000 of 21,000 rules shown")));
    ASSERT_TRUE(waitForTheDocument());
    EXPECT_EQ(document->failure(), std::nullopt);
}

TEST_F(ManyRowsOfAFile, KeepATagGivenWhileWhatAnotherProgramHasWrittenIsRead)
{
    select({7});
    addAsAnotherProgram("/foreign");
    window->tableViewCellAction(QStringLiteral("mine"));

    ASSERT_TRUE(waitForTheDocument());
    const std::string text = test::TemporaryFolder::contents(box.locations.userRulesFile());
    EXPECT_NE(text.find("\"/foreign\""), std::string::npos);
    EXPECT_NE(text.find("\"/7\" \"/bin/sh\" r \"mine\""), std::string::npos);
    EXPECT_EQ(table->model()->rowCount(), rules + 1);
}

} // namespace quorvane::windows
