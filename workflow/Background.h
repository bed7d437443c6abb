#pragma once

#include <functional>

namespace quorvane::workflow {

// Runs work beside the thread that owns the store.
class Background {
public:
    virtual ~Background() = default;

    // Runs `work` on another thread, one piece of work after the other, and then `then` on the store's
    // thread.
    virtual void run(std::function<void()> work, std::function<void()> then) = 0;
    // Returns when all work handed over, and what its `then` handed over in turn, is done.
    virtual void wait() = 0;
};

} // namespace quorvane::workflow
