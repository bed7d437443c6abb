#include "platform/MemoryPages.h"

#include <memory>

#include <sys/mman.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

constexpr std::size_t longPart = 4U << 20U; // bytes

void advisePages(char* begin, std::size_t size, int advice)
{
    static const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* first = begin;
    if (std::align(pageSize, pageSize, first, size) != nullptr)
        madvise(first, size - size % pageSize, advice);
}

} // namespace

void useLargePages(char* begin, std::size_t size)
{
    if (size >= longPart)
        advisePages(begin, size, MADV_HUGEPAGE);
}

void discardPages(char* begin, std::size_t size)
{
    advisePages(begin, size, MADV_DONTNEED);
}

} // namespace quorvane::platform
