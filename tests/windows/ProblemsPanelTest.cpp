#include "windows/ProblemsPanel.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/windows/EditorTable.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsModel.h"

#include <QAbstractItemModelTester>
#include <QDockWidget>
#include <QMenu>
#include <QSettings>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

namespace quorvane::windows {

namespace {

constexpr const char* faultyRules = "allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\n"
                                    "allow path \"/tmp/\" \"any\" r \"\" \"\" \"0\"\n"
                                    "deny path \"/nonexistent/a\" \"any\" w \"\" \"\" \"0\"\n"
                                    "deny path \"/nonexistent/b\" \"any\" w \"\" \"\" \"0\"\n";

class ProblemsPanelTest : public test::EditorTable {
protected:
    void openWith(const std::string& userRules)
    {
        open(userRules);
        panel = window->findChild<ProblemsPanel*>();
        ASSERT_NE(panel, nullptr);
        tree = panel->findChild<QTreeView*>();
        tester = std::make_unique<QAbstractItemModelTester>(
            tree->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    }
    ~ProblemsPanelTest() override { tester.reset(); }

    void showPanel()
    {
        dock()->show();
        awaitProblems();
    }
    QDockWidget* dock() const { return window->findChild<QDockWidget*>(QStringLiteral("problems")); }
    QString status() const { return panel->findChild<QLabel*>()->text(); }
    void awaitProblems()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !status().startsWith(QStringLiteral("Looking")); }));
    }
    // "Redundant (1): Any Process  /tmp/; ..."
    QString listed() const
    {
        QStringList kinds;
        const QAbstractItemModel& model = *tree->model();
        for (int kind = 0; kind < model.rowCount(); ++kind) {
            const QModelIndex top = model.index(kind, 0);
            QStringList names;
            for (int row = 0; row < model.rowCount(top); ++row)
                names.append(model.index(row, 0, top).data().toString().section(QStringLiteral("  "), 1));
            kinds.append(top.data().toString() + QStringLiteral(": ") + names.join(QLatin1Char(' ')));
        }
        return kinds.join(QStringLiteral("; "));
    }
    QAction* kind(const char* title) const
    {
        for (QAction* item : panel->findChild<QMenu*>()->actions()) {
            if (item->text() == QString::fromLatin1(title))
                return item;
        }
        return nullptr;
    }

    ProblemsPanel* panel = nullptr;
    QTreeView* tree = nullptr;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

} // namespace

TEST_F(ProblemsPanelTest, ListsProblemsByKindWithCounts)
{
    openWith(faultyRules);
    EXPECT_FALSE(dock()->isVisible());
    showPanel();
    EXPECT_EQ(
        listed(), QStringLiteral("Redundant (1): /tmp/; Path is gone (2): /nonexistent/a /nonexistent/b"));
    EXPECT_EQ(status(), QStringLiteral("3 problems."));
}

TEST_F(ProblemsPanelTest, SelectsTheRuleOfAProblemThatIsClicked)
{
    openWith(faultyRules);
    showPanel();
    in<QLineEdit>("searchField")->setText(QStringLiteral("tmp"));
    const QModelIndex second = tree->model()->index(1, 0, tree->model()->index(1, 0));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(second).center());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/b"));
}

TEST_F(ProblemsPanelTest, StepsThroughTheProblemsAndOnFromTheLastToTheFirst)
{
    openWith(faultyRules);
    action("nextProblemMenuItem")->trigger(); // nothing has been found yet
    ASSERT_TRUE(QTest::qWaitFor([this] { return selectedRows() == QList<int>{1}; }));
    action("nextProblemMenuItem")->trigger();
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/b"));
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedRows(), QList<int>{1});
    for (const int row : {3, 2, 1, 3}) {
        action("previousProblemMenuItem")->trigger();
        EXPECT_EQ(selectedRows(), QList<int>{row});
    }
}

TEST_F(ProblemsPanelTest, GoesOnWithWhatFollowsAProblemThatWasMended)
{
    openWith(faultyRules);
    showPanel();
    action("nextProblemMenuItem")->trigger();
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/a"));
    window->deleteRuleAction();
    ASSERT_TRUE(QTest::qWaitFor([this] { return status() == QStringLiteral("2 problems."); }));
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/b"));
}

TEST_F(ProblemsPanelTest, GoesOnFromTheChosenProblemWhereverItGoes)
{
    openWith(std::string(faultyRules) + "deny path \"/nonexistent/c\" \"any\" w \"\" \"\" \"0\"\n");
    showPanel();
    action("previousProblemMenuItem")->trigger();
    action("previousProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/b"));
    window->deleteRow(2);
    ASSERT_TRUE(QTest::qWaitFor([this] { return status() == QStringLiteral("3 problems."); }));
    EXPECT_TRUE(tree->currentIndex().data().toString().endsWith(QStringLiteral("/nonexistent/b")));
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/c"));
}

TEST_F(ProblemsPanelTest, OpensTheKindThatIsWantedAgainAndCountsIt)
{
    openWith(faultyRules);
    showPanel();
    kind("Path is gone")->trigger();
    EXPECT_EQ(status(), QStringLiteral("1 problem."));
    kind("Path is gone")->trigger();
    EXPECT_EQ(status(), QStringLiteral("3 problems."));
    EXPECT_TRUE(tree->isExpanded(tree->model()->index(1, 0)));
}

TEST_F(ProblemsPanelTest, SelectsByReturnAndIsWalkedByTab)
{
    openWith(faultyRules);
    showPanel();
    for (const char* title : {"&Kinds", "Look &Again"})
        EXPECT_EQ(button(*panel, QLatin1String(title))->focusPolicy(), Qt::StrongFocus) << title;
    EXPECT_EQ(tree->textElideMode(), Qt::ElideMiddle) << "the end of a path tells most";
    Q_EMIT tree->activated(tree->model()->index(0, 0, tree->model()->index(1, 0)));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/a"));
}

TEST_F(ProblemsPanelTest, LeavesOutKindsThatAreNotWantedThenAndTheNextTime)
{
    openWith(faultyRules);
    showPanel();
    kind("Path is gone")->trigger();
    EXPECT_EQ(listed(), QStringLiteral("Redundant (1): /tmp/"));
    RulesEditorTableController next(*document, application, run, workspace, log.log());
    auto* menu = next.findChild<ProblemsPanel*>()->findChild<QMenu*>();
    QStringList shown;
    for (const QAction* item : menu->actions()) {
        if (item->isChecked())
            shown.append(item->text());
    }
    EXPECT_EQ(shown.join(QStringLiteral(", ")),
        QStringLiteral(
            "Redundant, Program is gone or another, Does not read back, Several rules on one line, "
            "Team is not proven"));
    kind("Path is gone")->trigger();
}

TEST_F(ProblemsPanelTest, OpensItsKindsWithOneClick)
{
    openWith(faultyRules);
    showPanel();
    auto* menu = panel->findChild<QMenu*>();
    bool wasOpen = false;
    QTimer::singleShot(0, menu, [&] {
        wasOpen = menu->isVisible();
        menu->close();
    });
    QTest::mouseClick(button(*panel, QStringLiteral("&Kinds")), Qt::LeftButton);
    EXPECT_TRUE(wasOpen);
}

TEST_F(ProblemsPanelTest, FindsOverlapsWhenTheyAreWanted)
{
    openWith("allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\ndeny path \"/tmp/a\" \"any\" w \"\" \"\" "
             "\"0\"\n");
    showPanel();
    EXPECT_FALSE(listed().contains(QStringLiteral("Overlaps")));
    kind("Overlaps")->trigger();
    ASSERT_TRUE(
        QTest::qWaitFor([this] { return listed().contains(QStringLiteral("Overlaps (1): /tmp/a")); }));
    kind("Overlaps")->trigger();
    EXPECT_FALSE(listed().contains(QStringLiteral("Overlaps")));
}

TEST_F(ProblemsPanelTest, OffersToReviewTheRulesOfAJoinedLineThatIsChosen)
{
    openWith(
        "allow prefix \"/tmp/\" \"any\" r \"\" \"\" \"0\"deny path \"/usr\" \"any\" w \"\" \"\" \"0\"\n");
    showPanel();
    EXPECT_EQ(listed(), QStringLiteral("Several rules on one line (1): /tmp/"));
    EXPECT_EQ(notice(), QString());
    action("nextProblemMenuItem")->trigger();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/tmp/"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return !notice().isEmpty(); }));
    ASSERT_NE(button(*window, QStringLiteral("Review")), nullptr);
}

TEST_F(ProblemsPanelTest, LooksAtFilesAgainWhenAsked)
{
    const test::TemporaryFolder home;
    const test::EnvironmentVariable variable("HOME", home.path());
    openWith("allow path \"~/late\" \"any\" r \"\" \"\" \"0\"\n");
    showPanel();
    EXPECT_EQ(status(), QStringLiteral("1 problem."));
    home.write("late", "x");
    button(*panel, QStringLiteral("Look &Again"))->click();
    EXPECT_EQ(status(), QStringLiteral("Looking for problems..."));
    ASSERT_TRUE(QTest::qWaitFor([this] { return status() == QStringLiteral("No problems."); }));
}

TEST_F(ProblemsPanelTest, HasRoomForAProblemWhenItIsFirstShown)
{
    QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Vantreal"),
        QStringLiteral("Quorvane Configuration"))
        .clear();
    openWith(faultyRules);
    showPanel();
    EXPECT_GE(panel->width(), 240);
}

TEST_F(ProblemsPanelTest, SaysThatItIsStillLooking)
{
    openWith(faultyRules);
    dock()->show();
    EXPECT_EQ(status(), QStringLiteral("Looking for problems..."));
    awaitProblems();
    EXPECT_EQ(status(), QStringLiteral("3 problems."));
}

TEST_F(ProblemsPanelTest, ShowsLongListsAPartAtATime)
{
    std::string many;
    for (int rule = 0; rule < 1200; ++rule)
        many += "allow path \"/nonexistent/" + std::to_string(rule) + "\" \"any\" r \"\" \"\" \"0\"\n";
    openWith(many);
    tester.reset(); // the tree fetches more before the tester has heard of a reset
    showPanel();
    auto& model = *qobject_cast<ProblemsModel*>(tree->model());
    EXPECT_EQ(model.count(), 1200U);
    EXPECT_LT(model.rowCount(model.index(0, 0)), 1200);
    action("previousProblemMenuItem")->trigger(); // the last one
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 1200);
    EXPECT_TRUE(tree->viewport()->rect().intersects(tree->visualRect(tree->currentIndex()))) << "it is seen";
    EXPECT_EQ(selectedPaths(), QStringLiteral("/nonexistent/1199"));
}

} // namespace quorvane::windows
