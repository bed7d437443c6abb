#pragma once

#include <functional>

namespace quorvane::workflow {

// Runs work in parallel to the thread that owns the store. For that thread.
class Background {
public:
    virtual ~Background() = default;

    // Runs `work` on another thread, one after the other, and then `then` on the store's thread.
    virtual void run(std::function<void()> work, std::function<void()> then) = 0;
    // Returns when all submitted work is done, including work submitted by its `then`.
    virtual void wait() = 0;
};

} // namespace quorvane::workflow
