#include "windows/EditWatchWindowController.h"
#include "rules/RuleCodes.h"
#include "tests/windows/EditorWindow.h"

namespace quorvane::windows {

namespace {

class EditWatchWindow : public test::EditorWindow<EditWatchWindowController> {
protected:
    void open(const rules::WatchRulePtr& rule)
    {
        EditorWindow::open([&](EditWatchWindowController& window) { window.setWatchRule(rule); });
    }
    rules::WatchRulePtr openStored(rules::WatchRuleFields fields)
    {
        const auto rule = test::watchRule(std::move(fields));
        store.addWatchRule(rule);
        open(rule);
        return rule;
    }
};

const rules::WatchRuleFields sampleWatchRule{.policyType = rules::PolicyType::suffix,
    .path = ".jpg",
    .processName = "/bin/sh",
    .tag = "mine",
    .operations = 2 | 16,
    .flags = 2};

} // namespace

TEST_F(EditWatchWindow, ShowsTheFieldsOfTheRule)
{
    open(test::watchRule(sampleWatchRule));
    EXPECT_EQ(popUp("watchTypePopUp")->currentIndex(), rules::PolicyType::suffix);
    EXPECT_EQ(text("pathTextField"), ".jpg");
    EXPECT_EQ(text("processNameTextField"), "/bin/sh");
    EXPECT_FALSE(box("opReadButton")->isChecked());
    EXPECT_TRUE(box("opWriteButton")->isChecked());
    EXPECT_FALSE(box("opCreateButton")->isChecked());
    EXPECT_FALSE(box("opMountButton")->isChecked());
    EXPECT_TRUE(box("opExecButton")->isChecked());
    EXPECT_EQ(button("saveButton")->text(), QStringLiteral("Save"));
    EXPECT_FALSE(label("iconImageView")->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_EQ(log.lines(),
        std::vector<std::string>{"-[EditWatchWindowController updateWatchEditor] path .jpg process /bin/sh"});
}

TEST_F(EditWatchWindow, HasNeitherClassNorConstraint)
{
    open(test::watchRule(sampleWatchRule));
    EXPECT_EQ(editor->findChildren<QComboBox*>().size(), 1);
    EXPECT_EQ(editor->findChildren<QLineEdit*>().size(), 2);
}

TEST_F(EditWatchWindow, IsTitledWatchRuleWhateverTheRule)
{
    rules::WatchRuleFields system = sampleWatchRule;
    system.system = true;
    for (const auto& rule :
        {test::watchRule({}), test::watchRule(sampleWatchRule), test::watchRule(system)}) {
        open(rule);
        EXPECT_EQ(editor->windowTitle(), QStringLiteral("Watch Rule"));
    }
}

TEST_F(EditWatchWindow, CanSaveOnceBothPathAndProgramHoldACharacter)
{
    open(test::watchRule({.path = "", .processName = "any"}));
    EXPECT_FALSE(canSave());
    type("pathTextField", "x");
    EXPECT_TRUE(canSave());
    type("processNameTextField", "");
    EXPECT_FALSE(canSave());
}

TEST_F(EditWatchWindow, TheTypeChosenByHandLastsUntilTheNextKeyInThePath)
{
    open(test::watchRule(sampleWatchRule));
    popUp("watchTypePopUp")->setCurrentIndex(rules::PolicyType::prefix);
    type("pathTextField", "/a");
    EXPECT_EQ(popUp("watchTypePopUp")->currentIndex(), rules::PolicyType::path);
    type("pathTextField", "/a/");
    EXPECT_EQ(popUp("watchTypePopUp")->currentIndex(), rules::PolicyType::prefix);
    type("pathTextField", "./");
    EXPECT_EQ(popUp("watchTypePopUp")->currentIndex(), rules::PolicyType::suffix);
}

TEST_F(EditWatchWindow, SavingPutsTheControlsIntoTheRuleAndWritesTheFile)
{
    const auto rule = openStored(sampleWatchRule);
    type("pathTextField", "/Users/ann/");
    type("processNameTextField", "any");
    QTest::mouseClick(box("opReadButton"), Qt::LeftButton);
    QTest::mouseClick(box("opExecButton"), Qt::LeftButton);
    click("saveButton");

    EXPECT_EQ(file(), "watch prefix \"/Users/ann/\" \"any\" rw \"mine\"\n");
    EXPECT_EQ(std::get<rules::WatchRulePtr>(store.ruleAtIndex(0, true)), rule);
    EXPECT_EQ(store.totalRules(true), 1U);
    EXPECT_EQ(rule->flags(), 2U);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_EQ(delegate.reloads, 1);
    EXPECT_EQ(log.lines().back(), "-[EditWatchWindowController saveClicked:]");
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); })) << "deletes itself";
}

TEST_F(EditWatchWindow, EscapeDropsWhatWasTyped)
{
    const auto rule = openStored(sampleWatchRule);
    type("pathTextField", "/typed");
    QTest::keyClick(field("pathTextField"), Qt::Key_Escape);
    EXPECT_EQ(rule->path().view(), ".jpg");
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_EQ(delegate.reloads, 0);
    EXPECT_EQ(log.lines().back(), "-[EditWatchWindowController cancelClicked:]");
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); }));
}

TEST_F(EditWatchWindow, ReturnSaves)
{
    openStored(sampleWatchRule);
    QTest::keyClick(field("pathTextField"), Qt::Key_Return);
    EXPECT_EQ(file(), "watch suffix \".jpg\" \"/bin/sh\" wx \"mine\"\n");
}

TEST_F(EditWatchWindow, ShowsASystemRuleReadOnly)
{
    open(test::watchRule(sampleWatchRule));
    const QRect saveFrame = button("saveButton")->geometry();
    rules::WatchRuleFields fields = sampleWatchRule;
    fields.system = true;
    open(test::watchRule(fields));

    EXPECT_FALSE(button("saveButton")->isVisible());
    EXPECT_EQ(button("cancelButton")->geometry(), saveFrame);
    for (const char* name : {"pathTextField", "processNameTextField"})
        EXPECT_TRUE(field(name)->isReadOnly()) << name;
    for (const char* name : {"watchTypePopUp", "browsePathButton", "browseProcessButton", "opReadButton",
             "opWriteButton", "opCreateButton", "opMountButton", "opExecButton"})
        EXPECT_FALSE(in<QWidget>(*editor, name)->isEnabled()) << name;
    EXPECT_EQ(label("systemImageView")->pixmap(Qt::ReturnByValue).deviceIndependentSize(), QSizeF(12, 12));

    editor->saveClicked();
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_EQ(store.totalRules(true), 0U);
    EXPECT_EQ(log.lines().back(), "-[EditWatchWindowController cancelClicked:]");
    EXPECT_FALSE(editor->isVisible());
}

TEST_F(EditWatchWindow, BrowsesForPathAndProgram)
{
    std::filesystem::create_directories(folder.path("a b"));
    const std::string tool = folder.write("tool", "");
    open(test::watchRule({}));
    choose("browsePathButton", folder.path("a b"));
    EXPECT_EQ(text("pathTextField"), folder.path("a b/"));
    EXPECT_EQ(popUp("watchTypePopUp")->currentIndex(), rules::PolicyType::prefix);
    EXPECT_FALSE(canSave());
    choose("browseProcessButton", tool);
    EXPECT_EQ(text("processNameTextField"), tool);
    EXPECT_TRUE(canSave());
}

TEST_F(EditWatchWindow, TwoEditorsOfOneRuleLeaveOneRuleAndTheLastSaveWins)
{
    const auto rule = openStored(sampleWatchRule);
    const QPointer<EditWatchWindowController> first = editor;
    open(rule);
    type("pathTextField", "/second");
    click("saveButton");
    editor = first;
    type("pathTextField", "/first");
    click("saveButton");
    EXPECT_EQ(file(), "watch path \"/first\" \"/bin/sh\" wx \"mine\"\n");
}

TEST_F(EditWatchWindow, SavingBringsBackARuleThatWasDeletedMeanwhile)
{
    const auto rule = openStored(sampleWatchRule);
    store.deleteWatchRule(*rule);
    click("saveButton");
    EXPECT_EQ(file(), "watch suffix \".jpg\" \"/bin/sh\" wx \"mine\"\n");
}

TEST_F(EditWatchWindow, SavingReplacesTheRuleThatTheStoreHasReadAnewMeanwhile)
{
    folder.write("Users/Shared/Quorvane/ann.quorvane.rc", "watch path /p any r tag\n");
    store.reloadCurrentUserConfiguration();
    open(std::get<rules::WatchRulePtr>(store.ruleAtIndex(0, true)));
    store.reloadCurrentUserConfiguration();
    type("pathTextField", "/q");
    click("saveButton");
    EXPECT_EQ(file(), "watch path \"/q\" \"any\" r \"tag\"\n");
}

} // namespace quorvane::windows
