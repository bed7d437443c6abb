#pragma once

#include <atomic>
#include <cstdint>

namespace quorvane::workflow {

// What the windows share about this run of the program.
struct RunState {
    // 1 once rules or preferences were saved, and then for good: the agents are told when the program ends.
    std::int32_t g_dirty = 0;

    // The program was started to show the preferences alone.
    bool openedWithOptions = false;

    // Set after every write of the user's rules file and every reload of the table, taken back by the next
    // look at the file, so that its own writes cause the program no reload. Any thread.
    std::atomic<bool> internalWrite = false;

    // How many writes of the user's rules file go on at this moment: each look is then the program's own
    // doing. Any thread.
    std::atomic<int> writesUnderWay = 0;
};

} // namespace quorvane::workflow
