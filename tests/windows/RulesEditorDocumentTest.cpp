#include "windows/RulesEditorTableController.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/windows/EditorTable.h"
#include "windows/HistoryWindow.h"
#include "windows/ImportWindowController.h"
#include "windows/QtText.h"
#include "windows/SettingsWindow.h"
#include "workflow/RuleCells.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesHistory.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>

#include <string>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::windows {

namespace {

std::string line(const std::string& path, const std::string& tag = "", const std::string& created = "0")
{
    return "allow prefix \"" + path + "\" \"/bin/sh\" r \"" + tag + "\" \"\" \"" + created + "\"\n";
}

class RulesEditorDocument : public test::EditorTable {
protected:
    // As an import does when a search hides the other one.
    void addEqual(const std::string& path, const std::string& tag)
    {
        document->perform(workflow::additionOf(test::policyRule({.path = path,
                              .processName = "/bin/sh",
                              .tag = tag,
                              .operations = 1,
                              .created = 1'700'000'000})),
            {"Test"});
        window->reloadData();
    }
    QString buttons() const
    {
        QStringList titles;
        for (const QPushButton* button : noticeButtons())
            titles.append(button->text());
        return titles.join(QLatin1Char(' '));
    }
    QList<QPushButton*> noticeButtons() const
    {
        QList<QPushButton*> shown;
        for (QPushButton* button : in<QFrame>("notices")->findChildren<QPushButton*>()) {
            if (!button->isHidden())
                shown.append(button);
        }
        return shown;
    }
    void press(const char* title) const
    {
        for (QPushButton* button : noticeButtons()) {
            if (button->text() == QLatin1String(title))
                return button->click();
        }
        FAIL() << title;
    }
    HistoryWindow* history() const { return window->findChild<HistoryWindow*>(); }
    // The version that the history window has compared.
    bool showsVersion(const char* beginning) const
    {
        return QTest::qWaitFor([&] {
            return history() != nullptr
                && history()
                       ->findChild<QLabel*>(QStringLiteral("differenceLabel"))
                       ->text()
                       .startsWith(QLatin1String(beginning));
        });
    }
};

} // namespace

TEST_F(RulesEditorDocument, TheMenuShowsTheHistoryInOneWindow)
{
    open(line("/a") + line("/b"));
    action("historyMenuItem")->trigger();
    action("historyMenuItem")->trigger();
    EXPECT_EQ(window->findChildren<HistoryWindow*>().size(), 1);
    EXPECT_TRUE(showsVersion("Version 1, the first: 2 rules added"));
}

TEST_F(RulesEditorDocument, TheHistoryLetsOneChooseAmongTheHistoriesOfAllFiles)
{
    open(line("/a"));
    workflow::RulesHistory another(*document);
    window->addHistory(another);
    action("historyMenuItem")->trigger();
    EXPECT_EQ(history()->findChild<QComboBox*>()->count(), 2);
    window.reset(); // it uses the history
}

TEST_F(RulesEditorDocument, ARestoreInTheHistoryReachesTheTableAndItsUndoToo)
{
    open(line("/a") + line("/b"));
    select({0});
    action("deleteEditMenuItem")->trigger();
    EXPECT_EQ(shownPaths(), QStringLiteral("/b"));
    action("historyMenuItem")->trigger();
    EXPECT_TRUE(showsVersion("Version 2 "));
    history()->showVersionFrom(1);
    EXPECT_TRUE(showsVersion("Version 1, "));
    history()->restoreVersion();
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b"));
    Q_EMIT history()->undoRequested();
    EXPECT_EQ(shownPaths(), QStringLiteral("/b"));
    EXPECT_EQ(file(), line("/b"));
}

TEST_F(RulesEditorDocument, OfTwoEqualRulesTheFootTellsWhichOneRemains)
{
    open(line("/a", "first") + line("/b"));
    addEqual("/a", "second");
    select({2});
    action("deleteEditMenuItem")->trigger();
    EXPECT_EQ(notice(),
        QStringLiteral("Of two equal rules the first was deleted. The selected one remains: tagged "
                       "\u201csecond\u201d, made 2023-11-14 22:13:20 UTC."));
    EXPECT_EQ(buttons(), QStringLiteral("Show Undo"));
    press("Undo");
    EXPECT_EQ(file(), line("/a", "first") + line("/b") + line("/a", "second", "1700000000"));
}

TEST_F(RulesEditorDocument, ShowSelectsTheOneThatRemainsOfTwoEqualRules)
{
    open(line("/a", "first") + line("/b"));
    addEqual("/a", "second");
    select({2});
    action("deleteEditMenuItem")->trigger();
    table->clearSelection();
    press("Show");
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a"));
    EXPECT_EQ(table->selectedRows().size(), 1U);
}

TEST_F(RulesEditorDocument, TheFirstOfTwoEqualRulesGoesWithoutAWord)
{
    open(line("/a", "first"));
    addEqual("/a", "second");
    select({0});
    action("deleteEditMenuItem")->trigger();
    EXPECT_TRUE(in<QFrame>("notices")->isHidden());
    select({0});
    action("deleteEditMenuItem")->trigger();
    EXPECT_TRUE(in<QFrame>("notices")->isHidden());
    EXPECT_EQ(file(), "");
}

TEST_F(RulesEditorDocument, ShowOfAMergeLeadsToTheOtherProgramsVersion)
{
    open(line("/a") + line("/b"));
    document->keepPresentVersion();
    box.writeUserRules(line("/a") + line("/b") + line("/foreign"));
    select({0});
    action("deleteEditMenuItem")->trigger();
    EXPECT_EQ(notice(), QStringLiteral("1 rule of another program was kept."));
    press("Show");
    EXPECT_TRUE(showsVersion("Version 2 compared with version 1: 1 rule added"));
}

TEST_F(RulesEditorDocument, ALossIsShownAndRestoredFromTheFoot)
{
    open(line("/a") + line("/b"));
    document->keepPresentVersion();
    box.writeUserRules(line("/b"));
    document->takeForeignChanges();
    EXPECT_EQ(notice(), QStringLiteral("Another program has removed 1 rule."));
    EXPECT_EQ(buttons(), QStringLiteral("Show Restore"));
    press("Restore");
    EXPECT_EQ(file(), line("/a") + line("/b"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b"));
}

TEST_F(RulesEditorDocument, AFileThatIsAheadIsToldUntilItIsTakenOver)
{
    open(line("/a"));
    box.writeUserRules(line("/a") + line("/foreign"));
    document->lookAtFile();
    EXPECT_EQ(notice(),
        QStringLiteral("Another program has changed the rules file. The next change here takes that over."));
    EXPECT_EQ(shownPaths(), QStringLiteral("/a"));
    press("Take Over Now");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /foreign"));

    box.writeUserRules(line("/a") + line("/foreign") + line("/more"));
    document->lookAtFile();
    select({0});
    action("deleteEditMenuItem")->trigger();
    EXPECT_EQ(notice(), QStringLiteral("1 rule of another program was kept."));
    EXPECT_EQ(in<FootNotices>("notices")->count(), 1U) << "the file is no longer ahead";
}

TEST_F(RulesEditorDocument, WholeLinesAreWrittenOnRequest)
{
    open(line("/a"));
    store->addPolicyRule(test::policyRule({.path = "/K\u00e4se", .processName = "/bin/sh", .operations = 1}));
    document->perform({}, {"Test"});
    EXPECT_EQ(buttons(), QStringLiteral("Show Write Whole Lines"));
    press("Write Whole Lines");
    EXPECT_EQ(file(), line("/a") + line("/K\u00e4se"));
}

TEST_F(RulesEditorDocument, SaysWhenWholeLinesCannotBeKeptInTheSettings)
{
    const test::TemporaryFolder folder;
    const test::EnvironmentVariable noFolder("XDG_CONFIG_HOME", folder.write("file", ""));
    open(line("/a"));
    store->addPolicyRule(test::policyRule({.path = "/K\u00e4se", .processName = "/bin/sh", .operations = 1}));
    document->perform({}, {"Test"});
    press("Write Whole Lines");
    EXPECT_EQ(file(), line("/a") + line("/K\u00e4se"));
    EXPECT_TRUE(notice().startsWith(toQt(folder.path("file")))) << fromQt(notice());
}

TEST_F(RulesEditorDocument, WholeLinesAreNoLongerOfferedOnceTheSettingsSayThem)
{
    open(line("/a"));
    store->addPolicyRule(test::policyRule({.path = "/K\u00e4se", .processName = "/bin/sh", .operations = 1}));
    document->perform({}, {"Test"});
    ASSERT_EQ(in<FootNotices>("notices")->count(), 1U);
    action("settingsMenuItem")->trigger();
    auto* settings = window->findChild<SettingsWindow*>();
    settings->findChild<QCheckBox*>(QStringLiteral("wholeLinesCheckBox"))->setChecked(true);
    settings->save();
    EXPECT_EQ(in<FootNotices>("notices")->count(), 0U);
}

TEST_F(RulesEditorDocument, JoinedLinesOfTheRulesFileAreReviewedAndImportedAsWholeRules)
{
    const std::string first = "allow prefix \"/a\" \"/no/such\" r \"\" \"\" \"0\"";
    const std::string second = "deny path \"/b\" \"/no/such\" w \"\" \"\" \"0\"";
    open(first + second + "\n");
    EXPECT_EQ(shownPaths(), QStringLiteral("/a"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !in<QFrame>("notices")->isHidden(); }));
    EXPECT_EQ(notice(),
        QStringLiteral("1 line of the rules file holds several rules, of which the first alone counts."));
    press("Review");
    auto* review = window->findChild<ImportWindowController*>();
    ASSERT_NE(review, nullptr);
    review->importAction();
    EXPECT_EQ(shownPaths(), QStringLiteral("/a /b"));
    EXPECT_EQ(file(), first + "\n" + second + "\n") << "without a tag of the file's name";
    EXPECT_EQ(document->undoName(), "Take Joined Lines Apart");
}

TEST_F(RulesEditorDocument, JoinedLinesAreCounted)
{
    const std::string joined = "allow prefix \"/a\" \"/no/such\" r \"\" \"\" \"0\""
                               "deny path \"/b\" \"/no/such\" w \"\" \"\" \"0\"\n";
    open(joined + "deny path \"/c\" \"/no/such\" w \"\" \"\" \"0\"" + joined);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !in<QFrame>("notices")->isHidden(); }));
    EXPECT_EQ(notice(),
        QStringLiteral(
            "2 lines of the rules file hold several rules each, of which the first alone counts."));
}

TEST_F(RulesEditorDocument, SettingsAreOneWindowAndTakeEffectAtOnce)
{
    open(line("/a"));
    action("settingsMenuItem")->trigger();
    action("settingsMenuItem")->trigger();
    ASSERT_EQ(window->findChildren<SettingsWindow*>().size(), 1);
    auto* settings = window->findChild<SettingsWindow*>();
    settings->findChild<QCheckBox*>(QStringLiteral("wholeLinesCheckBox"))->setChecked(true);
    settings->save();
    EXPECT_TRUE(document->settings().wholeLines);
    document->perform(workflow::additionOf(test::policyRule(
                          {.path = "/K\u00e4se", .processName = "/bin/sh", .operations = 1})),
        {"Test"});
    EXPECT_EQ(file(), line("/a") + line("/K\u00e4se"));
}

TEST_F(RulesEditorDocument, SettingsThatCouldNotBeUsedAreToldWithAWayToThem)
{
    open(line("/a"));
    window->showSettingsProblem(QStringLiteral("line 2 could not be used"));
    EXPECT_EQ(notice(), QStringLiteral("line 2 could not be used"));
    press("Settings...");
    EXPECT_NE(window->findChild<SettingsWindow*>(), nullptr);
}

TEST_F(RulesEditorDocument, TheFootSaysWhenThereIsNothingToUndoOrRedo)
{
    open(line("/a"));
    action("undoMenuItem")->trigger();
    EXPECT_EQ(notice(), QStringLiteral("There is nothing to undo."));
    action("redoMenuItem")->trigger();
    EXPECT_EQ(notice(), QStringLiteral("There is nothing to redo."));
    EXPECT_EQ(file(), line("/a"));
}

TEST_F(RulesEditorDocument, WhatAnotherProgramWritesReachesTheTableByItself)
{
    open(line("/a"));
    // Whole seconds tell the watch of a change, so each of its looks finds another one.
    time_t second = 1'000'000'000;
    const auto reachesTheTable = [&](const QString& paths) {
        return QTest::qWaitFor(
            [&] {
                const timespec time{++second, 0};
                const timespec times[2] = {time, time};
                utimensat(AT_FDCWD, box.locations.userRulesFile().c_str(), times, 0);
                return shownPaths() == paths;
            },
            60'000);
    };
    box.writeUserRules(line("/a") + line("/b"));
    EXPECT_TRUE(reachesTheTable(QStringLiteral("/a /b")));
    box.writeUserRules(line("/b"));
    EXPECT_TRUE(reachesTheTable(QStringLiteral("/b")));
}

} // namespace quorvane::windows
