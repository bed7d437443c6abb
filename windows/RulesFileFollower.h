#pragma once

#include "workflow/RulesFileWatcher.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <optional>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {
class ApplicationServices;
class RulesDocument;
struct RunState;
} // namespace quorvane::workflow

namespace quorvane::windows {

// Keeps the store at what the user's rules file holds when others write it. User interface thread only.
class RulesFileFollower : public QObject {
    Q_OBJECT
public:
    // What is given must outlive this.
    RulesFileFollower(workflow::RulesDocument& document, workflow::ApplicationServices& application,
        workflow::RunState& run, platform::Log& log);

    // Begins to watch the file. Once.
    void start();
    // Tells of a rules file that cannot be opened and starts the program again; nothing when it can be, or
    // when there is none.
    void checkFile();
    // Ends the program and has it started again after `delay` seconds.
    void relaunchAfterDelay(float delay);

private:
    void rulesFileDidChange();

    workflow::RulesDocument& m_document;
    workflow::ApplicationServices& m_application;
    workflow::RunState& m_run;
    platform::Log& m_log;
    // A reload is due already: changes that are found until then are part of it.
    const std::shared_ptr<std::atomic<bool>> m_isReloadDue = std::make_shared<std::atomic<bool>>(false);
    std::optional<workflow::RulesFileWatcher> m_watcher; // the last member: its end waits for its thread
};

} // namespace quorvane::windows
