#include "rules/SlotChains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <vector>

namespace quorvane::rules {

namespace {

std::vector<std::uint32_t> slotsOf(SlotChains& chains, std::uint64_t hash)
{
    std::vector<std::uint32_t> slots;
    for (auto entry = chains.first(hash); entry != SlotChains::none; entry = chains.next(entry))
        slots.push_back(chains.slot(entry));
    return slots;
}

} // namespace

TEST(SlotChains, OfNoSlotsFindNone)
{
    SlotChains chains;
    EXPECT_EQ(chains.first(42), SlotChains::none);
    chains.link();
    EXPECT_EQ(chains.first(0), SlotChains::none);
    EXPECT_EQ(chains.size(), 0U);
}

TEST(SlotChains, SlotsOfOneHashComeOutInOrderWhateverTheOrderOfInsertion)
{
    SlotChains chains;
    for (const std::uint32_t slot : {7U, 3U, 9U, 5U, 5U, 1U})
        chains.insert(42, slot);
    chains.insert(43, 2);
    EXPECT_EQ(slotsOf(chains, 42), (std::vector<std::uint32_t>{1, 3, 5, 5, 7, 9}));
}

TEST(SlotChains, FindASlotUnderItsNewNumber)
{
    SlotChains chains;
    chains.insert(42, 7);
    chains.setSlot(chains.first(42), 8);
    EXPECT_EQ(slotsOf(chains, 42), std::vector<std::uint32_t>{8});
}

TEST(SlotChains, FindWhatAStandardTableFindsWhileTheyGrow)
{
    std::mt19937 random(31);
    SlotChains chains;
    std::multimap<std::uint64_t, std::uint32_t> table;
    for (std::uint32_t count = 0; count < 2000; ++count) {
        // Few hashes in few chains, so that those are long and hold other hashes, too.
        const std::uint64_t hash = random() % 300 * 64;
        const auto slot = static_cast<std::uint32_t>(random() % 5000);
        chains.insert(hash, slot);
        table.emplace(hash, slot);
        if (count % 7 != 0)
            continue;
        const std::uint64_t sought = random() % 320 * 64;
        std::vector<std::uint32_t> expected;
        const auto [begin, end] = table.equal_range(sought);
        std::transform(
            begin, end, std::back_inserter(expected), [](const auto& entry) { return entry.second; });
        std::sort(expected.begin(), expected.end());
        ASSERT_EQ(slotsOf(chains, sought), expected) << count;
    }
    EXPECT_EQ(chains.size(), 2000U);
}

} // namespace quorvane::rules
