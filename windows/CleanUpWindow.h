#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/CleanUp.h"
#include "workflow/KnownProblems.h"
#include "workflow/RulesPlace.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeView;

namespace quorvane::workflow {
class RulesDocument;
}

namespace quorvane::windows {

class CleanUpModel;
class ProblemsFinder;
class RulesTable;

// Lists the rules that can be removed, each with a tick and the reason, and removes the ticked ones as one
// action. Updates when the rules change. Deletes itself when it is closed. User interface thread only.
class CleanUpWindow : public QDialog {
    Q_OBJECT
public:
    // `place` is where the finder looks up files, and `changing` what may be temporarily absent there. Owns
    // no other argument; all must outlive the window.
    CleanUpWindow(RulesTable& table, workflow::RulesDocument& document, ProblemsFinder& finder,
        workflow::RulesPlace place, workflow::ChangingPlaces changing, QWidget* parent = nullptr);

public Q_SLOTS:
    // Removes the ticked rules.
    void accept() override;

Q_SIGNALS:
    // The list has been filled.
    void wasFilled();

private:
    void setUpControls();
    void fill(const workflow::ProblemListsPtr& problems);
    void updateCount();

    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    ProblemsFinder& m_finder;
    const workflow::RulesPlace m_place;
    const workflow::ChangingPlaces m_changing;
    CleanUpModel* m_model; // owned by this window, like the following
    QTreeView* m_list;
    QLabel* m_count;
    QPushButton* m_button;
    bool m_isFilled = false;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
