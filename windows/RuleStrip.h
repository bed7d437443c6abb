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

class RuleFixes;
class RulesTable;
class SelectableText;

// Describes the selected rule in words, with its constraint and its problems; for several rules, a summary
// with counts. Programs are examined on another thread, until another rule is selected. For use on the user
// interface thread only.
class RuleStrip : public QScrollArea {
    Q_OBJECT
public:
    // Owns no argument; all must outlive the strip.
    RuleStrip(RulesTable& table, workflow::RulesDocument& document, RuleFixes& fixes,
        desktop::Workspace& workspace, QWidget* parent = nullptr);
    ~RuleStrip() override;

    // Sets where programs and paths are looked up.
    void setPlace(const workflow::RulesPlace& place);
    // Sets the actions to offer when several rules are selected.
    void setActionsOnMany(const QList<QAction*>& actions) { m_actionsOnMany = actions; }

    QSize sizeHint() const override;

public Q_SLOTS:
    // Schedules an update to the current selection.
    void selectionDidChange();

Q_SIGNALS:
    void editRequested(const quorvane::rules::RuleRef& rule);
    // The description of the selection is complete.
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
    RuleFixes& m_fixes;
    desktop::Workspace& m_workspace;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    QList<QAction*> m_actionsOnMany;
    QLabel* m_icon;
    SelectableText* m_sentence;
    SelectableText* m_details;
    ProblemList* m_problems;
    std::optional<rules::RuleRef> m_shown; // the rule whose problems are listed
    QTimer m_due;
    std::stop_source m_looking;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
