#include "windows/EditWatchWindowController.h"

#include "ui_EditWatchWindowController.h"

namespace quorvane {

EditWatchWindowController::EditWatchWindowController(
    RulesDocument& document, Workspace& workspace, Log& log, QWidget* parent)
    : RuleEditorWindow({"EditWatchWindowController", "updateWatchEditor"}, document, log,
        std::make_shared<WatchRule>(), parent)
{
    Ui::EditWatchWindowController ui;
    ui.setupUi(this);
    setUpControls(widgetsOf(ui, ui.watchTypePopUp), workspace);
}

QString EditWatchWindowController::title() const
{
    return tr("Watch Rule");
}

} // namespace quorvane
