#include "platform/MemoryPages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

constexpr std::size_t pages = 8;

class MemoryPages : public testing::Test {
protected:
    MemoryPages()
        : m_memory(static_cast<char*>(
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        std::fill_n(m_memory, size, 'x');
    }
    ~MemoryPages() override { munmap(m_memory, size); }

    char* at(std::size_t place) { return m_memory + place; }
    // A letter a page: r when it is in memory, else a dot.
    std::string residence() const
    {
        std::array<unsigned char, pages> marks{};
        EXPECT_EQ(mincore(m_memory, size, marks.data()), 0);
        std::string text;
        for (const unsigned char mark : marks)
            text += (mark & 1) != 0 ? 'r' : '.';
        return text;
    }

    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t size = pages * page;

private:
    char* m_memory;
};

} // namespace

TEST_F(MemoryPages, OfAPartAreDiscardedWhereTheyLieWhollyWithin)
{
    discardPages(at(1), size - 2);
    EXPECT_EQ(residence(), "r......r");
    EXPECT_EQ(std::count(at(0), at(page), 'x'), static_cast<std::ptrdiff_t>(page));
    EXPECT_EQ(std::count(at(size - page), at(size), 'x'), static_cast<std::ptrdiff_t>(page));
    *at(page) = 'y';
    EXPECT_EQ(residence(), "rr.....r") << "they stay usable";
}

TEST_F(MemoryPages, OfAPartFromPageToPageAreAllDiscarded)
{
    discardPages(at(2 * page), 3 * page);
    EXPECT_EQ(residence(), "rr...rrr");
}

TEST_F(MemoryPages, AreNotDiscardedWhereThePartHasNoWholeOne)
{
    discardPages(at(1), 2 * page - 2);
    discardPages(at(page), page - 1);
    discardPages(at(page), 0);
    EXPECT_EQ(residence(), "rrrrrrrr");
}

TEST(LargePages, KeepWhatTheMemoryHolds)
{
    constexpr std::size_t size = 8U << 20U;
    std::string bytes(size, 'x');
    useLargePages(bytes.data(), size);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'x'), static_cast<std::ptrdiff_t>(size));
}

} // namespace quorvane::platform
