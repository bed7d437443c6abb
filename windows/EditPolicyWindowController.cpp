#include "windows/EditPolicyWindowController.h"

#include "rules/ApplicationIdentity.h"
#include "ui_EditPolicyWindowController.h"
#include "windows/QtText.h"

namespace quorvane::windows {

EditPolicyWindowController::EditPolicyWindowController(
    workflow::RulesDocument& document, desktop::Workspace& workspace, platform::Log& log, QWidget* parent)
    : RuleEditorWindow({"EditPolicyWindowController", "updatePolicyEditor"}, document, log,
        std::make_shared<rules::PolicyRule>(), parent)
{
    Ui::EditPolicyWindowController ui;
    ui.setupUi(this);
    RuleEditorWidgets widgets = widgetsOf(ui, ui.policyTypePopUp);
    widgets.policyClassPopUp = ui.policyClassPopUp;
    widgets.constraintTextField = ui.constraintTextField;
    widgets.constraintTypeTextField = ui.constraintTypeTextField;
    setUpControls(widgets, workspace);
}

QString EditPolicyWindowController::title() const
{
    return toQt(applicationNameForRule(*policyRule()));
}

} // namespace quorvane::windows
