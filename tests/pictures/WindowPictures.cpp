#include "history/Journal.h"
#include "tests/pictures/MainWindowPictures.h"
#include "windows/AsideWindow.h"
#include "windows/ChangeWindow.h"
#include "windows/CleanUpWindow.h"
#include "windows/HistoryWindow.h"
#include "windows/MapWindow.h"
#include "windows/PathField.h"
#include "windows/SettingsWindow.h"
#include "windows/TouchingWindow.h"
#include "workflow/RulesHistory.h"

#include <QComboBox>
#include <QDir>

namespace quorvane::test {

namespace {

// The windows that the main one opens.
class WindowPictures : public MainWindowPictures {
protected:
    WindowPictures() { openOn(rulesOfAllKinds()); }

    // What is planned when the tag of all these rules becomes that text.
    windows::ChangeWindow& openTagChange(const QString& tag)
    {
        auto& change = openWith<windows::ChangeWindow>("tagMenuItem", {620, 260});
        change.findChild<QLineEdit*>(QStringLiteral("tagTextField"))->setText(tag);
        change.replan();
        return change;
    }
};

class HistoryPictures : public MainWindowPictures {
protected:
    // Records a version of each day.
    void record(history::NewVersion version, std::string_view contents)
    {
        constexpr std::int64_t secondsOfDay = 86'400;
        version.time = m_time += secondsOfDay;
        version.bytes = history::DigestedBytes(contents);
        journal->record(version);
    }
    static history::NewVersion ofProgram(const char* program, const char* action)
    {
        history::NewVersion version;
        version.program = program;
        version.action = action;
        return version;
    }

    std::unique_ptr<history::Journal> journal;

private:
    std::int64_t m_time = 1'790'000'000;
};

} // namespace

TEST_F(WindowPictures, ShowAChangeOfManyRulesAndWhyOneMayNotBe)
{
    selectPaths({".pem", "/etc/", "/etc/passwd"});
    auto& change = openTagChange(QStringLiteral("shell"));
    EXPECT_TRUE(readsAsKept("change", wordsOf(change)));
    const QImage planned = pictureOf(change);
    const QImage refused = pictureOf(openTagChange(QStringLiteral("M\u00fcsik\u00fc\u00fc")));
    EXPECT_TRUE(looksAsKept("change", stacked({planned, refused})));
}

TEST_F(WindowPictures, ShowWhereAProgramHasMoved)
{
    selectPaths({"/tmp/"});
    auto& moved = openWith<windows::ChangeWindow>("programMovedMenuItem", {620, 260});
    moved.findChild<windows::PathField*>(QStringLiteral("programField"))->setPath("/usr/bin/env");
    moved.replan();
    EXPECT_TRUE(looksAsKept("moved", pictureOf(moved)));
    EXPECT_TRUE(readsAsKept("moved", wordsOf(moved)));
}

TEST_F(WindowPictures, ShowTheMapByFolderAndByProgram)
{
    auto& map = openWith<windows::MapWindow>("mapMenuItem", {700, 320});
    QSignalSpy made(&map, &windows::MapWindow::wasMade);
    ASSERT_TRUE(!made.isEmpty() || made.wait());
    const QImage byFolder = pictureOf(map);
    made.clear();
    map.findChild<QComboBox*>()->setCurrentIndex(1);
    ASSERT_TRUE(!made.isEmpty() || made.wait());
    EXPECT_TRUE(looksAsKept("map", stacked({byFolder, pictureOf(map)})));
    EXPECT_TRUE(readsAsKept("map", wordsOf(map)));
}

TEST_F(WindowPictures, ShowWhatTouchesAPath)
{
    auto& touching = openWith<windows::TouchingWindow>("whatTouchesMenuItem", {700, 320});
    QSignalSpy answered(&touching, &windows::TouchingWindow::wasAnswered);
    touching.findChild<windows::PathField*>(QStringLiteral("pathField"))->setPath("/etc/passwd");
    ASSERT_TRUE(!answered.isEmpty() || answered.wait());
    beginBands(*touching.findChild<windows::RulesTableView*>());
    EXPECT_TRUE(looksAsKept("touching", pictureOf(touching)));
    EXPECT_TRUE(readsAsKept("touching", wordsOf(touching)));
}

TEST_F(WindowPictures, ShowRulesThatAreSetAside)
{
    selectPaths({".pem", "/etc/passwd", "/tmp/"});
    action("setAsideMenuItem")->trigger();
    auto& aside = openWith<windows::AsideWindow>("asideMenuItem", {620, 200});
    auto* list = aside.findChild<windows::RulesTableView*>();
    list->selectRow(1);
    pictureOf(aside); // with it the main table is painted, which has the same bands
    beginBands(*list);
    EXPECT_TRUE(looksAsKept("aside", pictureOf(aside)));
    EXPECT_TRUE(readsAsKept("aside", wordsOf(aside)));
}

TEST_F(WindowPictures, ShowWhatCanBeCleanedUp)
{
    auto& cleanUp = openWith<windows::CleanUpWindow>("cleanUpMenuItem", {760, 300});
    const auto* count = cleanUp.findChild<QLabel*>(QStringLiteral("countLabel"));
    ASSERT_TRUE(QTest::qWaitFor([count] { return !count->text().startsWith(QStringLiteral("Looking")); }));
    EXPECT_TRUE(looksAsKept("clean-up", pictureOf(cleanUp)));
    EXPECT_TRUE(readsAsKept("clean-up", wordsOf(cleanUp)));
}

TEST(SettingsPictures, ShowTheSettingsAndWhatIsWrongWithThem)
{
    const TemporaryFolder folder;
    QDir::setCurrent(QString::fromStdString(folder.path())); // of which no picture tells
    std::string words;
    const auto pictureOfSettings = [&folder, &words](const char* settings) {
        folder.write("settings.ini", settings);
        windows::SettingsWindow window("settings.ini");
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        words += wordsOf(window);
        return pictureOf(window);
    };
    EXPECT_TRUE(looksAsKept("settings",
        stacked(
            {pictureOfSettings("[rules]\nwholeLines=true\n"), pictureOfSettings("[history]\ndays=many\n")})));
    EXPECT_TRUE(readsAsKept("settings", words));
}

TEST_F(HistoryPictures, ShowVersionsOfEveryKindAndWhatOneChanged)
{
    openOn(rulesOfAllKinds());
    const std::string all = file();
    const std::string fewer = all.substr(0, all.find("allow suffix"));
    const char* mine = "Quorvane Configuration";
    const workflow::RulesHistory history(*document);
    journal = history.openJournal();
    auto version = ofProgram(mine, "Import 6 Rules");
    version.rules = version.added = 6;
    record(version, fewer);
    version = {};
    version.kind = history::VersionKind::foreign;
    version.rules = 10;
    version.added = 4;
    record(version, all);
    version = ofProgram(mine, "Delete 4 Rules");
    version.rules = 6;
    version.removed = 4;
    record(version, fewer);
    version = ofProgram("quorvanectl", "Delete 4 Rules");
    version.kind = history::VersionKind::undo;
    version.of = 3;
    version.rules = 10;
    version.added = 4;
    record(version, all);
    auto& shown = openWith<windows::HistoryWindow>("historyMenuItem", {900, 360});
    QSignalSpy filled(&shown, &windows::HistoryWindow::wasFilled);
    ASSERT_TRUE(!filled.isEmpty() || filled.wait());
    EXPECT_TRUE(looksAsKept("history", pictureOf(shown)));
    EXPECT_TRUE(readsAsKept("history", wordsOf(shown)));
}

} // namespace quorvane::test
