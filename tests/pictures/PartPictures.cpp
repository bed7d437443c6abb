#include "tests/pictures/MainWindowPictures.h"
#include "windows/AuthenticationWindow.h"
#include "windows/ForgetQuestion.h"
#include "windows/LoadingWindow.h"
#include "windows/NoticeWindow.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsPanel.h"

#include <QComboBox>
#include <QDockWidget>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QTimer>
#include <QTreeView>

namespace quorvane::test {

namespace {

// Parts of the main window.
class PartPictures : public MainWindowPictures {
protected:
    QImage pictureOfMenu(const char* name)
    {
        auto* menu = in<QMenu>(name);
        Q_EMIT menu->aboutToShow();
        menu->resize(menu->sizeHint());
        return pictureOf(*menu);
    }
};

// The box that asks while `ask` runs, which is refused.
template <class Ask> QImage pictureOfQuestion(Ask ask)
{
    QImage picture;
    QTimer::singleShot(0, qApp, [&picture] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        picture = pictureOf(*box);
        box->reject();
    });
    ask();
    return picture;
}

} // namespace

TEST_F(PartPictures, ShowRulesInWordsWithTheirProblems)
{
    openOn(rulesOfAllKinds(), {620, 360});
    auto* words = in<QDockWidget>("ruleInWords");
    std::vector<QImage> pictures;
    for (const auto& paths : {std::initializer_list<const char*>{"/etc/passwd"}, {".jpg"},
             {"/nonexistent/letter.txt"}, {".pem", "/etc/", "/usr/"}}) {
        selectAndRead(paths);
        pictures.push_back(pictureOf(*words));
    }
    EXPECT_TRUE(looksAsKept("rule-in-words", stacked(pictures)));
}

TEST_F(PartPictures, ShowTheListOfProblems)
{
    openOn(rulesOfAllKinds(), {900, 440});
    auto* dock = in<QDockWidget>("problems");
    auto* panel = window->findChild<windows::ProblemsPanel*>();
    QSignalSpy found(&panel->finder(), &windows::ProblemsFinder::found);
    dock->show();
    window->resizeDocks({dock}, {280}, Qt::Horizontal);
    ASSERT_TRUE(!found.isEmpty() || found.wait());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !panel->finder().isLooking(); }));
    QSignalSpy filled(window->findChild<windows::RuleStrip*>(), &windows::RuleStrip::wasFilled);
    panel->showNext();
    ASSERT_TRUE(filled.wait());
    EXPECT_TRUE(looksAsKept("problems", pictureOfWindow()));
}

TEST_F(PartPictures, ShowTheNarrowedTable)
{
    openOn(rulesOfAllKinds(), {900, 380});
    in<QAction>("narrowMenuItem")->setChecked(true);
    QSignalSpy narrowed(table->model(), &QAbstractItemModel::modelReset);
    in<QComboBox>("classChoice")->setCurrentIndex(2);
    ASSERT_TRUE(!narrowed.isEmpty() || narrowed.wait());
    const QImage wide = pictureOfWindow();
    window->resize(560, 380);
    EXPECT_TRUE(looksAsKept("narrow", stacked({wide, pictureOfWindow()})));
}

TEST_F(PartPictures, ShowNoticesAndFailuresAtTheFoot)
{
    openOn(rulesOfAllKinds(), {620, 300});
    window->addNotice({QStringLiteral("Another program has changed 2 rules of the file.")});
    const QImage one = pictureOfWindow();
    window->addNotice(
        {QStringLiteral("The file was changed by another program while rules were being written: "
                        "2 rules came and 1 went."),
            {{QStringLiteral("Show"), [] {}}, {QStringLiteral("Undo"), [] {}}}});
    window->showPreferencesFailure(
        QStringLiteral("The preferences could not be saved: No space left on device"));
    EXPECT_TRUE(looksAsKept("notices", stacked({one, pictureOfWindow()})));
}

TEST_F(PartPictures, ShowTheMenus)
{
    openOn(rulesOfAllKinds());
    selectPaths({"/etc/"});
    EXPECT_TRUE(looksAsKept("menus",
        stacked({pictureOfMenu("fileMenu"), pictureOfMenu("editMenu"), pictureOfMenu("rulesMenu"),
            pictureOfMenu("viewMenu"), pictureOfMenu("placeMenu")})));
}

TEST(MessagePictures, ShowANoticeAnAuthenticationAndALoad)
{
    windows::NoticeWindow notice(QStringLiteral("Cannot Delete System Rules"),
        QStringLiteral(
            "System rules are read-only. They can be looked at and copied, but neither changed nor "
            "deleted."),
        QStringLiteral("/nonexistent"));
    notice.setAttribute(Qt::WA_DeleteOnClose, false);
    notice.show();
    windows::AuthenticationWindow authentication(QStringLiteral("/nonexistent"));
    authentication.ask(platform::Awaited::finger, "save the preferences", [] {});
    ASSERT_TRUE(QTest::qWaitForWindowActive(&authentication));
    windows::LoadingWindow loading(QStringLiteral("/nonexistent"), QStringLiteral("Quorvane Configuration"),
        QStringLiteral("Reading the rules…"));
    auto* busy = loading.findChild<QProgressBar*>();
    busy->setRange(0, 2); // a busy one moves
    busy->setValue(1);
    loading.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&loading));
    EXPECT_TRUE(readsAsKept("messages", wordsOf(notice) + wordsOf(authentication) + wordsOf(loading)));
    EXPECT_TRUE(
        looksAsKept("messages", stacked({pictureOf(notice), pictureOf(authentication), pictureOf(loading)})));
}

TEST(MessagePictures, ShowAQuestion)
{
    constexpr std::int64_t day = 86400;
    std::vector<history::JournalVersion> versions;
    for (std::int64_t number = 4; number > 0; --number) {
        versions.emplace_back().number = number;
        versions.back().time = number * day;
    }
    QWidget parent;
    parent.show();
    EXPECT_TRUE(looksAsKept("question",
        pictureOfQuestion([&] { windows::askWhatToForget(parent, QStringLiteral("Rules"), versions, 3); })));
}

} // namespace quorvane::test
