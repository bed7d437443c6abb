#pragma once

#include "rules/RuleRef.h"
#include "windows/ProblemsModel.h"

#include <QWidget>

#include <optional>

class QLabel;
class QMenu;
class QToolButton;
class QTreeView;

namespace quorvane::windows {

class ProblemsFinder;

// The problems of all rules, by kind; kinds can be hidden, which is remembered. Choosing a problem requests
// its rule to be shown. User interface thread only.
class ProblemsPanel : public QWidget {
    Q_OBJECT
public:
    // `finder` must outlive the panel. It is started when the panel is first shown.
    explicit ProblemsPanel(ProblemsFinder& finder, QWidget* parent = nullptr);

    ProblemsFinder& finder() const { return m_finder; }

    QSize sizeHint() const override;

public Q_SLOTS:
    // Request the rule of the next or previous problem, as soon as problems have been found; wrap around at
    // the ends.
    void showNext();
    void showPrevious();

Q_SIGNALS:
    void ruleChosen(const quorvane::rules::RuleRef& rule);
    // The chosen problem is a line of the rules file that contains further rules.
    void joinedLineChosen();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void setUpKinds();
    void showKind(workflow::FindingKind kind, bool isShown);
    void showKinds(const workflow::FindingKinds& kinds);
    void showFound(const workflow::ProblemListsPtr& problems);
    void updateStatus();
    void choose(const QModelIndex& index);
    void step(bool forward);
    void choosePlace(const ProblemsModel::Place& place);
    void followChosen();
    void expandAll();

    ProblemsFinder& m_finder;
    ProblemsModel* m_model; // owned by this panel, like the following
    QTreeView* m_tree;
    QToolButton* m_kindsButton;
    QMenu* m_kindsMenu;
    QLabel* m_status;
    std::optional<rules::RuleRef> m_chosen; // the rule of the problem chosen last
    std::optional<ProblemsModel::Place> m_place; // of that problem
    bool m_hasLeft = false; // it has been fixed: another problem has its place
    std::optional<bool> m_stepWanted; // forward or not, as soon as problems are found
};

} // namespace quorvane::windows
