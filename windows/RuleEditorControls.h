#pragma once

#include "workflow/RuleEditing.h"

#include <QPushButton>

#include <array>
#include <memory>
#include <string>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QWidget;

namespace quorvane {

class Workspace;

// Sets a window up by its description.
template <class Ui, class Window> std::unique_ptr<Ui> setUpUi(Window& window)
{
    auto ui = std::make_unique<Ui>();
    ui->setupUi(&window);
    return ui;
}

// The controls that both rule editors have. All of them belong to the window.
struct RuleEditorWidgets {
    QComboBox* typePopUp;
    QLineEdit* pathTextField;
    QLineEdit* processNameTextField;
    std::array<QCheckBox*, OperationBoxes().size()> operationButtons;
    QLabel* iconImageView;
    QLabel* systemImageView;
    QLabel* systemLabel;
    QPushButton* browsePathButton;
    QPushButton* browseProcessButton;
    QPushButton* saveButton;
    QPushButton* cancelButton;
};

// Those controls of a window description. The type's pop-up has a name of its own in each.
template <class Ui> RuleEditorWidgets widgetsOf(const Ui& ui, QComboBox* typePopUp)
{
    return {
        .typePopUp = typePopUp,
        .pathTextField = ui.pathTextField,
        .processNameTextField = ui.processNameTextField,
        .operationButtons
        = {ui.opReadButton, ui.opWriteButton, ui.opCreateButton, ui.opMountButton, ui.opExecButton},
        .iconImageView = ui.iconImageView,
        .systemImageView = ui.systemImageView,
        .systemLabel = ui.systemLabel,
        .browsePathButton = ui.browsePathButton,
        .browseProcessButton = ui.browseProcessButton,
        .saveButton = ui.saveButton,
        .cancelButton = ui.cancelButton,
    };
}

// Lets the buttons do what the editor `window` has slots for.
template <class Window> void connectButtons(const RuleEditorWidgets& widgets, Window& window)
{
    const auto onClick = [&window](const QPushButton* button, void (Window::*slot)()) {
        QObject::connect(button, &QPushButton::clicked, &window, slot);
    };
    onClick(widgets.browsePathButton, &Window::browsePathClicked);
    onClick(widgets.browseProcessButton, &Window::browseApplicationClicked);
    onClick(widgets.saveButton, &Window::saveClicked);
    onClick(widgets.cancelButton, &Window::cancelClicked);
}

// Keeps `field` to one line, since a line end in a text would end the rule's line in the file, and shows the
// whole text as its tool tip.
void setUpRuleTextField(QLineEdit& field);
void makeReadOnly(QLineEdit& field);

// The code that is the chosen item's index; none when no item is chosen.
std::optional<std::int32_t> chosenCode(const QComboBox& popUp);

// Shows the beginning of `text`, however long it is.
void showText(QLineEdit& field, const NullableText& text);

// What the controls shared by both rule editors do. Lives no longer than they; `workspace` outlives it.
class RuleEditorControls {
public:
    // `lockImageFile` is what is shown for "any"; it may be missing.
    RuleEditorControls(const RuleEditorWidgets& widgets, Workspace& workspace, std::string lockImageFile);

    // Shows the fields of a rule of either kind that both kinds have.
    template <class Rule> void fill(const Rule& rule) const
    {
        const auto& fields = rule.fields();
        fill(fields.policyType, fields.path, fields.processName, fields.operations);
    }

    // Takes back that a dialog selects the text it opens on: a long path shows its end then, and is lost to
    // the next key.
    void showTextsFromStart() const;

    // Nothing can be changed; the one button left stands where the save button stood.
    void showSystemRule() const;
    void showUserRule() const;

    EditedWatchRule edited() const;

    // The save button works while the rule is complete.
    void applyCompleteness() const;
    // The type follows the path.
    void autoSetType() const;
    // Shows the icon of the program, 96 by 96; nothing when there is none.
    void setApplicationIcon() const;

    // Where a panel for the path, or for the program, starts.
    std::string pathPanelStart() const;
    std::string applicationPanelStart() const;
    // Puts what was chosen there into the field, and all else follows.
    void takePath(const std::string& path) const;
    void takeApplication(const std::string& path) const;

private:
    void fill(std::int32_t policyType, const NullableText& path, const NullableText& processName,
        std::uint32_t operations) const;

    RuleEditorWidgets m_widgets;
    Workspace& m_workspace;
    std::string m_lockImageFile;
};

// Opens the panel "Use Path" over an editor. None when nothing was chosen, or when the editor is gone.
std::optional<std::string> choosePath(QWidget& editor, const std::string& startPath);

} // namespace quorvane
