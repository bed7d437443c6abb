#include "windows/CleanUpWindow.h"
#include "tests/windows/EditorTable.h"
#include "windows/CleanUpModel.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsPanel.h"
#include "workflow/RuleEdits.h"

#include <QAbstractItemModelTester>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>

namespace quorvane::windows {

namespace {

constexpr const char* rules = "allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\n"
                              "allow path \"/tmp/\" \"any\" r \"\" \"\" \"0\"\n"
                              "deny path \"/nonexistent/a\" \"any\" w \"\" \"\" \"0\"\n"
                              "deny path \"/Volumes/none/b\" \"any\" w \"\" \"\" \"0\"\n";

class CleanUpWindowTest : public test::EditorTable {
protected:
    void openWith(const std::string& userRules)
    {
        open(userRules);
        action("cleanUpMenuItem")->trigger();
        cleanUp = window->findChild<CleanUpWindow*>();
        ASSERT_NE(cleanUp, nullptr);
        EXPECT_EQ(count(), QStringLiteral("Looking for rules that can go..."));
        list = cleanUp->findChild<QTreeView*>();
        QAbstractItemModelTester(list->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !count().startsWith(QStringLiteral("Looking")); }));
    }
    QString count() const { return cleanUp->findChild<QLabel*>(QStringLiteral("countLabel"))->text(); }
    // "+" for each that is ticked, "-" for each that is not.
    QString ticks() const
    {
        QString ticks;
        for (int row = 0; row < list->model()->rowCount(); ++row)
            ticks += list->model()->index(row, 0).data(Qt::CheckStateRole) == Qt::Checked ? QLatin1Char('+')
                                                                                          : QLatin1Char('-');
        return ticks;
    }

    CleanUpWindow* cleanUp = nullptr;
    QTreeView* list = nullptr;
};

} // namespace

TEST_F(CleanUpWindowTest, TicksWhatCanGoAndSaysWhy)
{
    openWith(rules);
    EXPECT_EQ(ticks(), QStringLiteral("+-+"));
    EXPECT_EQ(count(), QStringLiteral("2 of 3 ticked."));
    const auto cellText
        = [this](int row, int column) { return list->model()->index(row, column).data().toString(); };
    EXPECT_EQ(cellText(0, CleanUpModel::rule), QStringLiteral("No program may write /nonexistent/a."));
    EXPECT_EQ(
        cellText(0, CleanUpModel::reason), QStringLiteral("Path is gone: nothing exists at /nonexistent/a."));
    EXPECT_EQ(cellText(1, CleanUpModel::doubt), QStringLiteral("on a volume that is not mounted"));
}

TEST_F(CleanUpWindowTest, ShowsAtOnceWhatIsKnownAlready)
{
    open(rules);
    ProblemsFinder& finder = window->findChild<ProblemsPanel*>()->finder();
    finder.start();
    ASSERT_TRUE(QTest::qWaitFor([&finder] { return !finder.isLooking(); }));
    action("cleanUpMenuItem")->trigger();
    cleanUp = window->findChild<CleanUpWindow*>();
    EXPECT_TRUE(QTest::qWaitFor([this] { return count() == QStringLiteral("2 of 3 ticked."); }));
}

TEST_F(CleanUpWindowTest, LeavesOneOfTwoEqualRulesUnticked)
{
    open("allow prefix \"/tmp/\" \"any\" r \"\" \"\" \"0\"\n");
    document->perform(
        workflow::additionOf(test::policyRule({.path = "/tmp/", .processName = "any", .operations = 1})),
        {"Test"});
    window->reloadData();
    action("cleanUpMenuItem")->trigger();
    cleanUp = window->findChild<CleanUpWindow*>();
    EXPECT_TRUE(QTest::qWaitFor([this] { return count() == QStringLiteral("1 of 2 ticked."); }))
        << count().toStdString();
}

TEST_F(CleanUpWindowTest, SaysWhatItIsFor)
{
    openWith(rules);
    EXPECT_EQ(cleanUp->windowTitle(), QStringLiteral("Clean Up"));
    EXPECT_EQ(list->accessibleName(), QStringLiteral("Rules that can go"));
    QStringList texts;
    for (const auto* label : cleanUp->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly))
        texts.append(label->text());
    EXPECT_TRUE(texts.contains(
        QStringLiteral("These rules have nothing to do. What is ticked goes, in one step that Undo "
                       "takes back; what might be wanted again is not ticked.")))
        << texts.join(QLatin1Char('|')).toStdString();
}

TEST_F(CleanUpWindowTest, HasTheSizeThatItWasGivenTheLastTime)
{
    openWith(rules);
    EXPECT_EQ(cleanUp->size(), QSize(820, 460)) << "the first time";
    cleanUp->resize(700, 400);
    cleanUp->reject();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<CleanUpWindow*>() == nullptr; }));
    action("cleanUpMenuItem")->trigger();
    cleanUp = window->findChild<CleanUpWindow*>();
    EXPECT_EQ(cleanUp->size(), QSize(700, 400));
    cleanUp->resize(820, 460);
}

TEST_F(CleanUpWindowTest, SaysThatMemoryDoesNotSuffice)
{
    openWith(rules);
    Q_EMIT window->findChild<ProblemsPanel*>()->finder().found({});
    EXPECT_EQ(count(), QStringLiteral("There is not enough memory to find them."));
}

TEST_F(CleanUpWindowTest, RemovesTheTickedRulesInOneStepOfUndo)
{
    openWith(rules);
    const std::string before = file();
    button(*cleanUp, QStringLiteral("&Clean Up"))->click();
    EXPECT_EQ(file(),
        "allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\ndeny path \"/Volumes/none/b\" \"any\" w \"\" "
        "\"\" \"0\"\n");
    EXPECT_EQ(document->undoName(), "Clean Up 2 Rules");
    window->undo();
    EXPECT_EQ(file(), before);
}

TEST_F(CleanUpWindowTest, OpensWithTheKeyboardInItsListAndCleansUpByReturn)
{
    openWith(rules);
    EXPECT_EQ(cleanUp->focusWidget(), list);
    EXPECT_EQ(list->currentIndex(), list->model()->index(0, CleanUpModel::rule));
    button(*cleanUp, QStringLiteral("Tick &All"))->setFocus();
    const std::string before = file();
    QTest::keyClick(cleanUp->focusWidget(), Qt::Key_Return);
    EXPECT_NE(file(), before) << "and not what ticks all of them";
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<CleanUpWindow*>() == nullptr; }));
}

TEST_F(CleanUpWindowTest, ChangesNothingWhenItIsLeft)
{
    openWith(rules);
    const std::string before = file();
    button(*cleanUp, QStringLiteral("Cancel"))->click();
    EXPECT_EQ(file(), before);
}

TEST_F(CleanUpWindowTest, KeepsTicksThatWereChangedWhenRulesChange)
{
    openWith(rules);
    QSignalSpy filled(cleanUp, &CleanUpWindow::wasFilled);
    list->model()->setData(list->model()->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    list->model()->setData(list->model()->index(1, 0), Qt::Checked, Qt::CheckStateRole);
    EXPECT_EQ(ticks(), QStringLiteral("-++"));
    window->deleteRow(1);
    ASSERT_TRUE(filled.wait());
    EXPECT_EQ(ticks(), QStringLiteral("-+"));
    EXPECT_EQ(count(), QStringLiteral("1 of 2 ticked."));
}

TEST_F(CleanUpWindowTest, CanOnlyBeCarriedOutWithATick)
{
    openWith(rules);
    button(*cleanUp, QStringLiteral("Tick &None"))->click();
    EXPECT_FALSE(button(*cleanUp, QStringLiteral("&Clean Up"))->isEnabled());
    button(*cleanUp, QStringLiteral("Tick &All"))->click();
    EXPECT_EQ(ticks(), QStringLiteral("+++"));
    EXPECT_TRUE(button(*cleanUp, QStringLiteral("&Clean Up"))->isEnabled());
}

TEST_F(CleanUpWindowTest, SaysWhenThereIsNothingToCleanUp)
{
    openWith("allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\n");
    EXPECT_EQ(count(), QStringLiteral("There is nothing to clean up."));
}

} // namespace quorvane::windows
