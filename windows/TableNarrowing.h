#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/Narrowing.h"

#include <QObject>

#include <memory>
#include <stop_token>

namespace quorvane::rules {
class RuleManager;
}

namespace quorvane::windows {

class NarrowBar;
class ProblemsFinder;

// Filters the main table by the choices of a bar. Rules are checked, and the choices computed, on another
// thread; use it on the user interface thread only.
class TableNarrowing : public QObject {
    Q_OBJECT
public:
    // All arguments must outlive this object.
    TableNarrowing(NarrowBar& bar, const rules::RuleManager& store, ProblemsFinder& finder);
    ~TableNarrowing() override;

    // Shows the bar, or hides it and shows all rules.
    void setShown(bool isShown);

public Q_SLOTS:
    void rulesDidChange();

Q_SIGNALS:
    // The filter for the table from now on; null for all rules, which is emitted immediately.
    void narrowed(const std::shared_ptr<quorvane::workflow::Narrowing>& narrowing);

private:
    void narrow();
    void use(std::shared_ptr<workflow::Narrowing> narrowing);
    void problemsWereFound();
    void offerNames();

    NarrowBar& m_bar;
    const rules::RuleManager& m_store;
    ProblemsFinder& m_finder;
    bool m_isShown = false;
    std::stop_source m_stop;
    std::stop_source m_namesStop;
    std::shared_ptr<workflow::Narrowing> m_narrowing; // the current one; null for none
    BackgroundThread m_thread;
    BackgroundThread m_namesThread; // separate, so that no choice waits for names
};

} // namespace quorvane::windows
