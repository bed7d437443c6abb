#pragma once

#include "rules/RuleRef.h"
#include "windows/BackgroundThread.h"
#include "windows/ProblemList.h"
#include "workflow/RuleProblems.h"
#include "workflow/RulesPlace.h"

#include <QScrollArea>
#include <QTimer>

#include <optional>
#include <stop_token>
#include <vector>

class QLabel;

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::workflow {
class RulesDocument;
class RulesSelection;
} // namespace quorvane::workflow

namespace quorvane::windows {

class RuleMending;
class RulesTable;
class SelectableText;

// The selected rule in words, with what it is bound to and what is wrong with it; of several rules how many
// of what they are. Programs are looked at beside the user interface thread, and no longer when another rule
// has been selected. User interface thread only.
class RuleStrip : public QScrollArea {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the strip.
    RuleStrip(RulesTable& table, workflow::RulesDocument& document, RuleMending& mending,
        desktop::Workspace& workspace, QWidget* parent = nullptr);
    ~RuleStrip() override;

    // Where programs and paths are looked up from now on.
    void setPlace(const workflow::RulesPlace& place);
    // What can be done to all rules when several are selected, besides what menus offer.
    void setActionsOnMany(const QList<QAction*>& actions) { m_actionsOnMany = actions; }

    QSize sizeHint() const override;

public Q_SLOTS:
    // Shows what is selected now, soon.
    void selectionDidChange();

Q_SIGNALS:
    void editRequested(const quorvane::rules::RuleRef& rule);
    // Everything there is to tell of the selection is shown.
    void wasFilled();

private:
    struct RuleFacts;

    void showSelection();
    void showNothing();
    void showRule(const rules::RuleRef& rule);
    void showSeveral(const workflow::RulesSelection& selection);
    void showIcon(const RuleFacts& facts);
    void showProblems(const rules::RuleRef& rule, const std::vector<workflow::RuleProblem>& alone);
    ShownProblem shownProblem(const rules::RuleRef& rule, const workflow::RuleProblem& problem);
    ShownProblem coverProblem(const rules::RuleRef& rule, const rules::RuleRef& covering);
    std::vector<ShownProblem::Button> buttonsFor(
        const rules::RuleRef& rule, const workflow::RuleProblem& problem);
    ShownProblem actionsOnMany() const;
    ShownProblem::Button deleteButton(const rules::RuleRef& rule, const QString& title);

    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    RuleMending& m_mending;
    desktop::Workspace& m_workspace;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    QList<QAction*> m_actionsOnMany;
    QLabel* m_icon;
    SelectableText* m_sentence;
    SelectableText* m_details;
    ProblemList* m_problems;
    std::optional<rules::RuleRef> m_shown; // whose problems are listed
    QTimer m_due;
    std::stop_source m_looking;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
