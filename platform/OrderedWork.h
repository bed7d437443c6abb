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

// Calls `make` with the numbers below `count`, on all cores, and `use` with each number and what `make` has
// returned for it, on the calling thread and in order. Only so many results wait for their turn at a time.
// Where no thread can be had, the calling one does it all. `make` must not throw.
template <class Make, class Use> void makeInOrder(std::size_t count, const Make& make, const Use& use)
{
    using Result = std::invoke_result_t<const Make&, std::size_t>;
    constexpr std::size_t mostWaiting = 256;

    std::mutex lock;
    std::condition_variable isChanged;
    std::map<std::size_t, Result> made;
    std::size_t next = 0;
    std::size_t used = 0;
    const auto mayMake = [&] { return next < count && next - used < mostWaiting; };
    const auto makeNext = [&](std::unique_lock<std::mutex>& guard) {
        const std::size_t number = next++;
        guard.unlock();
        Result result = make(number);
        guard.lock();
        made.emplace(number, std::move(result));
        if (number == used) // the one that may be waited for; a wake-up for each costs more than small work
            isChanged.notify_all();
    };
    const auto work = [&] {
        std::unique_lock guard(lock);
        while (next < count) {
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
        // Those that there are will do.
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
