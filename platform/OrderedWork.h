#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace quorvane::platform {

// Calls `make` with each number below `count`, on all cores, and `use` with each number and the result of
// `make`, on the calling thread and in order. At most 256 results are in flight, which bounds memory. Where
// no thread can be created, the calling one does all the work. `make` must not throw.
template <class Make, class Use> void makeInOrder(std::size_t count, const Make& make, const Use& use)
{
    using Result = std::invoke_result_t<const Make&, std::size_t>;
    constexpr std::size_t mostWaiting = 256;

    std::mutex lock;
    std::condition_variable isChanged;
    std::map<std::size_t, Result> made;
    std::size_t next = 0;
    std::size_t used = 0;
    const auto isAnyLeft = [&] { return next < count; };
    const auto mayMake = [&] { return isAnyLeft() && next - used < mostWaiting; };
    const auto makeNext = [&](std::unique_lock<std::mutex>& guard) {
        const std::size_t number = next++;
        guard.unlock();
        Result result = make(number);
        guard.lock();
        made.emplace(number, std::move(result));
        if (number
            == used) // the only one being waited for; a wake-up per result costs more than a small task
            isChanged.notify_all();
    };
    const auto work = [&] {
        std::unique_lock guard(lock);
        while (isAnyLeft()) {
            if (mayMake())
                makeNext(guard);
            else
                isChanged.wait(guard);
        }
    };

    std::vector<std::jthread> workers;
    const std::size_t wanted = std::min<std::size_t>(std::thread::hardware_concurrency(), count);
    try {
        while (workers.size() + 1 < wanted)
            workers.emplace_back(work);
    } catch (const std::system_error&) {
        // Continue with the threads created so far.
    }
    std::unique_lock guard(lock);
    while (used < count) {
        if (auto ready = made.extract(used)) {
            guard.unlock();
            use(ready.key(), ready.mapped());
            guard.lock();
            const bool wasFull = next - used == mostWaiting;
            ++used;
            if (wasFull)
                isChanged.notify_all();
        } else if (mayMake()) {
            makeNext(guard);
        } else {
            isChanged.wait(guard);
        }
    }
}

} // namespace quorvane::platform
