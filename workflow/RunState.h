#pragma once

#include <atomic>
#include <cstdint>

namespace quorvane::workflow {

// State of this run of the program that the windows share. User interface thread, except as noted.
struct RunState {
    // 1 once rules or preferences were saved, and never reset: the agents are notified when the program ends.
    std::int32_t g_dirty = 0;

    // The program was started to show only the preferences.
    bool openedWithOptions = false;

    // Set after every write of the user's rules file and every reload of the table, cleared by the next poll
    // of the file, so that the program's own writes cause no reload. Any thread.
    std::atomic<bool> internalWrite = false;

    // The number of writes of the user's rules file in progress: polls attribute any change to the program
    // itself meanwhile. Any thread.
    std::atomic<int> writesUnderWay = 0;
};

} // namespace quorvane::workflow
