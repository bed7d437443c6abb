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

// Narrows the main table to what a bar of choices asks for. Rules are looked at beside the user interface
// thread, on which all of this is used, and what can be chosen is found there.
class TableNarrowing : public QObject {
    Q_OBJECT
public:
    // All of it must outlive this.
    TableNarrowing(NarrowBar& bar, const rules::RuleManager& store, ProblemsFinder& finder);
    ~TableNarrowing() override;

    // Shows the bar, or hides it and shows all rules.
    void setShown(bool isShown);

public Q_SLOTS:
    void rulesDidChange();

Q_SIGNALS:
    // The table shows what it leaves from now on; null for all rules, which is said at once.
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
    std::shared_ptr<workflow::Narrowing> m_narrowing; // that is in force; null for none
    BackgroundThread m_thread;
    BackgroundThread m_namesThread; // of its own, so that no choice waits for names
};

} // namespace quorvane::windows
