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

// Updates the store when other programs write the user's rules file. User interface thread only.
class RulesFileFollower : public QObject {
    Q_OBJECT
public:
    // All arguments must outlive this object.
    RulesFileFollower(workflow::RulesDocument& document, workflow::ApplicationServices& application,
        workflow::RunState& run, platform::Log& log);

    // Starts watching the file. Call it once.
    void start();
    // Reports a rules file that cannot be opened and restarts the program; does nothing when it can be
    // opened, or is missing.
    void checkFile();
    // Ends the program and restarts it after `delay` seconds.
    void relaunchAfterDelay(float delay);

private:
    void rulesFileDidChange();

    workflow::RulesDocument& m_document;
    workflow::ApplicationServices& m_application;
    workflow::RunState& m_run;
    platform::Log& m_log;
    // True while a reload is pending, which covers all changes found until then.
    const std::shared_ptr<std::atomic<bool>> m_isReloadDue = std::make_shared<std::atomic<bool>>(false);
    std::optional<workflow::RulesFileWatcher>
        m_watcher; // the last member: its destructor waits for its thread
};

} // namespace quorvane::windows
