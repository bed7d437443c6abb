#include "windows/EditWatchWindowController.h"
#include "rules/RuleCodes.h"
#include "tests/windows/EditorWindow.h"

namespace quorvane::windows {

namespace {

using EditWatchWindow = test::EditorWindow;

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

TEST_F(EditWatchWindow, SavingPutsTheControlsIntoTheRuleAndWritesTheFile)
{
    const auto rule = test::watchRule(sampleWatchRule);
    openStored(rule);
    type("pathTextField", "/Users/ann/");
    type("processNameTextField", "any");
    QTest::mouseClick(box("opReadButton"), Qt::LeftButton);
    QTest::mouseClick(box("opExecButton"), Qt::LeftButton);
    click("saveButton");

    EXPECT_EQ(file(), "watch prefix \"/Users/ann/\" \"any\" rw \"mine\"\n");
    EXPECT_EQ(std::get<rules::WatchRulePtr>(store.ruleAtIndex(0, true)), rule);
    EXPECT_EQ(rule->flags(), 2U);
}

} // namespace quorvane::windows
