#pragma once

#include "workflow/RulesFileWatcher.h"

#include <QObject>

#include <functional>
#include <optional>

namespace quorvane {

class ApplicationServices;
class Log;
class RuleManager;
struct RunState;

// Keeps the store at what the user's rules file holds when others write it. User interface thread only.
class RulesFileFollower : public QObject {
    Q_OBJECT
public:
    // A change that is found while `mayReload` answers false is passed over. What is given by reference must
    // outlive this.
    RulesFileFollower(RuleManager& store, ApplicationServices& application, RunState& run, Log& log,
        std::function<bool()> mayReload);

    // Begins to watch the file. Once.
    void start();
    // Tells of a rules file that cannot be opened and starts the program again; nothing when it can be, or
    // when there is none.
    void checkFile();
    // Ends the program and has it started again after `delay` seconds.
    void relaunchAfterDelay(float delay);

Q_SIGNALS:
    // Another process has changed the file, and the store has read it again.
    void rulesWereReloaded();

private:
    void rulesFileDidChange();

    RuleManager& m_store;
    ApplicationServices& m_application;
    RunState& m_run;
    Log& m_log;
    const std::function<bool()> m_mayReload;
    std::optional<RulesFileWatcher> m_watcher; // the last member: its end waits for its thread
};

} // namespace quorvane
