#include "windows/MapWindow.h"

#include "tests/windows/EditorTable.h"
#include "windows/AccessModel.h"
#include "windows/RulesTableModel.h"
#include "windows/WindowLook.h"
#include "workflow/RuleEdits.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>

namespace quorvane::windows {

namespace {

class Map : public test::EditorTable {
protected:
    Map()
    {
        box.writeSystemFile("quorvane.rc", "deny prefix \"/opt/\" \"/usr/bin/zip\" r\n");
        open("watch suffix \".conf\" \"/bin/vi\" r \"\"\n"
             "allow prefix \"/etc/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
             "deny path \"/etc/ssh/key\" \"/bin/sh\" w \"\" \"\" \"0\"\n"
             "allow prefix \"/home/\" \"/bin/vi\" r \"\" \"\" \"0\"\n");
        openMap();
    }

    void openMap()
    {
        action("mapMenuItem")->trigger();
        map = window->findChild<MapWindow*>();
        tree = map->findChild<QTreeView*>();
        EXPECT_TRUE(QTest::qWaitFor([this] { return tree->model()->rowCount() > 0; }));
    }
    void openMapAgain()
    {
        map->close();
        EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<MapWindow*>() == nullptr; }));
        openMap();
    }
    void addRuleOn(const std::string& path)
    {
        document->perform(
            workflow::additionOf(test::policyRule({.path = path, .processName = "any", .operations = 1})),
            {"Add"});
        window->reloadData();
    }

    template <class Act> void afterMaking(Act act)
    {
        QSignalSpy made(map, &MapWindow::wasMade);
        act();
        EXPECT_TRUE(!made.isEmpty() || made.wait());
    }
    std::string textOf(const QModelIndex& parent = {}, const std::string& indent = "") const
    {
        std::string text;
        for (int row = 0; row < tree->model()->rowCount(parent); ++row) {
            const QModelIndex index = tree->model()->index(row, AccessModel::place, parent);
            text += indent + index.data().toString().toStdString() + ": "
                + index.siblingAtColumn(AccessModel::bar).data().toString().toStdString() + "\n"
                + textOf(index, indent + "  ");
        }
        return text;
    }
    QModelIndex top(int row) const { return tree->model()->index(row, 0); }
    QString foot() const { return map->findChild<QLabel*>(QStringLiteral("countLabel"))->text(); }

    MapWindow* map = nullptr;
    QTreeView* tree = nullptr;
};

} // namespace

TEST_F(Map, ShowsTheFoldersOfTheUsersRulesInWords)
{
    const QAbstractItemModelTester tester(tree->model());
    EXPECT_EQ(textOf(),
        "Paths by their ending: 1 watch\n"
        "/etc/: 1 allow, 1 deny\n"
        "  ssh/: 1 deny\n"
        "/home/: 1 allow\n");
    EXPECT_EQ(foot(), QStringLiteral("On the map: 2 allow, 1 deny, 1 watch."));
    EXPECT_EQ(top(1).siblingAtColumn(AccessModel::programs).data().toString(), QStringLiteral("sh (2)"));
    EXPECT_EQ(top(1).siblingAtColumn(AccessModel::deny).data().toString(), QStringLiteral("1"));
}

TEST_F(Map, OpensWithTheKeyboardInItsTree)
{
    EXPECT_EQ(map->focusWidget(), tree);
    EXPECT_EQ(tree->currentIndex(), top(0));
    EXPECT_TRUE(tree->isExpanded(top(1))) << "the top is open";
}

TEST_F(Map, AddsTheSystemRulesOnRequest)
{
    afterMaking([this] { map->findChild<QCheckBox*>()->click(); });
    EXPECT_NE(textOf().find("/opt/: 1 deny"), std::string::npos);
}

TEST_F(Map, ShowsTheProgramsAndTheirPlaces)
{
    afterMaking([this] { map->findChild<QComboBox*>()->setCurrentIndex(1); });
    EXPECT_EQ(textOf(),
        "/bin/sh: 1 allow, 1 deny\n"
        "  /etc/: 1 allow, 1 deny\n"
        "    ssh/: 1 deny\n"
        "/bin/vi: 1 allow, 1 watch\n"
        "  Paths by their ending: 1 watch\n"
        "  /home/: 1 allow\n");
    EXPECT_TRUE(tree->isColumnHidden(AccessModel::programs));
    EXPECT_EQ(tree->header()->length(), tree->viewport()->width());
    EXPECT_GT(tree->columnWidth(AccessModel::place), 250) << "the place has what the programs leave";

    afterMaking([this] { map->findChild<QComboBox*>()->setCurrentIndex(0); });
    EXPECT_FALSE(tree->isColumnHidden(AccessModel::programs));
    EXPECT_EQ(tree->header()->length(), tree->viewport()->width());
}

TEST_F(Map, SaysThatItLooksAtTheRulesMeanwhile)
{
    afterMaking([this] {
        map->findChild<QComboBox*>()->setCurrentIndex(1);
        EXPECT_EQ(foot(), QStringLiteral("Looking at the rules…"));
    });
    EXPECT_EQ(foot(), QStringLiteral("On the map: 2 allow, 1 deny, 1 watch."));
}

TEST_F(Map, OpensItsTopWhereThatIsNoLongList)
{
    for (int folder = 0; folder < 197; ++folder)
        store->addPolicyRule(test::policyRule(
            {.path = "/" + std::to_string(folder) + "/", .processName = "any", .operations = 1}));
    const auto isTopOpen = [this] {
        EXPECT_TRUE(QTest::qWaitFor([this] { return foot().startsWith(QStringLiteral("On the map")); }));
        for (int row = 0; row < tree->model()->rowCount(); ++row) {
            if (top(row).data().toString() == QStringLiteral("/etc/"))
                return tree->isExpanded(top(row));
        }
        return false;
    };
    openMapAgain();
    EXPECT_EQ(tree->model()->rowCount(), 200);
    EXPECT_TRUE(isTopOpen());
    addRuleOn("/197/");
    openMapAgain();
    EXPECT_EQ(tree->model()->rowCount(), 201);
    EXPECT_FALSE(isTopOpen());
}

TEST_F(Map, ClosesByItsButtonAndKeepsItsSize)
{
    map->resize(700, 400);
    map->findChild<QPushButton*>(QStringLiteral("closeButton"))->click();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<MapWindow*>() == nullptr; }));
    openMap();
    EXPECT_EQ(map->size(), QSize(700, 400));
}

TEST_F(Map, LeavesSystemRulesHiddenInTheTableWhereItSelectsAUsersRuleToo)
{
    addRuleOn("/opt/mine/"); // below that of the system
    afterMaking([this] { map->findChild<QCheckBox*>()->click(); });
    const int row = tree->model()->rowCount() - 1;
    ASSERT_EQ(
        top(row).siblingAtColumn(AccessModel::bar).data().toString(), QStringLiteral("1 allow, 1 deny"));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(top(row)).center());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/opt/mine/"));
    EXPECT_EQ(foot(), QStringLiteral("Selected in the table: 1 rule."));
}

TEST_F(Map, CountsOnlyTheRulesThatItSelects)
{
    in<QLineEdit>("searchField")->setText(QStringLiteral("one")); // the tag of the first rule of the place
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(top(1)).center());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/etc/"));
    EXPECT_EQ(foot(), QStringLiteral("Selected in the table: 1 rule."));
}

TEST_F(Map, SelectsTheRulesOfAPlaceThatIsClicked)
{
    in<QLineEdit>("searchField")->setText(QStringLiteral("home"));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(top(1)).center());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/etc/ /etc/ssh/key"));
    EXPECT_EQ(foot(), QStringLiteral("Selected in the table: 2 rules."));
}

TEST_F(Map, SelectsTheRulesOfTheCurrentPlaceByReturn)
{
    tree->setCurrentIndex(top(2));
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/home/"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == window.get(); }));
}

TEST_F(Map, FollowsTheRulesAndKeepsWhatIsOpen)
{
    afterMaking([&] { addRuleOn("/etc/ssh/keys/mine"); });
    tree->expand(top(1));
    tree->setCurrentIndex(tree->model()->index(0, 0, top(1)));
    afterMaking([&] { addRuleOn("/a/"); });
    EXPECT_EQ(top(1).data().toString(), QStringLiteral("/a/"));
    EXPECT_TRUE(tree->isExpanded(top(2)));
    tree->setCurrentIndex(top(1));
    afterMaking([&] { addRuleOn("/b/"); });
    EXPECT_TRUE(tree->isExpanded(top(3))) << "although nothing in it is current";
    tree->setCurrentIndex(tree->model()->index(0, 0, top(3)));
    EXPECT_EQ(tree->currentIndex().data().toString(), QStringLiteral("ssh/"));
    EXPECT_GT(tree->model()->rowCount(tree->currentIndex()), 0);
    EXPECT_FALSE(tree->isExpanded(tree->currentIndex())) << "what is closed stays closed";
}

TEST_F(Map, SaysThatThereAreNoRules)
{
    afterMaking([this] {
        document->perform(workflow::deletionOf(*store, store->userRules()), {"Delete"});
        window->reloadData();
    });
    EXPECT_EQ(foot(), QStringLiteral("There are no rules."));
    QTest::keyClick(tree, Qt::Key_Return);
}

TEST_F(Map, HasACurrentPlaceAlsoWhenTheOneBeforeIsGone)
{
    tree->setCurrentIndex(top(2));
    const auto home = store->userRules().back();
    afterMaking([this, &home] {
        document->perform(workflow::deletionOf(*store, {home}), {"Delete"});
        window->reloadData();
    });
    EXPECT_EQ(tree->currentIndex(), top(0));
}

TEST_F(Map, SamplesOfItsBarsFollowTheLook)
{
    const auto sample
        = [this] { return map->findChild<QLabel*>(QStringLiteral("denySample"))->pixmap().toImage(); };
    const QImage light = sample();
    setAppearance(*qApp, {.isDark = true});
    EXPECT_TRUE(QTest::qWaitFor([&] { return sample() != light; }));
    setAppearance(*qApp, {});
    EXPECT_TRUE(QTest::qWaitFor([&] { return sample() == light; }));
}

} // namespace quorvane::windows
