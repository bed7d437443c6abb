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

// Lists the rules that can go, each with a tick and why, and removes the ticked ones as one action. Follows
// the rules while it is open. Deletes itself when it is closed. User interface thread only.
class CleanUpWindow : public QDialog {
    Q_OBJECT
public:
    // `place` is where the finder looks, and `changing` says what comes and goes there. Nothing else given is
    // owned; all of it must outlive the window.
    CleanUpWindow(RulesTable& table, workflow::RulesDocument& document, ProblemsFinder& finder,
        workflow::RulesPlace place, workflow::ChangingPlaces changing, QWidget* parent = nullptr);

public Q_SLOTS:
    // Removes the ticked rules.
    void accept() override;

Q_SIGNALS:
    // The rules that can go are listed.
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
    CleanUpModel* m_model; // owned by this window, as is what follows
    QTreeView* m_list;
    QLabel* m_count;
    QPushButton* m_button;
    bool m_isFilled = false;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
