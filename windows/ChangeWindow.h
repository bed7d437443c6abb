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

// Shows what a change of rules would do, rule by rule, before it is done. Above the list stand the controls,
// if any, that say what is to be changed; whatever they say is planned and shown at once. Deletes itself when
// it is closed. User interface thread only.
class ChangeWindow : public QDialog {
    Q_OBJECT
public:
    // What the controls ask for, of the rules as they are now, for a file that is written so.
    using Plan = std::function<workflow::PlannedChange(rules::LineEnds lineEnds)>;

    // `verb` stands on the button that carries the change out. `first`: what is planned at first. `lineEnds`:
    // how the rules file is written now.
    ChangeWindow(const QString& title, const QString& verb, Plan plan, workflow::PlannedChange first,
        rules::LineEnds lineEnds, QWidget* parent);
    ~ChangeWindow() override;

    // Puts the controls above the list, and the keyboard into the first of them. They belong to the window
    // then; what they change calls planSoon().
    void setControls(QWidget* controls);

    // What is shown.
    const workflow::PlannedChange& planned() const { return m_planned; }

public Q_SLOTS:
    // The controls say something else now. It is planned once they have said so for a moment, and at the
    // latest when the person wants it: a plan may look at whole programs and at all rules.
    void planSoon();
    // At once: the stored rules are others now.
    void planAnew();

Q_SIGNALS:
    // The change may be made only when lines are written whole, and the person wants that. What is planned
    // from then on counts on it.
    void wholeLinesRequested();
    // The person wants the change that is shown. The window closes.
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
    QTimer* m_soon; // runs while something is to be planned
};

} // namespace quorvane::windows
