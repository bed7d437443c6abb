#include "windows/HistoryWindow.h"

#include "history/Journal.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/FakePrivilegedCommand.h"
#include "tests/support/TestDocument.h"
#include "windows/ElidedLabel.h"
#include "windows/FootNotices.h"
#include "windows/RulesTableView.h"
#include "windows/Shades.h"
#include "workflow/PreferencesFile.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesHistory.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace quorvane::windows {

namespace {

std::string lineOf(const std::string& path, const std::string& tag = "")
{
    return "allow prefix \"" + path + "\" \"/bin/sh\" r \"" + tag + "\" \"\" \"0\"\n";
}

// A history of the rules whose restore does something else.
class OtherRestore : public workflow::RulesHistory {
public:
    using Restore = std::function<std::optional<std::string>()>;

    OtherRestore(workflow::RulesDocument& document, Restore restore)
        : RulesHistory(document)
        , m_restore(std::move(restore))
    {
    }
    std::optional<std::string> restore(std::int64_t /*version*/) override { return m_restore(); }

private:
    const Restore m_restore;
};

class HistoryWindowTest : public testing::Test {
protected:
    HistoryWindowTest()
    {
        box.writeUserRules(lineOf("/a/") + lineOf("/b/"));
        store = box.load();
        document = std::make_unique<test::TestDocument>(*store, run);
        rules = std::make_unique<workflow::RulesHistory>(*document);
        preferences = std::make_unique<workflow::PreferencesHistory>(box.locations, *document, "test",
            workflow::PreferencesServices{application, privilegedCommand, run}, test::silentLog());
    }
    ~HistoryWindowTest() override { delete window; }

    void add(const std::string& path)
    {
        document->perform(
            workflow::additionOf(test::policyRule({.path = path, .processName = "/bin/sh", .operations = 1})),
            {"Add " + path});
    }
    void remove(std::size_t row)
    {
        document->perform(workflow::deletionOf(*store, {store->userRules().at(row)}), {"Delete Rule"});
    }

    // Waits until so many versions are shown, and the selected one is compared.
    void open(int versionCount)
    {
        window = new HistoryWindow({rules.get(), preferences.get()});
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        versions = in<RulesTableView>("versionsTableView");
        changes = in<RulesTableView>("differenceTableView");
        waitFor([&] { return versions->model()->rowCount() == versionCount; });
        if (versionCount > 0)
            waitUntilCompared();
    }
    template <class Question> static void waitFor(Question question)
    {
        EXPECT_TRUE(QTest::qWaitFor(question));
    }
    void waitUntilCompared() const
    {
        waitFor([this] { return !summary().isEmpty() && summary() != QStringLiteral("Comparing\u2026"); });
    }
    template <class Child> Child* in(const char* name) const
    {
        auto* child = window->findChild<Child*>(QString::fromLatin1(name));
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    QString summary() const { return in<QLabel>("differenceLabel")->text(); }
    QString notice() const { return in<QLabel>("noticeText")->text(); }
    QString counts() const { return in<QLabel>("countLabel")->text(); }
    bool isEnabled(const char* button) const { return in<QPushButton>(button)->isEnabled(); }
    void click(const char* button) const { in<QPushButton>(button)->click(); }
    void searchFor(const char* text) const
    {
        in<QLineEdit>("searchField")->setText(QString::fromLatin1(text));
    }
    static QString row(const RulesTableView* table, int number)
    {
        QStringList texts;
        for (int column = 0; column < table->model()->columnCount(); ++column) {
            if (table != nullptr && column != 1) // of versions, the time
                texts.append(table->model()->index(number, column).data().toString());
        }
        return texts.join(QLatin1Char('|'));
    }
    // The versions that are shown.
    QString numbers() const
    {
        QStringList texts;
        for (int number = 0; number < versions->model()->rowCount(); ++number)
            texts.append(versions->model()->index(number, 0).data().toString());
        return texts.join(QLatin1Char(' '));
    }
    QString selected() const
    {
        const auto number = versions->onlySelectedRow();
        return number ? versions->model()->index(static_cast<int>(*number), 0).data().toString() : QString();
    }
    void select(int number) const
    {
        versions->selectRow(number);
        waitUntilCompared();
    }
    std::string file() const { return test::TemporaryFolder::contents(box.locations.userRulesFile()); }
    // Presses the button of the next question that begins so; notes the question.
    void answer(const char* beginning)
    {
        QTimer::singleShot(0, window, [this, beginning] {
            auto* asked = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(asked, nullptr);
            question = asked->text();
            isCancelDefault = asked->defaultButton() == asked->button(QMessageBox::Cancel);
            for (QAbstractButton* button : asked->buttons()) {
                if (QString(button->text()).remove(QLatin1Char('&')).startsWith(QLatin1String(beginning)))
                    return button->click();
            }
            FAIL() << beginning;
        });
    }

    test::StoreSandbox box;
    workflow::RunState run;
    test::FakeApplication application;
    test::FakePrivilegedCommand privilegedCommand;
    std::unique_ptr<rules::RuleManager> store;
    std::unique_ptr<test::TestDocument> document;
    std::unique_ptr<workflow::RulesHistory> rules;
    std::unique_ptr<workflow::PreferencesHistory> preferences;
    QPointer<HistoryWindow> window;
    RulesTableView* versions = nullptr;
    RulesTableView* changes = nullptr;
    QString question;
    bool isCancelDefault = false;
};

} // namespace

TEST_F(HistoryWindowTest, ShowsEveryVersionWithWhatWasDone)
{
    add("/c/");
    remove(0);
    open(3);
    EXPECT_EQ(row(versions, 0), QStringLiteral("3|Delete Rule|test|2||\u22121|"));
    EXPECT_EQ(row(versions, 1), QStringLiteral("2|Add /c/|test|3|+1||"));
    EXPECT_EQ(row(versions, 2), QStringLiteral("1|As found when the history began|another program|2|+2||"));
    EXPECT_EQ(counts(), QStringLiteral("3 versions"));
}

TEST_F(HistoryWindowTest, ShowsTheNewestVersionsDifferenceAtFirstAndAnyOthersWhenSelected)
{
    add("/c/");
    remove(0);
    open(3);
    EXPECT_EQ(selected(), QStringLiteral("3"));
    EXPECT_EQ(summary(), QStringLiteral("Version 3 compared with version 2: 1 rule removed"));
    EXPECT_EQ(changes->model()->rowCount(), 1);
    EXPECT_EQ(changes->model()->index(0, 0).data().toString(), QStringLiteral("\u2212 Removed"));
    EXPECT_EQ(changes->model()->index(0, 5).data().toString(), QStringLiteral("/a/"));
    select(2);
    EXPECT_EQ(summary(), QStringLiteral("Version 1, the first: 2 rules added"));
    EXPECT_EQ(changes->model()->rowCount(), 2);
    EXPECT_EQ(changes->model()->index(1, 0).data().toString(), QStringLiteral("+ Added"));
}

TEST_F(HistoryWindowTest, ColoursSayWhatWordsAndSignsSayToo)
{
    remove(0);
    open(2);
    const QModelIndex cell = changes->model()->index(0, 0);
    EXPECT_EQ(cell.data(Qt::ForegroundRole).value<QBrush>().color(), shades::removed);
    EXPECT_EQ(cell.data(Qt::BackgroundRole).value<QBrush>().color(), shades::removedBand);
}

TEST_F(HistoryWindowTest, ALaterSelectionOvertakesAnEarlierOne)
{
    for (const char* path : {"/c/", "/d/", "/e/", "/f/"})
        add(path);
    open(5);
    for (const int number : {3, 1, 4, 2})
        versions->selectRow(number);
    waitUntilCompared();
    EXPECT_EQ(summary(), QStringLiteral("Version 3 compared with version 2: 1 rule added"));
    EXPECT_EQ(changes->model()->index(0, 5).data().toString(), QStringLiteral("/d/"));
}

// The difference of a long file takes long to free.
TEST_F(HistoryWindowTest, ADifferenceThatIsShownNoMoreEndsOnAnotherThread)
{
    // The last difference ends after the history does.
    struct Ending {
        const std::thread::id windowThread = std::this_thread::get_id();
        std::atomic<bool> wasHere = false;
        std::atomic<bool> isDone = false;
    };
    struct WatchedHistory : workflow::RulesHistory {
        using workflow::RulesHistory::RulesHistory;
        workflow::DifferenceTablePtr compare(
            const std::string& before, const std::string& after, const std::stop_token& stop) const override
        {
            const workflow::DifferenceTablePtr table = workflow::RulesHistory::compare(before, after, stop);
            return {table.get(), [table, ending = ending](const workflow::DifferenceTable* /*ended*/) {
                        ending->wasHere = std::this_thread::get_id() == ending->windowThread;
                        ending->isDone = true;
                    }};
        }
        const std::shared_ptr<Ending> ending = std::make_shared<Ending>();
    };
    add("/c/");
    auto watched = std::make_unique<WatchedHistory>(*document);
    const std::shared_ptr<Ending> ending = watched->ending;
    rules = std::move(watched);
    open(2);
    EXPECT_FALSE(ending->isDone);

    select(1);

    waitFor([&ending] { return ending->isDone.load(); });
    EXPECT_FALSE(ending->wasHere);
}

TEST_F(HistoryWindowTest, NewVersionsShowUpAndLeaveTheSelectionAlone)
{
    add("/c/");
    open(2);
    select(1);
    add("/d/");
    waitFor([&] { return versions->model()->rowCount() == 3; });
    EXPECT_EQ(numbers(), QStringLiteral("3 2 1"));
    EXPECT_EQ(selected(), QStringLiteral("1"));
}

TEST_F(HistoryWindowTest, RestoreBringsBackTheSelectedVersionAndOffersUndo)
{
    const std::string before = file();
    add("/c/");
    open(2);
    EXPECT_FALSE(isEnabled("restoreButton")) << "the newest is in force";
    select(1);
    QSignalSpy restored(window, &HistoryWindow::wasRestored);
    QSignalSpy undone(window, &HistoryWindow::undoRequested);
    click("restoreButton");
    EXPECT_EQ(file(), before);
    EXPECT_EQ(restored.size(), 1);
    EXPECT_EQ(notice(), QStringLiteral("Version 1 is in force again."));
    for (QPushButton* button : window->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Undo"))
            button->click();
    }
    EXPECT_EQ(undone.size(), 1);
    waitFor([&] { return versions->model()->rowCount() == 3; });
    EXPECT_EQ(row(versions, 0), QStringLiteral("3|Restore Version 1|test|2||\u22121|"));
}

TEST_F(HistoryWindowTest, SaysWhyAVersionIsNotRestored)
{
    add("/c/");
    rules = std::make_unique<OtherRestore>(*document, [] { return "It is Monday."; });
    open(2);
    select(1);
    const QSignalSpy restored(window, &HistoryWindow::wasRestored);
    click("restoreButton");
    EXPECT_EQ(notice(), QStringLiteral("It is Monday."));
    EXPECT_EQ(restored.size(), 0);
}

TEST_F(HistoryWindowTest, MayBeGoneWhenARestoreHasWaitedForThePerson)
{
    add("/c/");
    rules = std::make_unique<OtherRestore>(*document, [this] {
        delete window;
        return std::nullopt;
    });
    open(2);
    select(1);
    click("restoreButton");
    EXPECT_TRUE(window.isNull());
}

TEST_F(HistoryWindowTest, ExportWritesTheVeryBytesOfAVersion)
{
    const std::string before = file();
    add("/c/");
    open(2);
    select(1);
    click("exportButton");
    auto* panel = window->findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->windowTitle(), QStringLiteral("Export Version 1"));
    const std::string path = box.folder.path("old.quorv");
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
    QMetaObject::invokeMethod(panel, "accept");
    const QString told = QStringLiteral("Version 1 was exported to “%1”.").arg(QString::fromStdString(path));
    waitFor([&] { return notice() == told; });
    EXPECT_EQ(test::TemporaryFolder::contents(path), before);
}

TEST_F(HistoryWindowTest, SaysThatAVersionWentBeforeItsFileWasChosen)
{
    add("/c/");
    open(2);
    select(1);
    click("exportButton");
    auto* panel = window->findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    rules->openJournal()->forgetBefore(2);
    const std::string path = box.folder.path("old.quorv");
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
    QMetaObject::invokeMethod(panel, "accept");
    waitFor([&] { return notice() == QStringLiteral("Version 1 can no longer be read."); });
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(HistoryWindowTest, ExportsNothingOverTheFileWhoseVersionsItShows)
{
    add("/c/");
    open(2);
    select(1);
    const std::string before = file();
    click("exportButton");
    auto* panel = window->findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    const std::string link = box.folder.path("link.quorv");
    std::filesystem::create_hard_link(box.locations.userRulesFile(), link);
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(link));
    QTimer::singleShot(0, window, [] {
        auto* replacing = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(replacing, nullptr);
        EXPECT_EQ(replacing->defaultButton(), replacing->button(QMessageBox::No));
        replacing->button(QMessageBox::Yes)->click();
    });
    QMetaObject::invokeMethod(panel, "accept");
    EXPECT_EQ(notice(),
        QStringLiteral("This file is the one whose versions these are. “Restore” brings a version back."));
    EXPECT_EQ(file(), before);
}

TEST_F(HistoryWindowTest, SearchesWhatWasDoneAtOnceAndTheRulesOfAllVersionsInTime)
{
    add("/c/");
    add("/found/me/");
    remove(0);
    open(4);
    searchFor("delete");
    EXPECT_EQ(numbers(), QStringLiteral("4"));
    waitFor([&] { return counts() == QStringLiteral("1 of 4 versions"); });
    searchFor("/B/"); // of the first version
    waitFor(
        [&] { return counts() == QStringLiteral("1 of 4 versions") && numbers() == QStringLiteral("1"); });
    EXPECT_EQ(selected(), QStringLiteral("1")) << "what is found first";
    searchFor("found");
    waitFor([&] { return numbers() == QStringLiteral("3 1"); });
    searchFor("nothing has this");
    EXPECT_FALSE(isEnabled("exportButton")) << "the selected version is not shown";
    EXPECT_EQ(counts(), QStringLiteral("0 of 4 versions, searched 0…"));
    EXPECT_EQ(versions->accessibleDescription(), QStringLiteral("Searching…"));
    waitFor([&] { return counts() == QStringLiteral("0 of 4 versions"); });
    EXPECT_EQ(versions->accessibleDescription(), QStringLiteral("No version matches."));
    searchFor("");
    EXPECT_EQ(numbers(), QStringLiteral("4 3 2 1"));
}

TEST_F(HistoryWindowTest, SearchesVersionsThatComeMeanwhile)
{
    open(1);
    searchFor("/later/");
    waitFor([&] { return counts() == QStringLiteral("0 of 1 version"); });
    document->perform(
        workflow::additionOf(test::policyRule({.path = "/later/", .processName = "/bin/sh"})), {"Add Rule"});
    waitFor([&] { return numbers() == QStringLiteral("2"); });
}

TEST_F(HistoryWindowTest, IsWalkedByKeysBetweenItsSearchAndItsVersions)
{
    open(1);
    auto* search = in<QLineEdit>("searchField");
    QTest::keyClick(versions, Qt::Key_R);
    EXPECT_TRUE(search->hasFocus());
    EXPECT_EQ(search->text(), QStringLiteral("r"));
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_TRUE(versions->hasFocus());
    search->setFocus();
    search->deselect();
    QTest::keyClick(search, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(search->selectedText(), QStringLiteral("r"));
    versions->setFocus();
    QTest::keyClick(versions, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(search->hasFocus());
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_EQ(search->text(), QString());
    EXPECT_TRUE(search->hasFocus());
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(versions->hasFocus());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(HistoryWindowTest, SearchesForOneLineOfWhatIsPasted)
{
    open(1);
    QApplication::clipboard()->setText(QStringLiteral("add\n/b/\n"));
    in<QLineEdit>("searchField")->paste();
    EXPECT_EQ(in<QLineEdit>("searchField")->text(), QStringLiteral("add/b/"));
}

TEST_F(HistoryWindowTest, OffersToForgetOlderVersionsOnlyWhereThatIsNotAllOrNone)
{
    for (const char* path : {"/c/", "/d/", "/e/"})
        add(path);
    open(4);
    for (const int row : {0, 3}) { // the newest has all others below it, the oldest none
        select(row);
        answer("Cancel");
        click("forgetButton");
        EXPECT_FALSE(question.contains(QStringLiteral("Older than"))) << row << question.toStdString();
    }
    select(2);
    answer("Forget 1 Older");
    click("forgetButton");
    EXPECT_TRUE(question.contains(QStringLiteral("Older than version 2: version 1, of ")))
        << question.toStdString();
    waitFor([&] { return numbers() == QStringLiteral("4 3 2"); });
    EXPECT_EQ(selected(), QStringLiteral("2")) << "as before";
}

TEST_F(HistoryWindowTest, OpensWithTheKeyboardInItsVersions)
{
    add("/c/");
    open(2);
    EXPECT_EQ(window->focusWidget(), versions);
}

TEST_F(HistoryWindowTest, ForgettingNamesWhatGoesAndKeepsTheRest)
{
    for (const char* path : {"/c/", "/d/", "/e/"})
        add(path);
    open(4);
    select(1);
    answer("Cancel");
    click("forgetButton");
    EXPECT_TRUE(isCancelDefault);
    EXPECT_TRUE(question.contains(QStringLiteral("Older than version 3: versions 1 to 2, of ")))
        << question.toStdString();
    EXPECT_TRUE(question.contains(QStringLiteral("All: versions 1 to 3, of "))) << question.toStdString();
    EXPECT_TRUE(question.contains(QStringLiteral("Version 4, the newest, stays.")));
    answer("Forget 2 Older");
    click("forgetButton");
    waitFor([&] { return numbers() == QStringLiteral("4 3"); });
    EXPECT_EQ(notice(), QStringLiteral("The versions are forgotten."));
    EXPECT_FALSE(document->undoName() == "Add /d/");
    answer("Forget All 1");
    click("forgetButton");
    waitFor([&] { return numbers() == QStringLiteral("4"); });
    EXPECT_FALSE(isEnabled("forgetButton"));
    EXPECT_FALSE(document->undoName());
}

TEST_F(HistoryWindowTest, AVersionWhoseForerunnerIsForgottenSaysSo)
{
    add("/c/");
    rules->openJournal()->forgetBefore(2);
    open(1);
    EXPECT_EQ(summary(), QStringLiteral("Version 2"));
    EXPECT_TRUE(changes->accessibleDescription().startsWith(QStringLiteral("Version 1, which came before")));
}

TEST_F(HistoryWindowTest, ShowsAndRestoresTheVersionsOfThePreferencesToo)
{
    box.writePreferences(test::preference("ui.prompts.oob", 1));
    preferences->keepPresentVersion();
    box.writePreferences(test::preference("ui.prompts.oob", 2));
    add("/c/");
    open(2);
    in<QComboBox>("subjectPopUpButton")->setCurrentIndex(1);
    waitFor([&] { return versions->model()->rowCount() == 2; }); // with the list as it is found
    waitFor(
        [&] { return summary() == QStringLiteral("Version 2 compared with version 1: 1 setting changed"); });
    EXPECT_EQ(changes->model()->index(0, 1).data().toString(), QStringLiteral("ui.prompts.oob"));
    select(1);
    application.authenticates = false;
    click("restoreButton");
    EXPECT_EQ(
        notice(), QStringLiteral("Only an administrator who has authenticated can bring preferences back."));
    application.authenticates = true;
    click("restoreButton");
    EXPECT_EQ(notice(), QStringLiteral("Version 1 is in force again."));
    EXPECT_EQ(workflow::readPreferences(box.locations.preferencesFile()).integerForKey("ui.prompts.oob"), 1);
}

TEST_F(HistoryWindowTest, SelectsTheFirstVersionFromTheWantedOneOnEvenWhenItComesLater)
{
    add("/c/");
    open(2);
    window->showVersionFrom(1);
    EXPECT_EQ(selected(), QStringLiteral("1"));
    window->showVersionFrom(3);
    EXPECT_EQ(selected(), QStringLiteral("1"));
    add("/d/");
    waitFor([&] { return selected() == QStringLiteral("3"); });
}

TEST_F(HistoryWindowTest, ShowsTheWantedVersionWhateverIsShownAndLetsThePersonGoOn)
{
    box.writePreferences(test::preference("ui.prompts.oob", 1));
    preferences->keepPresentVersion();
    add("/c/");
    open(2);
    in<QComboBox>("subjectPopUpButton")->setCurrentIndex(1);
    waitFor([&] { return numbers() == QStringLiteral("1"); });
    searchFor("nothing");
    window->showVersionFrom(1);
    EXPECT_EQ(in<QComboBox>("subjectPopUpButton")->currentIndex(), 0);
    waitFor([&] { return numbers() == QStringLiteral("2 1") && selected() == QStringLiteral("1"); });
    select(0);
    add("/d/");
    waitFor([&] { return numbers() == QStringLiteral("3 2 1"); });
    EXPECT_EQ(selected(), QStringLiteral("2")) << "chosen since";
}

TEST_F(HistoryWindowTest, SaysNothingOfOneHistoryBesideAnotherAndFitsItsColumnsToIt)
{
    box.writePreferences(test::preference("ui.prompts.oob", 1));
    preferences->keepPresentVersion();
    add("/c/");
    open(2);
    const int fitted = versions->columnWidth(0);
    versions->setColumnWidth(0, fitted + 100);
    select(1);
    click("restoreButton");
    EXPECT_EQ(window->findChild<FootNotices*>()->count(), 1U);
    in<QComboBox>("subjectPopUpButton")->setCurrentIndex(1);
    EXPECT_EQ(window->findChild<FootNotices*>()->count(), 0U);
    waitFor([&] { return numbers() == QStringLiteral("1"); });
    EXPECT_EQ(versions->columnWidth(0), fitted);
}

TEST_F(HistoryWindowTest, SaysNothingOfOneDifferenceWhileItLooksForAnother)
{
    rules->keepPresentVersion();
    box.writeUserRules(lineOf("/b/") + lineOf("/a/"));
    rules->keepPresentVersion();
    open(2);
    EXPECT_EQ(changes->accessibleDescription(),
        QStringLiteral("Nothing differs but the order, or how it is written."));
    versions->selectRow(1);
    EXPECT_EQ(summary(), QStringLiteral("Comparing\u2026"));
    EXPECT_EQ(changes->accessibleDescription(), QString());
    waitUntilCompared();
    EXPECT_EQ(changes->model()->rowCount(), 2);
    versions->selectRow(0);
    EXPECT_EQ(changes->model()->rowCount(), 0);
    waitUntilCompared();
}

TEST_F(HistoryWindowTest, SaysNothingOfADifferenceBesideAHistoryWithoutVersions)
{
    open(1);
    in<QComboBox>("subjectPopUpButton")->setCurrentIndex(1);
    EXPECT_EQ(summary(), QString());
    EXPECT_EQ(changes->model()->rowCount(), 0);
}

TEST_F(HistoryWindowTest, BringsTheVersionThatIsWantedIntoView)
{
    for (int number = 0; number < 60; ++number)
        add("/" + std::to_string(number));
    open(61);
    window->showVersionFrom(1);
    EXPECT_TRUE(versions->viewport()->rect().contains(versions->visualRect(versions->currentIndex())));
}

TEST_F(HistoryWindowTest, OffersToCopyInAMenuOnTheChanges)
{
    open(1);
    EXPECT_EQ(changes->contextMenuPolicy(), Qt::ActionsContextMenu);
    ASSERT_EQ(changes->actions().size(), 1);
    EXPECT_EQ(changes->actions().front()->text(), QStringLiteral("&Copy"));
}

TEST_F(HistoryWindowTest, CopiesTheSelectedChangesAsText)
{
    remove(0);
    open(2);
    changes->selectRow(0);
    changes->setFocus();
    QTest::keyClick(changes, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Removed: " + lineOf("/a/"));
}

TEST_F(HistoryWindowTest, WithoutAHistoryItSaysThatNothingWasChanged)
{
    std::filesystem::remove(box.locations.userRulesFile());
    open(0);
    waitFor([&] { return !versions->accessibleDescription().isEmpty(); });
    EXPECT_EQ(versions->accessibleDescription(), QStringLiteral("Nothing has been changed yet."));
    for (const char* button : {"restoreButton", "exportButton", "forgetButton"})
        EXPECT_FALSE(isEnabled(button)) << button;
}

TEST_F(HistoryWindowTest, RemembersItsSize)
{
    open(1);
    window->resize(720, 500);
    window->close();
    waitFor([&] { return window.isNull(); });
    open(1);
    EXPECT_EQ(window->size(), QSize(720, 500));
    window->resize(700, 480);
    QTest::keyClick(versions, Qt::Key_Escape);
    waitFor([&] { return window.isNull(); });
    open(1);
    EXPECT_EQ(window->size(), QSize(700, 480));
}

} // namespace quorvane::windows
