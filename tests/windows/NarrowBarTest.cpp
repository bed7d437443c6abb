#include "windows/NarrowBar.h"
#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"
#include "tests/windows/EditorTable.h"
#include "workflow/RuleEdits.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QStandardItemModel>
#include <QToolButton>

namespace quorvane::windows {

namespace {

constexpr const char* mixedRules = "watch prefix \"/tmp/\" \"/bin/sh\" r \"one\"\n"
                                   "allow prefix \"/tmp/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
                                   "allow path \"/tmp/\" \"/bin/sh\" r \"\" \"\" \"0\"\n"
                                   "deny path \"/nonexistent/a\" \"/bin/ls\" w \"two\" \"\" \"0\"\n"
                                   "deny suffix \".b\" \"any\" w \"\" \"\" \"0\"\n";
constexpr const char* all = "/tmp/ .b /nonexistent/a /tmp/ /tmp/";

class NarrowBarTest : public test::EditorTable {
protected:
    NarrowBarTest()
    {
        box.writeSystemFile("quorvane.rc", "deny prefix \"/system/\" \"/usr/bin/zip\" r\n");
        open(mixedRules);
        bar = in<NarrowBar>("narrowBar");
    }

    void narrow() const { action("narrowMenuItem")->setChecked(true); }
    QComboBox* choice(const char* name) const { return in<QComboBox>(name); }
    void choose(const char* name, const char* text) const
    {
        const int item = choice(name)->findText(QString::fromLatin1(text));
        ASSERT_GE(item, 0) << text;
        choice(name)->setCurrentIndex(item);
    }
    testing::AssertionResult becomes(const QString& paths) const
    {
        return QTest::qWaitFor([&] { return shownPaths() == paths; })
            ? testing::AssertionSuccess()
            : testing::AssertionFailure() << shownPaths().toStdString();
    }
    void awaitNames() const
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return choice("programChoice")->count() > 1; }));
    }

    NarrowBar* bar = nullptr;
};

} // namespace

TEST_F(NarrowBarTest, IsHiddenUntilItIsAskedForAndTakesTheKeyboard)
{
    EXPECT_FALSE(bar->isVisible());
    narrow();
    EXPECT_TRUE(bar->isVisible());
    EXPECT_TRUE(choice("classChoice")->hasFocus());
    EXPECT_EQ(shownPaths(), QLatin1String(all));
    EXPECT_EQ(counts(), QStringLiteral("5 of 6 rules shown, 1 system rule hidden"));
}

TEST_F(NarrowBarTest, ShowsRulesOfWhichAllHolds)
{
    narrow();
    choose("classChoice", "Deny");
    EXPECT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    EXPECT_EQ(counts(), QStringLiteral("2 of 6 rules shown, 1 system rule hidden, 3 left out by Narrow"));
    choose("typeChoice", "Path");
    EXPECT_TRUE(becomes(QStringLiteral("/nonexistent/a")));
    choose("classChoice", "All");
    EXPECT_TRUE(becomes(QStringLiteral("/nonexistent/a /tmp/")));
}

TEST_F(NarrowBarTest, WorksTogetherWithTheSearch)
{
    narrow();
    choose("classChoice", "Deny");
    EXPECT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    in<QLineEdit>("searchField")->setText(QStringLiteral("/bin/"));
    EXPECT_EQ(shownPaths(), QStringLiteral("/nonexistent/a"));
    in<QLineEdit>("searchField")->setText(QStringLiteral("/bin/sh"));
    EXPECT_EQ(shownPaths(), QString());
    in<QLineEdit>("searchField")->clear();
    EXPECT_EQ(shownPaths(), QStringLiteral(".b /nonexistent/a"));
}

TEST_F(NarrowBarTest, OffersTagsAndProgramsOfTheRules)
{
    narrow();
    awaitNames();
    choose("tagChoice", "one");
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/ /tmp/")));
    choose("tagChoice", "No tag");
    EXPECT_TRUE(becomes(QStringLiteral(".b /tmp/")));
    choose("programChoice", "/bin/sh");
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/")));
}

TEST_F(NarrowBarTest, KeepsAChosenTagThatNoRuleHasAnyMore)
{
    narrow();
    awaitNames();
    choose("tagChoice", "two");
    ASSERT_TRUE(becomes(QStringLiteral("/nonexistent/a")));
    window->deleteRow(0);
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return choice("programChoice")->findText(QStringLiteral("/bin/ls")) < 0; }));
    EXPECT_EQ(choice("tagChoice")->currentText(), QStringLiteral("two"));
    EXPECT_EQ(shownPaths(), QString());
    choose("tagChoice", "All");
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/ .b /tmp/ /tmp/")));
}

TEST_F(NarrowBarTest, FindsTheRulesWithAProblem)
{
    narrow();
    choose("problemChoice", "Path is gone");
    EXPECT_TRUE(becomes(QStringLiteral("/nonexistent/a")));
    choose("problemChoice", "Redundant");
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/")));
    EXPECT_FALSE(in<QLabel>("narrowStatus")->isVisible());
}

TEST(NarrowBar, ShowsItsStatusBesideItsChoicesAndNotOverThem)
{
    NarrowBar bar(nullptr);
    bar.resize(2000, bar.sizeHint().height());
    bar.show();
    bar.setStatus(QStringLiteral("Looking\u2026"));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&bar));
    const auto place
        = [&bar](const QWidget* part) { return QRect(part->mapTo(&bar, QPoint()), part->size()); };
    const auto* status = bar.findChild<QLabel*>(QStringLiteral("narrowStatus"));
    ASSERT_TRUE(status->isVisible());
    EXPECT_EQ(status->text(), QStringLiteral("Looking\u2026"));
    EXPECT_GE(status->width(), status->sizeHint().width());
    for (const QComboBox* choice : bar.findChildren<QComboBox*>())
        EXPECT_FALSE(place(status).intersects(place(choice))) << choice->objectName().toStdString();
    for (const QLabel* title : bar.findChildren<QLabel*>())
        EXPECT_TRUE(title == status || !place(status).intersects(place(title)))
            << title->text().toStdString();
}

TEST_F(NarrowBarTest, SaysThatItLooksForProblemsUntilTheyAreFound)
{
    narrow();
    choose("problemChoice", "Redundant");
    const auto* status = in<QLabel>("narrowStatus");
    EXPECT_EQ(status->text(), QStringLiteral("Looking\u2026"));
    EXPECT_TRUE(status->isVisible());
    EXPECT_EQ(shownPaths(), QString::fromLatin1(all)) << "until then all rules";
    ASSERT_TRUE(becomes(QStringLiteral("/tmp/")));
    EXPECT_EQ(status->text(), QString());
}

TEST_F(NarrowBarTest, FollowsMendedProblems)
{
    narrow();
    choose("problemChoice", "Redundant");
    ASSERT_TRUE(becomes(QStringLiteral("/tmp/")));
    window->deleteRow(0);
    EXPECT_TRUE(becomes(QString()));
    window->undo();
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/")));
}

TEST_F(NarrowBarTest, LooksForOverlapsWhileTheyAreChosen)
{
    narrow();
    choose("problemChoice", "Overlaps");
    EXPECT_TRUE(becomes(QString()));
    document->perform(workflow::additionOf(test::policyRule({.policyClass = rules::PolicyClass::deny,
                          .path = "/tmp/x",
                          .processName = "/bin/sh",
                          .operations = 1})),
        {"Add"});
    window->reloadData();
    EXPECT_TRUE(becomes(QStringLiteral("/tmp/x")));
}

TEST_F(NarrowBarTest, CountsHiddenSystemRulesAmongThoseThatMatch)
{
    narrow();
    choose("stateChoice", "System");
    EXPECT_TRUE(becomes(QString()));
    EXPECT_EQ(counts(), QStringLiteral("0 of 6 rules shown, 1 system rule hidden, 5 left out by Narrow"));
    action("hideSystemToolbarItem")->trigger();
    EXPECT_EQ(shownPaths(), QStringLiteral("/system/"));
}

TEST_F(NarrowBarTest, ShowsAllWithOneClickAtOnce)
{
    narrow();
    auto* clear = in<QToolButton>("clearNarrowButton");
    EXPECT_FALSE(clear->isEnabled());
    choose("classChoice", "Deny");
    choose("typeChoice", "Path");
    ASSERT_TRUE(becomes(QStringLiteral("/nonexistent/a")));
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(shownPaths(), QLatin1String(all));
    EXPECT_EQ(choice("classChoice")->currentIndex(), 0);
    EXPECT_FALSE(clear->isEnabled());
}

TEST_F(NarrowBarTest, ShowsAllWhenItIsHidden)
{
    narrow();
    choose("classChoice", "Deny");
    ASSERT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    action("narrowMenuItem")->setChecked(false);
    EXPECT_EQ(shownPaths(), QLatin1String(all));
    EXPECT_TRUE(table->hasFocus());
    narrow();
    EXPECT_EQ(choice("classChoice")->currentText(), QStringLiteral("All"));
}

TEST_F(NarrowBarTest, IsLeftByEscapeOnceAllIsShown)
{
    narrow();
    choose("classChoice", "Deny");
    ASSERT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    QTest::keyClick(choice("classChoice"), Qt::Key_Escape);
    EXPECT_EQ(shownPaths(), QLatin1String(all));
    EXPECT_TRUE(choice("classChoice")->hasFocus());
    QTest::keyClick(choice("classChoice"), Qt::Key_Escape);
    EXPECT_TRUE(table->hasFocus());
}

TEST_F(NarrowBarTest, GivesWayToARuleThatIsToBeSeen)
{
    narrow();
    choose("classChoice", "Deny");
    ASSERT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    window->revealRule(store->allRules().front());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/tmp/"));
    EXPECT_EQ(choice("classChoice")->currentText(), QStringLiteral("All"));
}

TEST_F(NarrowBarTest, LetsADeletedRuleGoWithoutMakingTheOthersAnew)
{
    narrow();
    choose("classChoice", "Deny");
    ASSERT_TRUE(becomes(QStringLiteral(".b /nonexistent/a")));
    window->deleteRow(0);
    EXPECT_EQ(shownPaths(), QStringLiteral("/nonexistent/a"));
    EXPECT_EQ(counts(), QStringLiteral("1 of 5 rules shown, 1 system rule hidden, 3 left out by Narrow"));
}

TEST_F(NarrowBarTest, HasALabelForEachChoice)
{
    for (const auto* each : bar->findChildren<QComboBox*>()) {
        const auto relations
            = QAccessible::queryAccessibleInterface(bar->findChild<QComboBox*>(each->objectName()))
                  ->relations(QAccessible::Label);
        ASSERT_EQ(relations.size(), 1) << each->objectName().toStdString();
    }
}

TEST_F(NarrowBarTest, KeepsBothEndsOfALongNameInItsListsAndTellsTheWholeOne)
{
    narrow();
    awaitNames();
    for (const char* name : {"tagChoice", "programChoice"}) {
        EXPECT_EQ(choice(name)->view()->textElideMode(), Qt::ElideMiddle) << name;
        EXPECT_GE(choice(name)->view()->minimumWidth(), 300) << name;
        const int last = choice(name)->count() - 1;
        EXPECT_EQ(choice(name)->itemData(last, Qt::ToolTipRole), choice(name)->itemText(last)) << name;
    }
}

TEST_F(NarrowBarTest, IsWalkedByTabToTheButtonThatShowsAll)
{
    narrow();
    choose("classChoice", "Deny");
    choice("programChoice")->setFocus();
    QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(window->focusWidget(), in<QToolButton>("clearNarrowButton"));
}

TEST_F(NarrowBarTest, NamesTheButtonThatShowsAll)
{
    EXPECT_EQ(in<QToolButton>("clearNarrowButton")->text(), QStringLiteral("Show A&ll"));
}

TEST_F(NarrowBarTest, HasRoomForEachOfItsParts)
{
    window->resize(1200, 500);
    narrow();
    QList<QWidget*> parts{in<QToolButton>("clearNarrowButton")};
    for (auto* each : bar->findChildren<QComboBox*>())
        parts.append(each);
    const auto placeOf
        = [this](const QWidget& part) { return QRect(part.mapTo(bar, QPoint()), part.size()); };
    for (const QWidget* part : parts) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return bar->rect().contains(placeOf(*part)); }))
            << part->objectName().toStdString();
        for (const QWidget* other : parts) {
            EXPECT_TRUE(part == other || !placeOf(*part).intersects(placeOf(*other)))
                << part->objectName().toStdString() << " is over " << other->objectName().toStdString();
        }
    }
}

TEST_F(NarrowBarTest, StandsInTwoRowsWhereOneIsTooNarrow)
{
    narrow();
    const auto hasHeight
        = [this](const auto& isRight) { return QTest::qWaitFor([&] { return isRight(bar->height()); }); };
    window->resize(1200, 500);
    const int oneRow = bar->sizeHint().height();
    EXPECT_TRUE(hasHeight([&](int height) { return height == oneRow; }));
    window->resize(560, 500);
    EXPECT_TRUE(hasHeight([&](int height) { return height > oneRow; }));
    EXPECT_EQ(window->width(), 560);
    for (const auto* each : bar->findChildren<QComboBox*>()) {
        EXPECT_LE(each->mapTo(bar, QPoint(each->width(), 0)).x(), bar->width())
            << each->objectName().toStdString();
    }
    window->resize(1200, 500);
    EXPECT_TRUE(hasHeight([&](int height) { return height == oneRow; }));
}

TEST_F(NarrowBarTest, SaysHowManyMoreNamesThereAre)
{
    NarrowBar alone;
    alone.setNames({.tags = {{"a", "b"}, 4213}});
    const auto* tags = alone.findChild<QComboBox*>(QStringLiteral("tagChoice"));
    const int last = tags->count() - 1;
    EXPECT_EQ(tags->itemText(last), QStringLiteral("%1 more: search for them").arg(QLocale().toString(4213)));
    EXPECT_FALSE(tags->model()->flags(tags->model()->index(last, 0)).testFlag(Qt::ItemIsEnabled));
}

} // namespace quorvane::windows
