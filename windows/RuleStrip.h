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

namespace quorvane {

class RuleMending;
class RulesDocument;
class RulesSelection;
class RulesTable;
class SelectableText;
class Workspace;

// The selected rule in words, with what it is bound to and what is wrong with it; of several rules how many
// of what they are. Programs are looked at beside the user interface thread, and no longer when another rule
// has been selected. User interface thread only.
class RuleStrip : public QScrollArea {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the strip.
    RuleStrip(RulesTable& table, RulesDocument& document, RuleMending& mending, Workspace& workspace,
        QWidget* parent = nullptr);
    ~RuleStrip() override;

    // Where programs and paths are looked up from now on.
    void setPlace(const RulesPlace& place);
    // What can be done to all rules when several are selected, besides what menus offer.
    void setActionsOnMany(const QList<QAction*>& actions) { m_actionsOnMany = actions; }

    QSize sizeHint() const override;

public Q_SLOTS:
    // Shows what is selected now, soon.
    void selectionDidChange();

Q_SIGNALS:
    void editRequested(const quorvane::RuleRef& rule);
    // Everything there is to tell of the selection is shown.
    void wasFilled();

private:
    struct RuleFacts;

    void showSelection();
    void showNothing();
    void showRule(const RuleRef& rule);
    void showSeveral(const RulesSelection& selection);
    void showIcon(const RuleFacts& facts);
    void showProblems(const RuleRef& rule, const std::vector<RuleProblem>& alone);
    ShownProblem shownProblem(const RuleRef& rule, const RuleProblem& problem);
    ShownProblem coverProblem(const RuleRef& rule, const RuleRef& covering);
    std::vector<ShownProblem::Button> buttonsFor(const RuleRef& rule, const RuleProblem& problem);
    ShownProblem actionsOnMany() const;
    ShownProblem::Button deleteButton(const RuleRef& rule, const QString& title);

    RulesTable& m_table;
    RulesDocument& m_document;
    RuleMending& m_mending;
    Workspace& m_workspace;
    RulesPlace m_place = RulesPlace::thisMachine();
    QList<QAction*> m_actionsOnMany;
    QLabel* m_icon;
    SelectableText* m_sentence;
    SelectableText* m_details;
    ProblemList* m_problems;
    std::optional<RuleRef> m_shown; // whose problems are listed
    QTimer m_due;
    std::stop_source m_looking;
    BackgroundThread m_thread;
};

} // namespace quorvane
