#pragma once

#include "rules/PolicyRule.h"
#include "windows/RuleEditorControls.h"

#include <QDialog>

#include <memory>
#include <optional>
#include <string>

namespace Ui {
class EditPolicyWindowController;
}

namespace quorvane {

class Log;
class RuleEditorDelegate;
class RuleManager;
struct RunState;

// The window in which one allow or deny rule is created, changed, or, when it is a system rule, looked at.
//
// One window, one rule, one use: give it the rule, show() it, and forget it. It deletes itself when it is
// closed, by whatever way; who keeps a pointer keeps a QPointer. Several may be open at once, also on one
// rule: whoever saves last wins. The rule is changed by a save alone, and may leave the store meanwhile.
class EditPolicyWindowController : public QDialog {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window. Without a parent the window stands for
    // itself.
    EditPolicyWindowController(
        RuleManager& store, RunState& run, Workspace& workspace, Log& log, QWidget* parent = nullptr);
    ~EditPolicyWindowController() override;

    // Never null; a rule with nothing in it until one is set. Set before the window is shown.
    const PolicyRulePtr& policyRule() const { return m_rule; }
    void setPolicyRule(PolicyRulePtr rule);
    // Told after a save. Not owned, may be null, must outlive the window otherwise.
    RuleEditorDelegate* delegate() const { return m_delegate; }
    void setDelegate(RuleEditorDelegate* delegate) { m_delegate = delegate; }

    // Called once, before the window is shown for the first time.
    void windowDidLoad();
    void setTheme();
    // Fills the controls from the rule.
    void updatePolicyEditor();
    // The type follows the path.
    void autoSetPolicyType();
    // Names the kind of constraint by its length.
    void setConstraintLabel();
    // Shows the icon of the program.
    void setApplicationIcon();
    // What follows from a change of the text in `field`, one of this window's.
    void controlTextDidChange(const QLineEdit* field);
    // What the person chooses in a file panel; none when nothing, or when the window went away meanwhile.
    std::optional<std::string> fileDialog(const std::string& startPath);

    void setVisible(bool visible) override;

public Q_SLOTS:
    void browsePathClicked();
    void browseApplicationClicked();
    // Puts the controls into the rule and the rule into the store, writes the user's file and closes the
    // window. Deliberate: a failure is not told. For a system rule the same as cancelClicked().
    void saveClicked();
    void cancelClicked();
    // The Escape key.
    void reject() override { cancelClicked(); }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    RuleManager& m_store;
    RunState& m_run;
    Log& m_log;
    std::unique_ptr<Ui::EditPolicyWindowController> m_ui;
    RuleEditorControls m_controls;
    PolicyRulePtr m_rule;
    RuleEditorDelegate* m_delegate = nullptr;
    bool m_isLoaded = false;
};

} // namespace quorvane
