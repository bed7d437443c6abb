#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/KnownProblems.h"

#include <QObject>
#include <QSet>

#include <memory>
#include <stop_token>

namespace quorvane::rules {
class RuleManager;
}

namespace quorvane::windows {

// Finds the problems of all rules beside the user interface thread, once they are asked for, and from then
// on follows the rules. User interface thread only.
class ProblemsFinder : public QObject {
    Q_OBJECT
public:
    // `store` must outlive this.
    explicit ProblemsFinder(const rules::RuleManager& store);
    ~ProblemsFinder() override;

    // The problems are wanted from now on. A further call looks again when there was no memory for them.
    void start();
    bool isLooking() const { return m_isLooking; }
    // As found last; null before.
    const workflow::ProblemListsPtr& problems() const { return m_problems; }

    // Whether overlaps are to be found for `asker`, too. They are found while anybody asks for them.
    void setFindsOverlaps(const QObject& asker, bool finds);
    // Where programs and paths are looked up from now on.
    void setPlace(const workflow::RulesPlace& place);

public Q_SLOTS:
    void rulesDidChange();
    // Looks at all programs and paths again.
    void lookAgain();

Q_SIGNALS:
    // The problems of the present rules, or while isLooking() of earlier ones; null when there was not enough
    // memory for them.
    void found(const quorvane::workflow::ProblemListsPtr& problems);

private:
    std::shared_ptr<workflow::KnownProblems> nothingKnown() const;
    void look();
    void wasFound(const workflow::ProblemListsPtr& problems);

    const rules::RuleManager& m_store;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    workflow::ProblemListsPtr m_problems;
    bool m_isWanted = false;
    QSet<const QObject*> m_askForOverlaps;
    bool m_isLooking = false;
    bool m_isBehind = false; // something has changed while it looks
    std::shared_ptr<workflow::KnownProblems> m_known; // the thread's, while it looks
    std::stop_source m_stop;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
