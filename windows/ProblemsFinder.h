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

// Finds the problems of all rules on another thread, once started, and updates them when the rules change.
// For use on the user interface thread only.
class ProblemsFinder : public QObject {
    Q_OBJECT
public:
    // `store` must outlive this.
    explicit ProblemsFinder(const rules::RuleManager& store);
    ~ProblemsFinder() override;

    // Starts finding problems. A further call retries after memory ran out.
    void start();
    bool isLooking() const { return m_isLooking; }
    // As last found; null before that.
    const workflow::ProblemListsPtr& problems() const { return m_problems; }

    // Sets whether `asker` needs overlaps. They are found while any asker does.
    void setFindsOverlaps(const QObject& asker, bool finds);
    // Sets where programs and paths are looked up.
    void setPlace(const workflow::RulesPlace& place);

public Q_SLOTS:
    void rulesDidChange();
    // Examines all programs and paths again.
    void lookAgain();

Q_SIGNALS:
    // The problems of the current rules, or, while isLooking(), of earlier ones; null when memory ran out.
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
    bool m_isBehind = false; // something has changed during the search
    std::shared_ptr<workflow::KnownProblems> m_known; // used by the thread during a search
    std::stop_source m_stop;
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
