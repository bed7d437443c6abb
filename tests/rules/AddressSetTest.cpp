#include "rules/AddressSet.h"

#include <gtest/gtest.h>

#include <random>
#include <unordered_set>
#include <vector>

namespace quorvane::rules {

TEST(AddressSet, HoldsWhatAStandardSetHolds)
{
    std::mt19937 random(5);
    const std::vector<int> objects(3000);
    std::unordered_set<const void*> expected;
    AddressSet set; // which has to grow
    for (int step = 0; step < 6000; ++step) {
        const void* object = &objects[random() % objects.size()];
        ASSERT_EQ(set.contains(object), expected.contains(object));
        ASSERT_EQ(set.insert(object), expected.insert(object).second);
    }
    for (const int& object : objects)
        ASSERT_EQ(set.contains(&object), expected.contains(&object));
}

} // namespace quorvane::rules
