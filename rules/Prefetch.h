#pragma once

#include <algorithm>
#include <cstddef>

// Rules that are not visited in the order in which they lie in memory cost a wait for each pointer followed
// to one that no cache holds. A walk that asks for this memory a few rules ahead waits for several at a time.

namespace quorvane::rules {

constexpr std::size_t cacheLine = 64; // bytes

// Asks the processor to have this memory in its caches soon. Waits for nothing and never fails, whatever the
// address.
inline void prefetchMemory(const void* address)
{
    __builtin_prefetch(address);
    // GCC takes a function that does nothing else for one without effect, and drops its calls. Not so with
    // this.
    asm volatile("" ::"r"(address));
}

// The same for a whole object, of a large one for its first few hundred bytes.
template <class Object> void prefetchObject(const Object& object)
{
    constexpr std::size_t most = 256;
    const auto* const bytes = reinterpret_cast<const char*>(&object);
    for (std::size_t at = 0; at < std::min(sizeof(Object), most); at += cacheLine)
        prefetchMemory(bytes + at);
}

// A rule's path: of its texts the one that no other rule shares in most cases. Few are longer than two lines
// of the cache.
template <class Fields> void prefetchPath(const Fields& rule)
{
    if (const auto* const bytes = static_cast<const char*>(rule.path.sharedBytes())) {
        prefetchMemory(bytes);
        prefetchMemory(bytes + cacheLine);
    }
}

// Calls `use` for 0 to count - 1, in order. Each of them has been passed to `steps` one after the other, some
// calls before, so that a step may read what the step before has fetched. For the first few, of which there
// is no time before, only the last steps are taken or none.
template <class Use, class... Steps>
void forEachPrefetched(std::size_t count, const Use& use, const Steps&... steps)
{
    constexpr std::size_t distance = 8; // the work of so many calls takes longer than memory does
    for (std::size_t now = 0; now < count; ++now) {
        std::size_t ahead = now + sizeof...(steps) * distance;
        const auto take = [&](const auto& step) {
            if (ahead < count)
                step(ahead);
            ahead -= distance;
        };
        (take(steps), ...);
        use(now);
    }
}

// The same for records: visitAt(number, fetch) passes the record of that number, if there is one, to `fetch`.
// Its value and its path are fetched as well; `steps` before it.
template <class Use, class VisitAt, class... Steps>
void forEachPrefetchedRule(std::size_t count, const Use& use, const VisitAt& visitAt, const Steps&... steps)
{
    const auto onRecord = [&visitAt](const auto& fetch) {
        return [&visitAt, fetch](std::size_t number) { visitAt(number, fetch); };
    };
    forEachPrefetched(count, use, steps..., onRecord([](const auto& record) { prefetchObject(record); }),
        onRecord([](const auto& record) { prefetchObject(record.fields()); }),
        onRecord([](const auto& record) { prefetchPath(record.fields()); }));
}

} // namespace quorvane::rules
