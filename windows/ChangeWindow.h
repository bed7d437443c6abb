#pragma once

#include "workflow/PlannedChange.h"

#include <QDialog>

#include <functional>
#include <memory>

class QTimer;

namespace Ui {
class ChangeWindow;
}

namespace quorvane::windows {

class DifferenceModel;

// Previews a change of rules, rule by rule, before it is made. Controls above the list, if any, define the
// change; the preview follows them. Deletes itself when it is closed. User interface thread only.
class ChangeWindow : public QDialog {
    Q_OBJECT
public:
    // Plans the change defined by the controls, for the current rules and the given way to write the file.
    using Plan = std::function<workflow::PlannedChange(rules::LineEnds lineEnds)>;

    // `verb` is the title of the button that makes the change. `first`: the initial plan. `lineEnds`: how the
    // rules file is written now.
    ChangeWindow(const QString& title, const QString& verb, Plan plan, workflow::PlannedChange first,
        rules::LineEnds lineEnds, QWidget* parent);
    ~ChangeWindow() override;

    // Puts the controls above the list, and the focus on the first of them. Takes ownership. Changes of the
    // controls must call planSoon().
    void setControls(QWidget* controls);

    // The plan that is shown.
    const workflow::PlannedChange& planned() const { return m_planned; }

public Q_SLOTS:
    // Call it when the controls have changed. Plans after a short delay without further changes, at the
    // latest when the user confirms: a plan may read whole programs and all rules.
    void planSoon();
    // Plans at once: call it when the stored rules have changed.
    void replan();

Q_SIGNALS:
    // The change requires lines to be written completely, and the user agrees. Later plans assume it.
    void wholeLinesRequested();
    // The user confirmed the change that is shown. The window closes.
    void wasConfirmed(const quorvane::workflow::PlannedChange& planned);

private:
    void accept() override;
    void showPlanned(workflow::PlannedChange planned);
    void writeWholeLines();

    std::unique_ptr<Ui::ChangeWindow> m_ui;
    DifferenceModel* m_changes; // owned by this window
    const Plan m_plan;
    rules::LineEnds m_lineEnds;
    workflow::PlannedChange m_planned;
    QTimer* m_soon; // runs while a plan is pending
};

} // namespace quorvane::windows
