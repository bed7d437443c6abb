#include "windows/EditWatchWindowController.h"

#include "ui_EditWatchWindowController.h"

namespace quorvane::windows {

EditWatchWindowController::EditWatchWindowController(
    workflow::RulesDocument& document, desktop::Workspace& workspace, platform::Log& log, QWidget* parent)
    : RuleEditorWindow({"EditWatchWindowController", "updateWatchEditor"}, document, log,
        std::make_shared<rules::WatchRule>(), parent)
{
    Ui::EditWatchWindowController ui;
    ui.setupUi(this);
    setUpControls(widgetsOf(ui, ui.watchTypePopUp), workspace);
}

QString EditWatchWindowController::title() const
{
    return tr("Watch Rule");
}

} // namespace quorvane::windows
