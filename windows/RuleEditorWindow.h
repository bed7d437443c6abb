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

// The window in which one rule is created, changed or, for a system rule, viewed: the common base of the
// editors of both kinds of rule. User interface thread only.
//
// One window, one rule, one use: set the rule and show() it. It deletes itself however it is closed, so keep
// only a QPointer to it. Several may be open at once, even for the same rule: the last save wins. Typing
// changes only the controls; the rule is changed by a save, and may be removed from the store in the
// meantime.
class RuleEditorWindow : public QDialog {
    Q_OBJECT
public:
    const rules::RuleRef& rule() const { return m_rule; }
    // Notified after a save. Not owned; null, or must outlive the window.
    workflow::RuleEditorDelegate* delegate() const { return m_delegate; }
    void setDelegate(workflow::RuleEditorDelegate* delegate) { m_delegate = delegate; }

    // Sets where the icon of the program is looked up. Call it before the window is shown.
    void setPlace(const workflow::RulesPlace& place) { m_controls->setPlace(place); }

    // The contents of the controls. Only after the window was shown.
    workflow::RuleDraft draft() const { return m_controls->draft(); }
    // Fills the controls; the rule is unchanged.
    void showDraft(const workflow::RuleDraft& draft) { m_controls->fill(draft); }
    // True while the controls differ from their initial contents and neither Save nor Cancel was chosen.
    bool hasUnsavedChanges() const { return m_loaded && !m_isClosed && draft() != *m_loaded; }

    // Called once, before the window is shown for the first time.
    void windowDidLoad();
    void setTheme();
    // Shows the icon of the program.
    void setApplicationIcon() { m_controls->setApplicationIcon(); }
    // Updates what depends on the text in `field`, one of this window's.
    void controlTextDidChange(const QLineEdit* field);
    // The user's choice in a file panel; none when it was cancelled, or when the window was deleted in the
    // meantime.
    std::optional<std::string> fileDialog(const std::string& startPath);

    void setVisible(bool visible) override;

public Q_SLOTS:
    void browsePathClicked();
    void browseApplicationClicked();
    // Saves the contents of the controls to the rule and the rule to the store, writes the user's file and
    // closes the window. Deliberate: a failure is not reported. For a system rule the same as
    // cancelClicked().
    void saveClicked();
    void cancelClicked();
    // The Escape key.
    void reject() override { cancelClicked(); }

protected:
    // The names in the log of the editor and of its operation that fills the controls.
    struct LogNames {
        const char* window;
        const char* update;
    };

    // Owns no argument; all must outlive the window. The derived constructor must call setUpControls().
    RuleEditorWindow(LogNames names, workflow::RulesDocument& document, platform::Log& log,
        rules::RuleRef rule, QWidget* parent);
    void setUpControls(const RuleEditorWidgets& widgets, desktop::Workspace& workspace);

    // Set it before the window is shown.
    void setRule(rules::RuleRef rule) { m_rule = std::move(rule); }
    // Fills the controls from the rule.
    void updateEditor();
    // Sets the type suggested by the path.
    void autoSetType() { m_controls->autoSetType(); }
    // Shows the kind of constraint, by its length.
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
    std::optional<RuleEditorControls> m_controls; // set by the derived constructor
    std::optional<workflow::RuleDraft>
        m_loaded; // the initial contents of the controls; none until the window is shown
    bool m_isClosed = false;
};

} // namespace quorvane::windows
