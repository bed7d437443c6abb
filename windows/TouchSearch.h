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

// Finds the rules that touch a path on a thread of its own: of a million rules no key has to wait for the
// answer to the one before. For the user interface thread.
class TouchSearch : public QObject {
    Q_OBJECT
public:
    // Must outlive it.
    explicit TouchSearch(const rules::RuleManager& store);
    // Waits for what is being looked at at the moment.
    ~TouchSearch() override;

    // Of all stored rules. A later call overtakes earlier ones, which then have no answer.
    void search(const workflow::TouchQuestion& question, bool includeSystemRules);
    // What is being searched for is not wanted any more.
    void stop() { m_searching.request_stop(); }
    // The store holds other rules now: the next search looks at these.
    void rulesDidChange() { m_rules.reset(); }

Q_SIGNALS:
    // In stored order, in which the rules of a program stand together. They are stored no longer when the
    // store has changed since.
    void found(const std::vector<quorvane::rules::RuleRef>& rules);

private:
    using Rules = std::vector<rules::RuleRef>;

    const rules::RuleManager& m_store;
    std::shared_ptr<const Rules> m_rules; // all that are stored; null when they are to be asked for
    std::stop_source m_searching;
    BackgroundThread m_thread; // goes first
};

} // namespace quorvane::windows
