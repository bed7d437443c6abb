#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/RuleLikeness.h"

#include <QObject>

#include <functional>
#include <stop_token>
#include <vector>

class QMenu;

namespace quorvane::windows {

class ProblemsFinder;
class RulesTable;

// The items of a menu that select all shown rules which have something in common with those selected. Rules
// are compared beside the user interface thread, on which all of this is used.
class LikeSelection : public QObject {
    Q_OBJECT
public:
    // Nothing is owned; all of it must outlive this.
    LikeSelection(RulesTable& table, ProblemsFinder& finder, QMenu& menu);
    ~LikeSelection() override;

    void select(workflow::RuleTrait trait);
    // As soon as the problems of the present rules are found.
    void selectSameProblem();

private:
    using FindAlike = std::function<std::vector<rules::RuleRef>(const workflow::RulesSelection& selection)>;

    void select(const FindAlike& find);

    RulesTable& m_table;
    ProblemsFinder& m_finder;
    bool m_waitsForProblems = false;
    std::stop_source m_stop;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
