#pragma once

#include "workflow/RuleDraft.h"
#include "workflow/RulesPlace.h"

#include <array>
#include <optional>
#include <string>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::windows {

// The controls of a rule editor. All are owned by the window.
struct RuleEditorWidgets {
    QComboBox* typePopUp;
    QLineEdit* pathTextField;
    QLineEdit* processNameTextField;
    std::array<QCheckBox*, workflow::OperationBoxes().size()> operationButtons;
    QLabel* iconImageView;
    QLabel* systemImageView;
    QLabel* systemLabel;
    QPushButton* browsePathButton;
    QPushButton* browseProcessButton;
    QPushButton* saveButton;
    QPushButton* cancelButton;
    // For allow and deny rules only; null in the editor of watch rules.
    QComboBox* policyClassPopUp = nullptr;
    QLineEdit* constraintTextField = nullptr;
    QLabel* constraintTypeTextField = nullptr;
};

// The controls common to the .ui files of all editors. Only the type's pop-up has a different name in each.
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

// Restricts `field` to one line, since a line end in a text would end the rule's line in the file, and shows
// the whole text as its tool tip.
void setUpRuleTextField(QLineEdit& field);

// Sets up a field for a digest or a team: wide enough for a SHA-256, in a monospaced font.
void setUpConstraintField(QLineEdit& field);

void makeReadOnly(QLineEdit& field);

// Shows the beginning of `text`, however long it is.
void showText(QLineEdit& field, const std::string& text);

// The behaviour of a rule editor's controls, which must outlive it, as must `workspace`. User interface
// thread only.
class RuleEditorControls {
public:
    // `lockImageFile` is the image for "any"; it may be missing.
    RuleEditorControls(
        const RuleEditorWidgets& widgets, desktop::Workspace& workspace, std::string lockImageFile);

    const RuleEditorWidgets& widgets() const { return m_widgets; }

    // Sets where the program's icon is looked up; initially this machine.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Fills the controls. The pop-ups show the values of the draft, even where a text would suggest others.
    void fill(const workflow::RuleDraft& draft) const;
    // The contents of the controls.
    workflow::RuleDraft draft() const;

    // Undoes the dialog's initial select-all, which scrolls a long path to its end and lets the next key
    // replace it.
    void showTextsFromStart() const;

    // Disables all changes; the remaining button takes the place of the save button.
    void showSystemRule() const;
    void showUserRule() const;

    // Enables the save button if the rule is complete.
    void applyCompleteness() const;
    // Sets the type suggested by the path.
    void autoSetType() const;
    // Shows the kind of constraint, by its length.
    void setConstraintLabel() const;
    // Shows the icon of the program, 96 by 96; no icon when there is none.
    void setApplicationIcon() const;

    // The start of a panel for the path or the program.
    std::string pathPanelStart() const;
    std::string applicationPanelStart() const;
    // Put a path chosen there into the field and update everything that depends on it.
    void takePath(const std::string& path) const;
    void takeApplication(const std::string& path) const;

private:
    RuleEditorWidgets m_widgets;
    desktop::Workspace& m_workspace;
    std::string m_lockImageFile;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

// Opens the panel "Use Path" over an editor. None when it was cancelled, or when the editor was deleted in
// the meantime.
std::optional<std::string> choosePath(QWidget& editor, const std::string& startPath);

} // namespace quorvane::windows
