#include "windows/RuleStrip.h"
#include "tests/windows/EditorTable.h"
#include "windows/ChangeWindow.h"
#include "windows/EditWatchWindowController.h"
#include "windows/ProblemList.h"
#include "windows/SelectableText.h"
#include "windows/Shades.h"

#include <QDockWidget>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <string>
#include <system_error>

namespace quorvane::windows {

namespace {

class RuleStripTest : public test::EditorTable {
protected:
    void openWith(const std::string& userRules)
    {
        open(userRules);
        strip = window->findChild<RuleStrip*>();
        ASSERT_NE(strip, nullptr);
    }
    void fill(std::initializer_list<int> rows)
    {
        QSignalSpy filled(strip, &RuleStrip::wasFilled);
        select(rows);
        ASSERT_TRUE(filled.wait());
        while (filled.wait(0)) { }
    }
    QStringList shown() const
    {
        QStringList texts;
        for (const auto* text : strip->findChildren<SelectableText*>()) {
            if (text->isVisible())
                texts.append(text->toPlainText());
        }
        return texts;
    }
    void press(const char* title)
    {
        QAbstractButton* found = button(*strip, QString::fromLatin1(title));
        ASSERT_NE(found, nullptr) << title;
        found->click();
    }
    RuleStrip* strip = nullptr;
};

} // namespace

TEST_F(RuleStripTest, SaysWhatTheSelectedRuleSays)
{
    openWith("watch prefix \"/tmp/\" \"any\" x \"scripts\"\n");
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Select a rule to read here what it says.")});
    fill({0});
    EXPECT_EQ(shown(),
        (QStringList{QStringLiteral("It is reported when any program executes anything in /tmp/."),
            QStringLiteral("tag scripts")}));
}

TEST_F(RuleStripTest, CountsSeveralRules)
{
    openWith("watch prefix \"/tmp/\" \"any\" x \"\"\nallow prefix \"/tmp/\" \"any\" r \"\" \"\" \"0\"\n");
    fill({0, 1});
    EXPECT_EQ(shown().value(0), QStringLiteral("2 rules: 1 allow, 1 watch. Program: Any Process."));
    press("Delete");
    EXPECT_EQ(shownPaths(), QString());
}

TEST_F(RuleStripTest, ShowsTheRuleThatCoversASelectedOne)
{
    openWith("allow prefix \"/tmp/\" \"any\" rw \"\" \"\" \"0\"\nallow path \"/tmp/a\" \"any\" r \"\" \"\" "
             "\"0\"\n");
    fill({1});
    EXPECT_TRUE(
        shown().contains(QStringLiteral("Covered by: Any program may read and write anything in /tmp/.")));
    press("Show");
    EXPECT_EQ(selectedPaths(), QStringLiteral("/tmp/"));
}

TEST_F(RuleStripTest, DeletesTheVeryRuleThatIsCovered)
{
    // Of equal rules a delete would take the first.
    openWith("allow prefix \"/tmp/\" \"any\" r \"first\" \"\" \"0\"\n");
    const auto second
        = test::policyRule({.path = "/tmp/", .processName = "any", .tag = "second", .operations = 1});
    store->addPolicyRule(second);
    window->reloadData();
    fill({1});
    press("Delete This One");
    EXPECT_EQ(text(0, workflow::RuleColumn::tag), QStringLiteral("first"));
    EXPECT_EQ(file(), "allow prefix \"/tmp/\" \"any\" r \"first\" \"\" \"0\"\n");
}

TEST_F(RuleStripTest, OffersNothingThatWouldChangeASystemRule)
{
    box.writeSystemFile(
        "quorvane.rc", "allow prefix \"/tmp/\" \"any\" rw \"\"\nallow path \"/tmp/a\" \"any\" r \"\"\n");
    openWith("");
    window->hideSystemAction();
    fill({1});
    EXPECT_NE(button(*strip, QStringLiteral("Show")), nullptr);
    EXPECT_EQ(button(*strip, QStringLiteral("Delete This One")), nullptr);
}

TEST_F(RuleStripTest, NamesItsTextsToScreenReaders)
{
    openWith("watch prefix \"/tmp/\" \"any\" x \"scripts\"\n");
    EXPECT_EQ(strip->accessibleName(), QStringLiteral("Rule in words"));
    QStringList names;
    for (const auto* text : strip->findChildren<SelectableText*>())
        names.append(text->accessibleName());
    EXPECT_EQ(names.join(QLatin1Char('|')), QStringLiteral("What the rule says|Details of the rule"));
    EXPECT_EQ(strip->findChild<ProblemList*>()->accessibleName(), QStringLiteral("Problems of the rule"));
}

TEST_F(RuleStripTest, LeavesTheKeyboardToTheTable)
{
    openWith("watch prefix \"/tmp/\" \"any\" x \"scripts\"\n");
    table->setFocus();
    QTest::mouseClick(strip->viewport(), Qt::LeftButton);
    EXPECT_TRUE(table->hasFocus());
}

TEST_F(RuleStripTest, ShowsTheProgramOfOneRuleByItsIcon)
{
    openWith(
        "watch prefix \"/tmp/\" \"/nonexistent\" x \"\"\nwatch prefix \"/tmp/\" \"/usr/bin/env\" x \"\"\n");
    const auto* icon = strip->findChild<QLabel*>();
    EXPECT_FALSE(icon->isVisible());
    fill({0});
    ASSERT_TRUE(icon->isVisible());
    const QImage missing = icon->pixmap().toImage();
    fill({1});
    EXPECT_NE(icon->pixmap().toImage(), missing);
    fill({0, 1});
    EXPECT_FALSE(icon->isVisible());
    fill({1});
    EXPECT_TRUE(icon->isVisible());
    QSignalSpy filled(strip, &RuleStrip::wasFilled);
    table->clearSelection();
    ASSERT_TRUE(filled.wait());
    EXPECT_FALSE(icon->isVisible());
    EXPECT_EQ(shown(), QStringList{QStringLiteral("Select a rule to read here what it says.")});
}

TEST_F(RuleStripTest, TellsAHintFromWhatARuleSaysByItsShade)
{
    openWith("watch prefix \"/tmp/\" \"any\" x \"scripts\"\nwatch prefix \"/usr/\" \"any\" x \"\"\n");
    const auto shade = [this](qsizetype place) {
        return strip->findChildren<SelectableText*>()[place]->palette().color(QPalette::Text);
    };
    EXPECT_EQ(shade(0), shades::faintText.in({}));
    fill({0});
    EXPECT_EQ(shade(0), shades::text.in({}));
    EXPECT_EQ(shade(1), shades::faintText.in({})) << "its details";
    table->clearSelection();
    fill({0, 1});
    EXPECT_EQ(shade(0), shades::text.in({}));
}

TEST_F(RuleStripTest, FindsTheFormerProgramThatStartedAnother)
{
    openWith("deny path \"any\" \"/bin/sh via /nonexistent/old\" r \"\" \"\" \"0\"\n");
    fill({0});
    press("Choose...");
    auto* preview = window->findChild<ChangeWindow*>();
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->findChild<QLineEdit*>()->text(), QStringLiteral("/nonexistent/old"));
}

TEST_F(RuleStripTest, DeletesARuleThatIsForNothing)
{
    openWith("allow path \"/nonexistent\" \"any\" r \"\" \"\" \"0\"\n");
    fill({0});
    press("Delete");
    EXPECT_EQ(file(), "");
}

TEST_F(RuleStripTest, HasNoButtonsOfTheRuleThatWasSelectedBefore)
{
    openWith("allow path \"/nonexistent\" \"any\" r \"\" \"\" \"0\"\n"
             "watch prefix \"/tmp/\" \"any\" x \"\"\n");
    const QString path = QStringLiteral("/nonexistent");
    const int wrong = text(0, workflow::RuleColumn::path) == path ? 0 : 1;
    fill({wrong});
    ASSERT_NE(button(*strip, QStringLiteral("Delete")), nullptr);
    const QStringList before = shown();
    QSignalSpy filled(strip, &RuleStrip::wasFilled);
    select({1 - wrong});
    while (shown().first() == before.first())
        QCoreApplication::processEvents();
    EXPECT_EQ(button(*strip, QStringLiteral("Delete")), nullptr);
    EXPECT_TRUE(!filled.isEmpty() || filled.wait());
}

TEST_F(RuleStripTest, ExplainsAProblemOnRequest)
{
    openWith("allow path \"/nonexistent\" \"any\" r \"\" \"\" \"0\"\n");
    fill({0});
    const qsizetype before = shown().size();
    press("Why?");
    EXPECT_EQ(shown().size(), before + 1);
    EXPECT_TRUE(shown().last().startsWith(QStringLiteral("A rule about a path that is not there")));
}

TEST_F(RuleStripTest, BindsARuleToTheProgramAsItIsNow)
{
    const test::TemporaryFolder folder;
    const std::string program = folder.write("program", "text");
    openWith("allow path \"any\" \"" + program + "\" r \"\" \"" + std::string(64, 'a') + "\" \"0\"\n");
    fill({0});
    const std::string now = "982d9e3eb996f559e633f4d194def3761d909f5a3b647d1a851fead67c32c9d1";
    EXPECT_TRUE(shown().contains(
        QString::fromStdString("Digest differs: stored " + std::string(64, 'a') + ", now " + now + ".")));
    const std::string before = file();
    QSignalSpy changed(window.get(), &RulesEditorTableController::rulesDidChange);
    press("Bind Anew");
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(file(), "allow path \"any\" \"" + program + "\" r \"\" \"" + now + "\" \"0\"\n");
    window->undo();
    EXPECT_EQ(file(), before);
}

TEST_F(RuleStripTest, MovesAllRulesOfAProgramOnceThePersonHasSeenThem)
{
    const test::TemporaryFolder folder;
    const std::string moved = folder.write("moved", "text");
    openWith("allow path \"any\" \"/nonexistent/old\" r \"\" \"\" \"0\"\n"
             "deny path \"any\" \"/bin/sh via /nonexistent/old\" r \"\" \"\" \"0\"\n");
    const std::string before = file();
    fill({1});
    press("Choose...");
    auto* preview = window->findChild<ChangeWindow*>();
    ASSERT_NE(preview, nullptr);
    preview->findChild<QLineEdit*>()->setText(QString::fromStdString(moved));
    EXPECT_EQ(file(), before);
    static_cast<QDialog*>(preview)->accept();
    EXPECT_EQ(file(),
        "allow path \"any\" \"" + moved + "\" r \"\" \"\" \"0\"\n" + "deny path \"any\" \"/bin/sh via "
            + moved + "\" r \"\" \"\" \"0\"\n");
}

TEST_F(RuleStripTest, OpensTheEditorForWhatTheFileCannotHold)
{
    openWith("watch path \"/nonexistent\" \"any\" r \"\"\n");
    fill({0});
    press("Edit...");
    EXPECT_NE(window->findChild<EditWatchWindowController*>(), nullptr);
}

TEST_F(RuleStripTest, TellsNothingOfProgramsAndPathsOfNoPlace)
{
    openWith("allow path \"/nonexistent\" \"/nonexistent\" r \"\" \"\" \"0\"\n");
    QSignalSpy filled(strip, &RuleStrip::wasFilled);
    strip->setPlace(workflow::RulesPlace::nowhere());
    fill({0});
    EXPECT_EQ(button(*strip, QStringLiteral("Why?")), nullptr);
}

TEST_F(RuleStripTest, LooksAtItsRuleAnewInAnotherPlace)
{
    const test::TemporaryFolder volume;
    std::error_code error;
    const auto place = workflow::RulesPlace::folder(volume.path(), error);
    ASSERT_TRUE(place) << error.message();
    openWith("allow path \"/usr/bin/env\" \"any\" r \"\" \"\" \"0\"\n");
    fill({0});
    EXPECT_EQ(button(*strip, QStringLiteral("Why?")), nullptr);
    strip->setPlace(*place);
    EXPECT_TRUE(QTest::qWaitFor([&] { return button(*strip, QStringLiteral("Why?")) != nullptr; }));
}

TEST_F(RuleStripTest, StaysHiddenWhenItWasHiddenTheLastTime)
{
    openWith("");
    auto* dock = window->findChild<QDockWidget*>(QStringLiteral("ruleInWords"));
    EXPECT_TRUE(dock->isVisible());
    dock->toggleViewAction()->trigger();
    EXPECT_FALSE(dock->isVisible());
    window->close();
    RulesEditorTableController next(*document, application, run, workspace, log.log());
    next.show();
    EXPECT_FALSE(next.findChild<QDockWidget*>(QStringLiteral("ruleInWords"))->isVisible());
    next.findChild<QDockWidget*>(QStringLiteral("ruleInWords"))->toggleViewAction()->trigger();
    next.close();
}

} // namespace quorvane::windows
