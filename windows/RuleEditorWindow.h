#pragma once

#include "rules/RuleRef.h"
#include "windows/RuleEditorControls.h"

#include <QDialog>

#include <optional>
#include <string>

class QLineEdit;

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {
class RuleEditorDelegate;
class RulesDocument;
} // namespace quorvane::workflow

namespace quorvane::windows {

// The window in which one rule is created, changed, or, when it is a system rule, looked at: what the editors
// of both kinds of rule have in common.
//
// One window, one rule, one use: give it the rule, show() it, and forget it. It deletes itself when it is
// closed, by whatever way; who keeps a pointer keeps a QPointer. Several may be open at once, also on one
// rule: whoever saves last wins. What is typed changes the controls alone; the rule is changed by a save, and
// may leave the store meanwhile.
class RuleEditorWindow : public QDialog {
    Q_OBJECT
public:
    const rules::RuleRef& rule() const { return m_rule; }
    // Told after a save. Not owned, may be null, must outlive the window otherwise.
    workflow::RuleEditorDelegate* delegate() const { return m_delegate; }
    void setDelegate(workflow::RuleEditorDelegate* delegate) { m_delegate = delegate; }

    // Where the icon of the program is looked up. To be set before the window is shown.
    void setPlace(const workflow::RulesPlace& place) { m_controls->setPlace(place); }

    // What the controls say. Only after the window was shown.
    workflow::RuleDraft draft() const { return m_controls->draft(); }
    // Lets them say this; the rule stays what it is.
    void showDraft(const workflow::RuleDraft& draft) { m_controls->fill(draft); }
    // True while the controls say something else than they said of the rule at first, and neither Save nor
    // Cancel was chosen.
    bool hasUnsavedChanges() const { return m_loaded && !m_isClosed && draft() != *m_loaded; }

    // Called once, before the window is shown for the first time.
    void windowDidLoad();
    void setTheme();
    // Shows the icon of the program.
    void setApplicationIcon() { m_controls->setApplicationIcon(); }
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
    // How the log names the editor and its operation that fills the controls.
    struct LogNames {
        const char* window;
        const char* update;
    };

    // Nothing given is owned; all of it must outlive the window. setUpControls() is due at once.
    RuleEditorWindow(LogNames names, workflow::RulesDocument& document, platform::Log& log,
        rules::RuleRef rule, QWidget* parent);
    void setUpControls(const RuleEditorWidgets& widgets, desktop::Workspace& workspace);

    // To be set before the window is shown.
    void setRule(rules::RuleRef rule) { m_rule = std::move(rule); }
    // Fills the controls from the rule.
    void updateEditor();
    // The type follows the path.
    void autoSetType() { m_controls->autoSetType(); }
    // Names the kind of constraint by its length.
    void setConstraintLabel() { m_controls->setConstraintLabel(); }
    virtual QString title() const = 0;

    void closeEvent(QCloseEvent* event) override;

private:
    void writeLog(const char* operation, const std::string& more = {});

    const LogNames m_names;
    workflow::RulesDocument& m_document;
    platform::Log& m_log;
    rules::RuleRef m_rule;
    workflow::RuleEditorDelegate* m_delegate = nullptr;
    std::optional<RuleEditorControls> m_controls; // set by the constructor of the kind
    std::optional<workflow::RuleDraft>
        m_loaded; // what the controls said at first; none until the window is shown
    bool m_isClosed = false;
};

} // namespace quorvane::windows
