#pragma once

#include "workflow/RulesFileMonitor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace quorvane::workflow {

// Looks at the user's rules file once a second, on a thread of its own, for as long as it lives.
//
// Its end waits for no second to pass. When the file system does not answer, as a network mount that is gone,
// the end waits half a second for it and then leaves the thread behind: the thread then touches nothing that
// it was given and ends with the look it is taking, or with the program.
class RulesFileWatcher {
public:
    using Look = std::function<std::optional<std::uint64_t>(const std::string& path)>;

    // `reload` is called on the watcher's thread when somebody else has changed the file, `absorbed` when a
    // look took whatever it saw for the program's own doing, and once more a look later, when the second is
    // over that a change may share with it. They hand the work to the store's thread and neither block nor
    // end the watcher. `run` and `log` must outlive it.
    RulesFileWatcher(
        std::string path, RunState& run, platform::Log& log, std::function<void()> reload,
        std::chrono::milliseconds interval = std::chrono::seconds(1), Look look = modificationTime,
        std::function<void()> absorbed = [] {});
    ~RulesFileWatcher();
    RulesFileWatcher(const RulesFileWatcher&) = delete;
    RulesFileWatcher& operator=(const RulesFileWatcher&) = delete;

private:
    struct Watch;
    std::shared_ptr<Watch> m_watch; // the thread's too, which may outlive this object
    std::jthread m_thread;
};

} // namespace quorvane::workflow
