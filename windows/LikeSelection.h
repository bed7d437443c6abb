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

// Menu items that select all shown rules with a property in common with the selected ones. Compares rules on
// another thread; use it on the user interface thread only.
class LikeSelection : public QObject {
    Q_OBJECT
public:
    // Owns no argument; all must outlive this object.
    LikeSelection(RulesTable& table, ProblemsFinder& finder, QMenu& menu);
    ~LikeSelection() override;

    void select(workflow::RuleTrait trait);
    // Selects as soon as the problems of the current rules are known.
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
