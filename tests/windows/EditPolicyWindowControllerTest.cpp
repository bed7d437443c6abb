#include "windows/EditPolicyWindowController.h"
#include "rules/RuleCodes.h"
#include "tests/windows/EditorWindow.h"

#include <QAccessible>
#include <QWindow>

namespace quorvane::windows {

namespace {

class EditPolicyWindow : public test::EditorWindow {
protected:
    std::string constraintKindShown() const { return fromQt(label("constraintTypeTextField")->text()); }
};

const rules::PolicyRuleFields samplePolicyRule{.policyClass = rules::PolicyClass::deny,
    .policyType = rules::PolicyType::suffix,
    .path = ".jpg",
    .processName = "/bin/sh via /usr/sbin/cron",
    .tag = "mine",
    .constraint = "ABCDE12345",
    .operations = 1 | 8,
    .created = 77};

} // namespace

TEST_F(EditPolicyWindow, ShowsTheFieldsOfTheRule)
{
    open(test::policyRule(samplePolicyRule));
    EXPECT_EQ(popUp("policyClassPopUp")->currentIndex(), rules::PolicyClass::deny);
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::suffix);
    EXPECT_EQ(text("pathTextField"), ".jpg");
    EXPECT_EQ(text("processNameTextField"), "/bin/sh via /usr/sbin/cron");
    EXPECT_EQ(text("constraintTextField"), "ABCDE12345");
    EXPECT_TRUE(box("opReadButton")->isChecked());
    EXPECT_FALSE(box("opWriteButton")->isChecked());
    EXPECT_FALSE(box("opCreateButton")->isChecked());
    EXPECT_TRUE(box("opMountButton")->isChecked());
    EXPECT_FALSE(box("opExecButton")->isChecked());
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("sh"));
    EXPECT_EQ(log.lines(),
        std::vector<std::string>{
            "-[EditPolicyWindowController updatePolicyEditor] path .jpg process /bin/sh via "
            "/usr/sbin/cron"});
}

TEST_F(EditPolicyWindow, TheConstraintIsNamedByItsLength)
{
    open(test::policyRule({.constraint = std::string(40, 'a')}));
    EXPECT_EQ(constraintKindShown(), "SHA1");
    type("constraintTextField", std::string(41, 'a').c_str());
    EXPECT_EQ(constraintKindShown(), "Team ID");
    type("constraintTextField", std::string(64, 'z').c_str());
    EXPECT_EQ(constraintKindShown(), "SHA256");
    type("constraintTextField", "");
    EXPECT_EQ(constraintKindShown(), "Team ID");
    editor->showDraft({.constraint = std::string(40, 'a')});
    EXPECT_EQ(constraintKindShown(), "SHA1");
}

TEST_F(EditPolicyWindow, TheConstraintsKindIsTheNameOfItsField)
{
    open(test::policyRule({.constraint = std::string(40, 'a')}));
    EXPECT_EQ(label("constraintTypeTextField")->buddy(), field("constraintTextField"));
    const QAccessibleInterface* shown = QAccessible::queryAccessibleInterface(field("constraintTextField"));
    EXPECT_EQ(shown->text(QAccessible::Name), QStringLiteral("SHA1"));
}

TEST_F(EditPolicyWindow, SavingPutsTheControlsIntoTheRuleAndWritesTheFile)
{
    const auto rule = test::policyRule(samplePolicyRule);
    openStored(rule);
    popUp("policyClassPopUp")->setCurrentIndex(rules::PolicyClass::allow);
    type("pathTextField", "/Users/ann/");
    type("processNameTextField", "/usr/bin/env");
    type("constraintTextField", "");
    QTest::mouseClick(box("opWriteButton"), Qt::LeftButton);
    QTest::mouseClick(box("opMountButton"), Qt::LeftButton);
    click("saveButton");

    EXPECT_EQ(file(), "allow prefix \"/Users/ann/\" \"/usr/bin/env\" rw \"mine\" \"\" \"77\"\n");
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(store.ruleAtIndex(0, true)), rule);
}

TEST_F(EditPolicyWindow, KeepsAClassThatHasNoItem)
{
    openStored(test::policyRule(
        {.policyClass = rules::unknownCode, .path = "/p", .processName = "any", .operations = 1}));
    EXPECT_EQ(popUp("policyClassPopUp")->currentIndex(), -1);
    click("saveButton");
    EXPECT_EQ(file(), "err prefix \"/p\" \"any\" r \"\" \"\" \"0\"\n");
}

TEST_F(EditPolicyWindow, AClassOrConstraintAloneIsAnUnsavedChange)
{
    openStored(test::policyRule(samplePolicyRule));
    popUp("policyClassPopUp")->setCurrentIndex(rules::PolicyClass::allow);
    EXPECT_TRUE(editor->hasUnsavedChanges());
    popUp("policyClassPopUp")->setCurrentIndex(rules::PolicyClass::deny);
    EXPECT_FALSE(editor->hasUnsavedChanges());
    type("constraintTextField", "");
    EXPECT_TRUE(editor->hasUnsavedChanges());
}

TEST_F(EditPolicyWindow, ShowsClassAndConstraintOfASystemRuleReadOnly)
{
    rules::PolicyRuleFields fields = samplePolicyRule;
    fields.system = true;
    open(test::policyRule(fields));
    EXPECT_FALSE(popUp("policyClassPopUp")->isEnabled());
    EXPECT_TRUE(field("constraintTextField")->isReadOnly());
}

TEST_F(EditPolicyWindow, TheTitleShowsTheNameOfTheProgramAsItIs)
{
    open(test::policyRule({.path = "/p", .processName = "/bin/x[*]"}));
    EXPECT_EQ(editor->windowHandle()->title(), QStringLiteral("x[*]"));
}

TEST_F(EditPolicyWindow, TheConstraintHasAHintAndRoomForAWholeDigest)
{
    open(test::policyRule({.path = "/p", .processName = "any"}));
    const QLineEdit* constraint = field("constraintTextField");
    EXPECT_FALSE(constraint->placeholderText().isEmpty());
    // As painted: not every font of fixed pitch says that it is one.
    EXPECT_EQ(constraint->fontMetrics().horizontalAdvance(QStringLiteral("iiii")),
        constraint->fontMetrics().horizontalAdvance(QStringLiteral("WWWW")));
    const QMargins beside = constraint->textMargins();
    EXPECT_GT(constraint->width() - beside.left() - beside.right(),
        constraint->fontMetrics().horizontalAdvance(QString(64, QLatin1Char('0'))));
}

} // namespace quorvane::windows
