#include "windows/PlaceMenu.h"
#include "tests/windows/EditorTable.h"
#include "windows/AsideWindow.h"
#include "windows/ElidedLabel.h"
#include "windows/ImportWindowController.h"
#include "windows/ProblemsPanel.h"
#include "windows/RuleEditorWindow.h"
#include "windows/RuleStrip.h"
#include "windows/SelectableText.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"
#include "windows/TouchingWindow.h"
#include "workflow/ImportCells.h"

#include <QDialog>
#include <QDockWidget>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeView>

namespace quorvane::windows {

namespace {

// Which machine the rules are for.
class PlaceMenuTest : public test::EditorTable {
protected:
    PlaceMenuTest()
    {
        volume.write("there", "x");
        open("allow path \"/there\" \"any\" r \"\" \"\" \"0\"\n");
        items = in<QMenu>("placeMenu")->actions();
    }
    bool isRed() const
    {
        QApplication::processEvents(); // the row is made when it is painted
        return cell(0, workflow::RuleColumn::path).data(Qt::ForegroundRole).value<QBrush>().color()
            == shades::red;
    }
    QString foot() const
    {
        const auto* shown = in<QLabel>("placeLabel");
        return shown->isVisible() ? shown->text() : QString();
    }
    // Answers the panel that asks for the volume with this path; leaves it when the path is empty.
    void chooseVolume(const std::string& path)
    {
        QTimer::singleShot(0, window.get(), [path] { answer(path); });
        items[1]->trigger();
    }
    static void answer(const std::string& path)
    {
        auto* panel = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(panel, nullptr);
        if (path.empty())
            return panel->reject();
        panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
        panel->accept();
    }

    test::TemporaryFolder volume;
    QList<QAction*> items;
};

} // namespace

TEST_F(PlaceMenuTest, BeginsWithThisMachine)
{
    EXPECT_TRUE(items[0]->isChecked());
    EXPECT_TRUE(isRed());
    EXPECT_EQ(foot(), QString());
}

TEST_F(PlaceMenuTest, LooksAtAMountedVolumeAndSaysSoAtTheFoot)
{
    chooseVolume(volume.path());
    EXPECT_TRUE(items[1]->isChecked());
    EXPECT_FALSE(isRed());
    EXPECT_EQ(foot(), QStringLiteral("Rules are for: %1/").arg(QString::fromStdString(volume.path())));
    items[0]->trigger();
    EXPECT_TRUE(isRed());
    EXPECT_EQ(foot(), QString());
}

TEST_F(PlaceMenuTest, BindsRulesToTheProgramsOfTheVolume)
{
    volume.write("program", "text");
    const rules::RuleRef rule = test::policyRule({.path = "any", .processName = "/program", .operations = 1});
    store->addPolicyRule(std::get<rules::PolicyRulePtr>(rule));
    window->reloadData();
    chooseVolume(volume.path());
    window->selectRules({rule});
    action("rebindMenuItem")->trigger();
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(rule)->constraint().view(),
        "982d9e3eb996f559e633f4d194def3761d909f5a3b647d1a851fead67c32c9d1");
}

TEST_F(PlaceMenuTest, ShowsTheIconsOfTheVolumesPrograms)
{
    // given a program that is only on the volume
    volume.write("X.app/Contents/MacOS/x", "");
    const auto icon = [this] {
        QApplication::processEvents();
        return cell(1, workflow::RuleColumn::application).data(Qt::DecorationRole).value<QIcon>().cacheKey();
    };
    store->addPolicyRule(
        test::policyRule({.path = "/there", .processName = "/X.app/Contents/MacOS/x", .operations = 1}));
    window->reloadData();
    EXPECT_EQ(icon(), missingProgramImage().cacheKey());

    chooseVolume(volume.path());
    EXPECT_NE(icon(), missingProgramImage().cacheKey());
    items[0]->trigger();
    EXPECT_EQ(icon(), missingProgramImage().cacheKey());
}

TEST_F(PlaceMenuTest, OtherTablesOfRulesLookThereToo)
{
    const auto isRedIn = [this](const char* openItem) {
        action(openItem)->trigger();
        auto* other = window->findChild<TouchingWindow*>();
        other->findChild<QLineEdit*>()->setText(QStringLiteral("/there"));
        QSignalSpy answered(other, &TouchingWindow::wasAnswered);
        EXPECT_TRUE(answered.wait());
        const auto* list = other->findChild<RulesTableView*>();
        const QModelIndex path = list->model()->index(0, static_cast<int>(workflow::RuleColumn::path));
        return path.data(Qt::ForegroundRole).value<QBrush>().color() == shades::red;
    };
    EXPECT_TRUE(isRedIn("whatTouchesMenuItem"));
    window->useVolume(volume.path());
    EXPECT_FALSE(isRedIn("whatTouchesMenuItem"));
}

TEST_F(PlaceMenuTest, ProblemsAndTheRuleInWordsAreThoseOfTheVolume)
{
    auto* strip = window->findChild<RuleStrip*>();
    auto* finder = window->findChild<ProblemsPanel*>()->findChild<QTreeView*>()->model();
    const auto words = [strip] {
        QString text;
        for (const auto* each : strip->findChildren<SelectableText*>())
            text += each->isVisible() ? each->toPlainText() + QLatin1Char('|') : QString();
        return text;
    };
    in<QDockWidget>("problems")->show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return finder->rowCount() == 1; }));
    select({0});
    ASSERT_TRUE(QTest::qWaitFor([&] { return words().contains(QStringLiteral("Path is gone")); }))
        << words().toStdString();

    window->useVolume(volume.path());
    EXPECT_TRUE(QTest::qWaitFor([&] { return finder->rowCount() == 0; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !words().contains(QStringLiteral("Path is gone")); }));
}

TEST_F(PlaceMenuTest, ARuleIsBoundAnewToTheProgramOfTheVolume)
{
    volume.write("program", "text");
    const rules::RuleRef rule = test::policyRule(
        {.path = "any", .processName = "/program", .constraint = std::string(64, 'a'), .operations = 1});
    store->addPolicyRule(std::get<rules::PolicyRulePtr>(rule));
    window->reloadData();
    window->useVolume(volume.path());
    window->selectRules({rule});
    auto* strip = window->findChild<RuleStrip*>();
    const auto bind = [&] { return button(*strip, QStringLiteral("Bind Anew")); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return bind() != nullptr; }));
    QSignalSpy changed(window.get(), &RulesEditorTableController::rulesDidChange);
    bind()->click();
    ASSERT_TRUE(changed.wait());
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(rule)->constraint().view(),
        "982d9e3eb996f559e633f4d194def3761d909f5a3b647d1a851fead67c32c9d1");
}

TEST_F(PlaceMenuTest, EditorsShowTheProgramsOfTheVolume)
{
    volume.write("program", "");
    for (const char* rules : {"allow path \"any\" \"/program\" r \"\" \"\" \"0\"\n",
             "watch path \"/there\" \"/program\" r \"\"\n"}) {
        open(rules);
        const auto icon = [this] {
            select({0});
            action("editSelectedRuleMenuItem")->trigger();
            const QPointer<RuleEditorWindow> editor = window->findChild<RuleEditorWindow*>();
            const QString shown
                = editor->findChild<QLabel*>(QStringLiteral("iconImageView"))->accessibleDescription();
            delete editor;
            return shown;
        };
        EXPECT_EQ(icon(), QString()) << rules;
        window->useVolume(volume.path());
        EXPECT_EQ(icon(), QStringLiteral("program")) << rules;
    }
}

TEST_F(PlaceMenuTest, RulesSetAsideAreLookedUpThereAsWell)
{
    select({0});
    action("setAsideMenuItem")->trigger();
    const auto isRedAside = [this] {
        action("asideMenuItem")->trigger();
        const auto* list = window->findChild<AsideWindow*>()->findChild<RulesTableView*>();
        const QModelIndex path = list->model()->index(0, static_cast<int>(workflow::RuleColumn::path));
        return path.data(Qt::ForegroundRole).value<QBrush>().color() == shades::red;
    };
    EXPECT_TRUE(isRedAside());
    window->useVolume(volume.path());
    EXPECT_FALSE(isRedAside()) << "in a window that is open";
    delete window->findChild<AsideWindow*>();
    EXPECT_FALSE(isRedAside()) << "and in one that is opened then";
}

TEST_F(PlaceMenuTest, ImportsAreReviewedAndBoundThere)
{
    // given rules for a program that is only on the volume
    volume.write("program", "text");
    const std::string quorv = volume.write("rules.quorv", "allow path \"/there\" \"/program\" r \"\"\n");
    chooseVolume(volume.path());

    window->handleFileImport(quorv);
    auto* review = window->findChild<ImportWindowController*>();
    ASSERT_NE(review, nullptr);
    const auto* list = review->findChild<RulesTableView*>();
    for (const workflow::ImportColumn column :
        {workflow::ImportColumn::application, workflow::ImportColumn::path}) {
        const QModelIndex shown = list->model()->index(0, static_cast<int>(column));
        EXPECT_NE(shown.data(Qt::ForegroundRole).value<QBrush>().color(), shades::red);
    }
    review->importAction();
    const std::string sha256OfText = "982d9e3eb996f559e633f4d194def3761d909f5a3b647d1a851fead67c32c9d1";
    EXPECT_NE(file().find(sha256OfText), std::string::npos) << file();
}

TEST_F(PlaceMenuTest, ALongPathWidensNoWindowAndKeepsItsEnd)
{
    const std::string deep = volume.path() + "/" + std::string(200, 'x') + "/disk";
    std::filesystem::create_directories(deep);
    const int narrowest = window->minimumSizeHint().width();
    window->useVolume(deep);
    QApplication::processEvents();
    EXPECT_EQ(window->minimumSizeHint().width(), narrowest);
    EXPECT_TRUE(in<ElidedLabel>("placeLabel")->shownText().endsWith(QStringLiteral("/disk")));
    EXPECT_EQ(in<ElidedLabel>("countLabel")->shownText(), counts()) << "which need room as well";
}

TEST_F(PlaceMenuTest, LooksAtNothingForAMachineThatIsSomewhereElse)
{
    items[2]->trigger();
    EXPECT_FALSE(isRed());
    EXPECT_EQ(foot(), QStringLiteral("Rules are for: somewhere else"));
}

TEST_F(PlaceMenuTest, StaysAsItIsWhenNoVolumeIsChosen)
{
    items[2]->trigger();
    chooseVolume("");
    EXPECT_TRUE(items[2]->isChecked());
    EXPECT_FALSE(isRed());
}

TEST_F(PlaceMenuTest, SaysWhyAFileIsNoVolume)
{
    chooseVolume(volume.path("there"));
    EXPECT_TRUE(items[0]->isChecked());
    EXPECT_TRUE(notice().contains(QStringLiteral("cannot be used as a volume"))) << qPrintable(notice());
}

} // namespace quorvane::windows
