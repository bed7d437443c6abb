#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "tests/windows/TableWindow.h"
#include "windows/ElidedLabel.h"
#include "windows/FootNotices.h"
#include "windows/ImportWindowController.h"
#include "windows/QtText.h"
#include "windows/RulesEditorTableController.h"
#include "workflow/ImportDelegate.h"
#include "workflow/RuleCells.h"

#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::windows {

namespace {

constexpr const char* ownRules = "; my rules\n"
                                 "allow prefix \"/b\" \"/bin/sh\" r \"shell\"\n"
                                 "allow prefix \"/a\" \"/bin/sh\" r \"shell\"\n";

// Hands rules on; something else happens after the first one.
class MeanwhileDelegate : public workflow::ImportDelegate {
public:
    MeanwhileDelegate(workflow::ImportDelegate& next, std::function<void()> meanwhile)
        : m_next(next)
        , m_meanwhile(std::move(meanwhile))
    {
    }
    void importRule(const rules::RuleRef& rule) override
    {
        m_next.importRule(rule);
        if (m_meanwhile)
            std::exchange(m_meanwhile, nullptr)();
    }
    bool didFinishImportingRules() override { return m_next.didFinishImportingRules(); }

private:
    workflow::ImportDelegate& m_next;
    std::function<void()> m_meanwhile;
};

class RulesExchange : public test::TableWindow<RulesEditorTableController, workflow::RuleColumn> {
protected:
    RulesExchange()
    {
        folder.write(userFile, ownRules);
        store = rules::RuleManager::initWithCurrentUserConfiguration(
            platform::Locations(folder.path("root"), "ann"), test::silentLog());
        open();
    }
    ~RulesExchange() override { window.reset(); } // before the document
    void open()
    {
        window.reset();
        document = std::make_unique<test::TestDocument>(*store, run, log.log());
        window
            = std::make_unique<RulesEditorTableController>(*document, application, run, workspace, log.log());
        show();
    }

    // The review that is open; null when none is.
    ImportWindowController* review() const { return window->findChild<ImportWindowController*>(); }
    std::string reviewedFile() const { return review() == nullptr ? "" : review()->path(); }
    // Drops files on the window as a file manager does that would rather move them. False when it takes none.
    bool drop(
        const std::vector<std::string>& files, Qt::DropActions possible = Qt::CopyAction | Qt::MoveAction)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& file : files)
            urls.append(QUrl::fromLocalFile(toQt(file)));
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, possible, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped({5, 5}, possible, &data, Qt::LeftButton, Qt::NoModifier);
        dropped.setDropAction(Qt::MoveAction);
        QApplication::sendEvent(window.get(), &dropped);
        EXPECT_EQ(dropped.dropAction(), Qt::CopyAction);
        return dropped.isAccepted();
    }
    std::string userRules() const { return test::TemporaryFolder::contents(folder.path(userFile)); }
    std::string notices() const
    {
        std::string headers;
        for (const auto& notice : application.notices)
            headers += notice.header + (notice.waited ? " (waited)" : "") + "|";
        return headers;
    }

    // Answers the save panel that is open.
    void saveAs(const std::string& path) const
    {
        auto* panel = window->findChild<QFileDialog*>();
        ASSERT_NE(panel, nullptr);
        panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(toQt(path));
        // Qt asks whether to replace a file that is there.
        QTimer::singleShot(0, panel, [] {
            if (auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                question->button(QMessageBox::Yes)->click();
        });
        QMetaObject::invokeMethod(panel, "accept");
    }
    // Does `act` with the open panel that importRules() shows.
    void importWith(const std::function<void(QFileDialog&)>& act)
    {
        QTimer::singleShot(0, window.get(), [&] {
            auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            act(*panel);
        });
        action("importToolbarItem")->trigger();
    }

    const std::string userFile = "root/Users/Shared/Quorvane/ann.quorvane.rc";
    const std::string failSafe = "root/Users/Shared/Quorvane/failsafe.rc";
    test::TemporaryFolder folder;
    std::unique_ptr<rules::RuleManager> store;
    std::unique_ptr<test::TestDocument> document;
};

} // namespace

TEST_F(RulesExchange, AReviewOpensOnAFileOfText)
{
    const std::string file = folder.write("Tools.quorv", "allow prefix \"/c\" \"/bin/sh\" r\n");
    window->handleFileImport(file);
    ASSERT_NE(review(), nullptr);
    EXPECT_TRUE(review()->isVisible());
    EXPECT_EQ(review()->path(), file);
    EXPECT_EQ(review()->delegate(), window.get());
    EXPECT_EQ(notices(), "");
}

TEST_F(RulesExchange, AFileThatCannotBeReadAsTextIsPassedOverInSilence)
{
    const struct {
        const char* why;
        std::optional<std::string> path;
    } cases[] = {
        {"no path", std::nullopt},
        {"missing", folder.path("missing.quorv")},
        {"a folder", folder.path()},
        {"not UTF-8", folder.write("Latin.quorv", "allow prefix \"/caf\xe9\" \"/bin/sh\" r\n")},
    };
    for (const auto& c : cases) {
        window->handleFileImport(c.path);
        EXPECT_EQ(review(), nullptr) << c.why;
        EXPECT_EQ(log.lines().back(),
            "-[RulesEditorTableController handleFileImport:] " + c.path.value_or("(null)"));
    }
    EXPECT_EQ(notices(), "");
    EXPECT_EQ(userRules(), ownRules);
}

TEST_F(RulesExchange, AnImportAddsTheTickedRulesWritesTheFileAndTellsHowMany)
{
    window->handleFileImport(folder.write("Photo Tools,2.quorv",
        "allow prefix \"/c\" \"/bin/sh\" r \"\" \"T\"\n"
        "allow prefix \"/d\" \"/bin/sh\" r \"\" \"T\"\n"
        "watch prefix \"/w\" \"/bin/sh\" r\n"
        "allow prefix \"/e\" \"/bin/sh\" r \"own\" \"T\"\n"));
    auto* review = this->review();
    review->findChild<RulesTableView*>()->selectRow(2); // the second policy rule: watch rules stand first
    review->toggleSelectedTicks();
    run.internalWrite = false;
    review->importAction();

    EXPECT_EQ(notices(), "Import Successful|");
    EXPECT_EQ(application.notices[0].message, "Successfully imported 3 rules");
    EXPECT_EQ(userRules(),
        "watch prefix \"/w\" \"/bin/sh\" r \"Photo Tools\"\n"
        "allow prefix \"/b\" \"/bin/sh\" r \"shell\" \"\" \"0\"\n"
        "allow prefix \"/a\" \"/bin/sh\" r \"shell\" \"\" \"0\"\n"
        "allow prefix \"/c\" \"/bin/sh\" r \"Photo Tools\" \"T\" \"0\"\n"
        "allow prefix \"/e\" \"/bin/sh\" r \"own\" \"T\" \"0\"\n");
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a /c /e"));
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
    EXPECT_TRUE(QTest::qWaitFor([this] { return this->review() == nullptr; })) << "the review is gone";
}

TEST_F(RulesExchange, AnImportOfNothingSaysSo)
{
    window->handleFileImport(folder.write("Empty.quorv", ""));
    review()->importAction();
    EXPECT_EQ(notices(), "Import Failed|");
    EXPECT_EQ(application.notices[0].message, "Found no rules to import");
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a"));
}

TEST_F(RulesExchange, AnImportOfNothingShowsTheRulesAsTheFileHoldsThemNow)
{
    // Written, a line with other than ASCII text loses its end, and the next line with it.
    store->addPolicyRule(test::policyRule({.path = "/\xC3\xA9", .processName = "/bin/sh", .operations = 1}));
    store->addPolicyRule(test::policyRule({.path = "/z", .processName = "/bin/sh", .operations = 1}));
    window->reloadData();
    ASSERT_EQ(table->model()->rowCount(), 4);
    window->handleFileImport(folder.write("Empty.quorv", ""));
    review()->importAction();
    EXPECT_EQ(static_cast<std::size_t>(table->model()->rowCount()), store->totalRules(false));
    EXPECT_EQ(store->totalRules(false), 3U);
}

TEST_F(RulesExchange, SelectionSurvivesAnImportAlthoughAllRecordsAreNew)
{
    table->selectRow(1);
    window->handleFileImport(folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n"));
    review()->importAction();
    EXPECT_EQ(shownPaths(), QStringLiteral("/w /b /a"));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a"));
}

TEST_F(RulesExchange, AnImportThatCannotBeWrittenIsToldAndLeavesPendingSuggestions)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    window->handleFileImport(folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n"));
    std::filesystem::remove(folder.path(userFile));
    std::filesystem::create_directory(folder.path(userFile)); // in the way
    review()->importAction();
    EXPECT_NE(store->lastErrorMessage(), std::nullopt);
    EXPECT_EQ(label("failureLabel"), toQt(store->lastErrorMessage().value_or("")));
    EXPECT_TRUE(std::filesystem::exists(folder.path(failSafe)));
}

TEST_F(RulesExchange, SuggestionsOutliveAnImportThatCannotBeWrittenAndAreWrittenFromTheFoot)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    window->handleFileImport(folder.path(failSafe));
    std::filesystem::remove(folder.path(userFile));
    std::filesystem::create_directory(folder.path(userFile)); // in the way
    review()->importAction();
    const auto* foot = in<FootNotices>("notices");
    EXPECT_EQ(in<ElidedLabel>("noticeText")->text(),
        QStringLiteral("Nothing was written, the last change is not in the rules file: ")
            + label("failureLabel"));

    std::filesystem::remove(folder.path(userFile));
    const auto buttons = foot->findChildren<QPushButton*>();
    const auto writeNow = std::find_if(buttons.begin(), buttons.end(),
        [](const QPushButton* button) { return button->text() == QStringLiteral("Write Now"); });
    ASSERT_NE(writeNow, buttons.end());
    (*writeNow)->click();
    EXPECT_NE(userRules().find("\"/c\""), std::string::npos);
    EXPECT_EQ(foot->count(), 0U);
    EXPECT_TRUE(std::filesystem::exists(folder.path(failSafe))) << "offered again, to be left or taken";
}

TEST_F(RulesExchange, AnotherImportReplacesAReviewThatIsOpen)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    window->handleFailSafeImport();
    const std::string second = folder.write("Second.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    window->handleFileImport(second);
    EXPECT_EQ(window->findChildren<ImportWindowController*>().size(), 1);
    EXPECT_EQ(review()->path(), second);
    EXPECT_TRUE(std::filesystem::exists(folder.path(failSafe))) << "suggestions stay that were only replaced";
}

TEST_F(RulesExchange, FilesAreReviewedOneAfterTheOther)
{
    const std::string first = folder.write("First.quorv", "watch prefix \"/v\" \"/bin/sh\" r\n");
    const std::string second = folder.write("Second.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    window->reviewFiles({first, folder.path("Gone.quorv"), second});
    EXPECT_EQ(reviewedFile(), first);
    window->reviewFiles({first});
    EXPECT_EQ(reviewedFile(), first) << "one that is open stays";
    review()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == second; }));
    review()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == first; }));
    review()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile().empty(); }));
}

TEST_F(RulesExchange, FilesAreReviewedAfterSuggestionsThatAreDue)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    open();
    const std::string file = folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    window->reviewFiles({file});
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == folder.path(failSafe); }));
    review()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == file; }));
}

TEST_F(RulesExchange, FilesAreReviewedWhenTheSuggestionsThatWereDueAreGone)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    open();
    const std::string file = folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    window->reviewFiles({file});
    std::filesystem::remove(folder.path(failSafe));
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == file; }));
}

TEST_F(RulesExchange, ExchangeFilesThatAreDroppedOnTheWindowAreReviewed)
{
    const std::string file = folder.write("Photo Tools,2.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    const std::string other = folder.write("Notes.txt", "watch prefix \"/w\" \"/bin/sh\" r\n");
    EXPECT_TRUE(drop({other, file}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile() == file; }));
    review()->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return reviewedFile().empty(); }));
}

TEST_F(RulesExchange, OtherFilesCannotBeDroppedOnTheWindow)
{
    EXPECT_FALSE(drop({folder.write("Notes.txt", "watch prefix \"/w\" \"/bin/sh\" r\n")}));
    EXPECT_FALSE(drop({}));
}

TEST_F(RulesExchange, FilesThatWouldBeMovedCannotBeDroppedOnTheWindow)
{
    EXPECT_FALSE(drop({folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n")}, Qt::MoveAction));
}

TEST_F(RulesExchange, AReviewKnowsWhichRulesArePresentNow)
{
    window->handleFileImport(folder.write("Tools.quorv", "allow prefix \"/a\" \"/bin/sh\" r\n"));
    const auto counts = [this] { return review()->findChild<QLabel*>(QStringLiteral("countLabel"))->text(); };
    const QString present = QStringLiteral("1 of 1 rules ticked, 1 already present (in italics)");
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == present; }));
    window->deleteRow(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == QStringLiteral("1 of 1 rules ticked"); }));
    store->addPolicyRule(test::policyRule({.path = "/a", .processName = "/bin/sh", .operations = 1}));
    window->reloadData();
    EXPECT_TRUE(QTest::qWaitFor([&] { return counts() == present; }));
}

TEST_F(RulesExchange, AReviewCountsAnewOnlyWhenRulesHaveChanged)
{
    window->handleFileImport(folder.write("Tools.quorv", "allow prefix \"/a\" \"/bin/sh\" r\n"));
    const QSignalSpy counts(review()->findChild<RulesTableView*>()->model(), &QAbstractItemModel::modelReset);
    in<QLineEdit>("searchField")->setText(QStringLiteral("/a"));
    action("hideSystemToolbarItem")->trigger();
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    EXPECT_EQ(counts.count(), 0);
    window->deleteRow(0);
    EXPECT_EQ(counts.count(), 1);
    window->reloadData();
    EXPECT_EQ(counts.count(), 2);
}

TEST_F(RulesExchange, RulesHandedOverOutliveAnotherChangeOfTheFileAndAnotherImport)
{
    const std::string other = folder.write("Other.quorv", "allow path /o any r\n");
    window->handleFileImport(folder.write("Tools.quorv",
        "allow prefix \"/c\" \"/bin/sh\" r\n"
        "allow prefix \"/d\" \"/bin/sh\" r\n"));
    MeanwhileDelegate delegate(*window, [&] {
        int second = 0;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            const timespec time{1'700'000'000 + second++, 0};
            const timespec times[]{time, time};
            utimensat(AT_FDCWD, folder.path(userFile).c_str(), times, 0);
            return log.lines().back().starts_with("reloading data");
        }));
        QTest::qWait(0);
        window->handleFileImport(other);
    });
    auto* first = review();
    first->setDelegate(&delegate);
    first->importAction();
    EXPECT_EQ(shownPaths(), QStringLiteral("/b /a /c /d"));
    EXPECT_NE(userRules().find("\"/c\""), std::string::npos);
    EXPECT_EQ(application.notices.at(0).message, "Successfully imported 2 rules");
}

TEST_F(RulesExchange, SuggestionsAreExplainedByWhereTheyComeFrom)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    window->handleFailSafeImport();
    EXPECT_EQ(review()->path(), folder.path(failSafe));
    EXPECT_EQ(notices(), "New Rule Suggestions|");
    folder.write(failSafe + ".strict", "");
    window->handleFailSafeImport();
    EXPECT_EQ(notices(), "New Rule Suggestions|Unauthorized Access Attempts|");
}

TEST_F(RulesExchange, EveryImportDropsPendingSuggestions)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    folder.write(failSafe + ".strict", "");
    window->handleFileImport(folder.write("Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n"));
    review()->importAction();
    EXPECT_FALSE(std::filesystem::exists(folder.path(failSafe)));
    EXPECT_FALSE(std::filesystem::exists(folder.path(failSafe + ".strict")));
}

TEST_F(RulesExchange, SuggestionsAreReviewedHalfASecondAfterTheStart)
{
    folder.write(failSafe, "allow prefix \"/c\" \"/bin/sh\" r\n");
    QElapsedTimer sinceStart;
    sinceStart.start();
    open();
    EXPECT_EQ(review(), nullptr);
    EXPECT_TRUE(QTest::qWaitFor([this] { return review() != nullptr; }));
    EXPECT_GE(sinceStart.elapsed(), 499) << "a lower bound, which no busy machine breaks";
}

TEST_F(RulesExchange, TheWindowIsMadeReadyOnce)
{
    EXPECT_EQ(log.lines().front(), "-[RulesEditorTableController init]");
    window->setWindowTitle(QStringLiteral("since"));
    window->awakeFromNib(); // the constructor has done it
    EXPECT_EQ(window->windowTitle(), QStringLiteral("since"));
}

TEST_F(RulesExchange, TheImportPanelTakesOneExchangeFile)
{
    folder.write("root/Users/Shared/Quorvane Extras/Tools.quorv", "watch prefix \"/w\" \"/bin/sh\" r\n");
    importWith([this](QFileDialog& panel) {
        EXPECT_EQ(panel.windowTitle(), QStringLiteral("Import Files"));
        EXPECT_EQ(panel.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(panel.nameFilters(), QStringList(QStringLiteral("Rules (*.quorv *.QUORV *.Quorv)")));
        EXPECT_EQ(panel.directory().path(), toQt(folder.path("root/Users/Shared/Quorvane Extras")));
        panel.selectFile(QStringLiteral("Tools.quorv"));
        QMetaObject::invokeMethod(&panel, "accept");
    });
    ASSERT_NE(review(), nullptr);
    EXPECT_EQ(review()->path(), folder.path("root/Users/Shared/Quorvane Extras/Tools.quorv"));
}

TEST_F(RulesExchange, TheImportPanelListsNoFileThatItWouldRefuse)
{
    for (const char* name : {"a.quorv", "b.QUORV", "c.Quorv", "d.qUORV", "e.txt"})
        folder.write(std::string("root/Users/Shared/Quorvane Extras/") + name, "watch path \"/w\" any r\n");
    importWith([](QFileDialog& panel) {
        const auto* list = panel.findChild<QAbstractItemView*>(QStringLiteral("treeView"));
        QStringList listed;
        EXPECT_TRUE(QTest::qWaitFor([&] { // a folder is read on another thread
            listed.clear();
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
                listed.append(list->model()->index(row, 0, list->rootIndex()).data().toString());
            listed.sort();
            return listed.join(QLatin1Char(' ')) == QLatin1String("a.quorv b.QUORV c.Quorv");
        })) << listed.join(QLatin1Char(' ')).toStdString();
        panel.reject();
    });
    EXPECT_EQ(review(), nullptr);
}

TEST_F(RulesExchange, AFileOfAnyNameInAnyFolderIsImported)
{
    for (const char* name : {"Käse/Käse.quorv", "100%25 #1/it's.quorv", "a b/say \"hi\" & <b>.QUORV"}) {
        SCOPED_TRACE(name);
        const std::string file = folder.write(name, "watch prefix \"/w\" \"/bin/sh\" r\n");
        importWith([&](QFileDialog& panel) {
            panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(toQt(file));
            QTimer::singleShot(0, &panel, [] {
                auto* refusal = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                ASSERT_NE(refusal, nullptr);
                ADD_FAILURE() << fromQt(refusal->text());
                refusal->accept();
            });
            QMetaObject::invokeMethod(&panel, "accept");
            if (panel.isVisible())
                panel.reject();
        });
        ASSERT_NE(review(), nullptr);
        EXPECT_EQ(review()->path(), file);
        delete review();
    }
}

TEST_F(RulesExchange, WhatCannotBeOpenedIsRefusedByThePanel)
{
    const struct {
        const char* why;
        std::string typed;
        const char* refusal;
    } cases[] = {
        {"another type", folder.write("Tools.txt", "allow path /a any r\n"),
            "Please choose a file whose name ends in .quorv."},
        {"of the type's spellings only three are known", folder.write("Tools.qUORV", "allow path /a any r\n"),
            "Please choose a file whose name ends in .quorv."},
        {"nothing there", "<b>gone</b>.quorv", "There is no file \u201c<b>gone</b>.quorv\u201d."},
        {"not UTF-8", folder.write("Latin.quorv", "allow prefix \"/caf\xe9\" any r\n"),
            "\u201cLatin.quorv\u201d cannot be read, or is not UTF-8 text."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        importWith([&](QFileDialog& panel) {
            panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(toQt(c.typed));
            QString refusal;
            QTimer::singleShot(0, &panel, [&refusal] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                ASSERT_NE(box, nullptr);
                EXPECT_EQ(box->textFormat(), Qt::PlainText);
                refusal = box->text();
                box->accept();
            });
            QMetaObject::invokeMethod(&panel, "accept");
            EXPECT_EQ(refusal, toQt(c.refusal));
            EXPECT_TRUE(panel.isVisible());
            panel.reject();
        });
        EXPECT_EQ(review(), nullptr);
        EXPECT_EQ(log.lines().back(), "-[RulesEditorTableController handleFileImport:] (null)");
    }
}

TEST_F(RulesExchange, AFolderThatIsNamedIsOpenedByThePanels)
{
    folder.write("100% #1/Tools.quorv", "");
    const auto enter = [this](QFileDialog& panel) {
        auto* field = panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        field->setText(toQt(folder.path("100% #1")));
        QMetaObject::invokeMethod(&panel, "accept");
        EXPECT_TRUE(panel.isVisible());
        EXPECT_EQ(panel.directory().path(), toQt(folder.path("100% #1")));
        EXPECT_EQ(field->text(), QString());
        panel.reject();
    };
    importWith(enter);
    action("exportMenuItem")->trigger();
    enter(*window->findChild<QFileDialog*>());
}

TEST_F(RulesExchange, TheWholeFileIsExportedAsItIs)
{
    action("exportMenuItem")->trigger();
    auto* panel = window->findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(
        panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), QStringLiteral("ann.quorv"));
    EXPECT_EQ(panel->directory().path(), QDir::homePath());
    saveAs(folder.path("a #b.quorv"));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("a #b.quorv")), ownRules);
}

TEST_F(RulesExchange, AnExportThatIsLeftWritesNothing)
{
    action("exportMenuItem")->trigger();
    window->findChild<QFileDialog*>()->reject();
    EXPECT_FALSE(std::filesystem::exists(folder.path("ann.quorv")));
}

TEST_F(RulesExchange, ThePanelOfAnExportIsGoneAfterIt)
{
    action("exportMenuItem")->trigger();
    saveAs(folder.path("out.quorv"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<QFileDialog*>() == nullptr; }));
}

TEST_F(RulesExchange, TheWholeFileExportedOntoItselfStays)
{
    std::filesystem::create_symlink(folder.path(userFile), folder.path("link.quorv"));
    action("exportMenuItem")->trigger();
    saveAs(folder.path("link.quorv"));
    EXPECT_EQ(userRules(), ownRules);
}

TEST_F(RulesExchange, SelectedRulesCanBeExportedOnlyWhenThereAreSome)
{
    EXPECT_FALSE(action("exportSelectedRulesMenuItem")->isEnabled());
    table->selectRow(1);
    EXPECT_TRUE(action("exportSelectedRulesMenuItem")->isEnabled());
    table->clearSelection();
    EXPECT_FALSE(action("exportSelectedRulesMenuItem")->isEnabled());
}

TEST_F(RulesExchange, OnlyTheSelectedRulesAreExported)
{
    table->selectRow(1);
    action("exportSelectedRulesMenuItem")->trigger();
    table->clearSelection(); // they were selected when the panel was asked for
    saveAs(folder.path("one rule.quorv"));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("one rule.quorv")),
        "allow prefix \"/a\" \"/bin/sh\" r \"shell\" \"\" \"0\"\n");
}

TEST_F(RulesExchange, SeveralSelectedRulesAreExportedInTheOrderOfTheirRows)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    ASSERT_EQ(shownPaths(), QStringLiteral("/a /b"));
    select({1, 0}); // the lower row first
    action("exportSelectedRulesMenuItem")->trigger();
    saveAs(folder.path("both.quorv"));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("both.quorv")),
        "allow prefix \"/a\" \"/bin/sh\" r \"shell\" \"\" \"0\"\n"
        "allow prefix \"/b\" \"/bin/sh\" r \"shell\" \"\" \"0\"\n");
}

TEST_F(RulesExchange, RulesAreExportedUnderTheVeryNameThatIsChosen)
{
    table->selectRow(1);
    std::filesystem::create_directory(folder.path("it's 100%25 #1"));
    for (const char* command : {"exportMenuItem", "exportSelectedRulesMenuItem"}) {
        for (const char* name : {"Käse.quorv", "a#b%20c.Quorv", "it's 100%25 #1/say \"hi\".QUORV"}) {
            SCOPED_TRACE(name);
            action(command)->trigger();
            saveAs(folder.path(name));
            EXPECT_TRUE(std::filesystem::remove(folder.path(name)));
        }
    }
}

TEST_F(RulesExchange, ANameWithoutTheTypeOfExchangeFilesGetsIt)
{
    const struct {
        const char* typed;
        const char* written;
    } cases[] = {{"Tools", "Tools.quorv"}, {"Tools.txt", "Tools.txt.quorv"}, {"v1.2", "v1.2.quorv"},
        {"Tools.", "Tools..quorv"}, {"a b", "a b.quorv"}};
    for (const auto& c : cases) {
        action("exportMenuItem")->trigger();
        saveAs(folder.path(c.typed));
        EXPECT_EQ(test::TemporaryFolder::contents(folder.path(c.written)), ownRules) << c.typed;
        EXPECT_FALSE(std::filesystem::exists(folder.path(c.typed))) << c.typed;
    }
}

TEST_F(RulesExchange, TheFileThatWouldBeReplacedIsAskedAbout)
{
    folder.write("Tools.quorv", "kept");
    action("exportMenuItem")->trigger();
    auto* panel = window->findChild<QFileDialog*>();
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(toQt(folder.path("Tools")));
    QString question;
    QTimer::singleShot(0, panel, [&question] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::No));
        question = box->text();
        box->button(QMessageBox::No)->click();
    });
    QMetaObject::invokeMethod(panel, "accept");
    EXPECT_EQ(question, toQt("\u201cTools.quorv\u201d already exists.\nDo you want to replace it?"));
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("Tools.quorv")), "kept");
}

TEST_F(RulesExchange, AFolderThatIsNotThereIsRefusedByTheSavePanel)
{
    action("exportMenuItem")->trigger();
    auto* panel = window->findChild<QFileDialog*>();
    panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(toQt(folder.path("gone/a.quorv")));
    QString refusal;
    QTimer::singleShot(0, panel, [&refusal] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        refusal = box->text();
        box->accept();
    });
    QMetaObject::invokeMethod(panel, "accept");
    EXPECT_EQ(refusal, toQt("No file can be saved as \u201c" + folder.path("gone/a.quorv") + "\u201d."));
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(RulesExchange, SelectedRulesDoNotReplaceTheRulesFile)
{
    table->selectRow(1);
    std::filesystem::create_symlink(folder.path(userFile), folder.path("link.quorv"));
    action("exportSelectedRulesMenuItem")->trigger();
    saveAs(folder.path("link.quorv"));
    EXPECT_EQ(userRules(), ownRules);
    EXPECT_EQ(log.lines().back(),
        "not exporting to '" + folder.path("link.quorv")
            + "': the rules that are not selected would be lost");
}

TEST_F(RulesExchange, AFailedExportIsOnlyLogged)
{
    table->selectRow(1);
    action("exportSelectedRulesMenuItem")->trigger();
    std::filesystem::create_symlink("/dev/full", folder.path("full.quorv"));
    saveAs(folder.path("full.quorv"));
    EXPECT_TRUE(log.lines().back().starts_with("error on export: ")) << log.lines().back();
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
    EXPECT_EQ(notices(), "");
}

} // namespace quorvane::windows
