#pragma once

#include <functional>
#include <memory>
#include <utility>

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

// Gives up what may be the last reference to something that takes long to free, such as very many rules.
template <class Object> void freeInBackground(Background& thread, std::shared_ptr<Object> object)
{
    thread.run([object = std::move(object)]() mutable { object.reset(); }, [] {});
}

} // namespace quorvane::workflow
