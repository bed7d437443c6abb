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

// The controls of a rule editor. All of them belong to the window.
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
    // Of allow and deny rules alone; null in the editor of watch rules.
    QComboBox* policyClassPopUp = nullptr;
    QLineEdit* constraintTextField = nullptr;
    QLabel* constraintTypeTextField = nullptr;
};

// Those of a window description that all editors have. The type's pop-up has a name of its own in each.
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

// Keeps `field` to one line, since a line end in a text would end the rule's line in the file, and shows the
// whole text as its tool tip.
void setUpRuleTextField(QLineEdit& field);

// Sets up a field for a digest or a team: all of a SHA-256 fits, in a face in which every digit is as wide.
void setUpConstraintField(QLineEdit& field);

void makeReadOnly(QLineEdit& field);

// Shows the beginning of `text`, however long it is.
void showText(QLineEdit& field, const std::string& text);

// What the controls of a rule editor do. Lives no longer than they; `workspace` outlives it.
class RuleEditorControls {
public:
    // `lockImageFile` is what is shown for "any"; it may be missing.
    RuleEditorControls(
        const RuleEditorWidgets& widgets, desktop::Workspace& workspace, std::string lockImageFile);

    const RuleEditorWidgets& widgets() const { return m_widgets; }

    // Where the program's icon is looked up; this machine at first.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Lets the controls say this. What follows from a text is not asked for: the pop-ups say what the draft
    // says.
    void fill(const workflow::RuleDraft& draft) const;
    // What they say.
    workflow::RuleDraft draft() const;

    // Undoes the dialog's initial select-all, which scrolls a long path to its end and lets the next key
    // replace it.
    void showTextsFromStart() const;

    // Nothing can be changed; the one button left stands where the save button stood.
    void showSystemRule() const;
    void showUserRule() const;

    // The save button works while the rule is complete.
    void applyCompleteness() const;
    // The type follows the path.
    void autoSetType() const;
    // Names the kind of constraint by its length.
    void setConstraintLabel() const;
    // Shows the icon of the program, 96 by 96; nothing when there is none.
    void setApplicationIcon() const;

    // Where a panel for the path, or for the program, starts.
    std::string pathPanelStart() const;
    std::string applicationPanelStart() const;
    // Puts what was chosen there into the field, and all else follows.
    void takePath(const std::string& path) const;
    void takeApplication(const std::string& path) const;

private:
    RuleEditorWidgets m_widgets;
    desktop::Workspace& m_workspace;
    std::string m_lockImageFile;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

// Opens the panel "Use Path" over an editor. None when nothing was chosen, or when the editor is gone.
std::optional<std::string> choosePath(QWidget& editor, const std::string& startPath);

} // namespace quorvane::windows
