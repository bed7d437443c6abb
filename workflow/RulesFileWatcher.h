#pragma once

#include "workflow/RulesFileMonitor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace quorvane::workflow {

// Polls the user's rules file once a second, on its own thread, during its lifetime.
//
// Destruction does not wait for the next poll. If the file system does not respond, as with a lost network
// mount, the destructor waits half a second and then abandons the thread, which uses none of the arguments
// any more and ends with its current poll, or with the program.
class RulesFileWatcher {
public:
    using Look = std::function<std::optional<std::uint64_t>(const std::string& path)>;

    // `reload` is called on the watcher's thread when another process has changed the file; `absorbed` when a
    // poll attributed whatever it saw to the program itself, and again one poll later, after the second in
    // which another change would have the same time stamp. They must post to the store's thread and neither
    // block nor destroy the watcher. `run` and `log` must outlive it.
    RulesFileWatcher(
        std::string path, RunState& run, platform::Log& log, std::function<void()> reload,
        std::chrono::milliseconds interval = std::chrono::seconds(1), Look look = modificationTime,
        std::function<void()> absorbed = [] {});
    ~RulesFileWatcher();
    RulesFileWatcher(const RulesFileWatcher&) = delete;
    RulesFileWatcher& operator=(const RulesFileWatcher&) = delete;

private:
    struct Watch;
    std::shared_ptr<Watch> m_watch; // shared with the thread, which may outlive this object
    std::jthread m_thread;
};

} // namespace quorvane::workflow
