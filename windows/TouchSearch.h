#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/TouchingRules.h"

#include <QObject>

#include <memory>
#include <stop_token>
#include <vector>

namespace quorvane::rules {
class RuleManager;
}

namespace quorvane::windows {

// Finds the rules that apply to a path on another thread: even with a million rules, no key press waits for
// the result of the previous one. For use by the user interface thread.
class TouchSearch : public QObject {
    Q_OBJECT
public:
    // Must outlive it.
    explicit TouchSearch(const rules::RuleManager& store);
    // Waits for the current search to stop.
    ~TouchSearch() override;

    // Searches all stored rules. A later call cancels earlier ones, which then yield no result.
    void search(const workflow::TouchQuestion& question, bool includeSystemRules);
    // Cancels the search.
    void stop() { m_searching.request_stop(); }
    // Call it when the stored rules have changed.
    void rulesDidChange() { m_rules.reset(); }

Q_SIGNALS:
    // In stored order, in which the rules of a program are adjacent. If the store has changed since, they may
    // no longer be stored.
    void found(const std::vector<quorvane::rules::RuleRef>& rules);

private:
    using Rules = std::vector<rules::RuleRef>;

    const rules::RuleManager& m_store;
    std::shared_ptr<const Rules> m_rules; // all stored rules; null when they must be fetched again
    std::stop_source m_searching;
    BackgroundThread m_thread; // destroyed first
};

} // namespace quorvane::windows
