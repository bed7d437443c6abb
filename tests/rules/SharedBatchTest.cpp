#include "rules/SharedBatch.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quorvane::rules {

namespace {

// Counts the living objects.
struct Counted {
    explicit Counted(int& counter, int wanted)
        : living(counter)
        , value(wanted)
    {
        ++living;
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --living; }

    int& living;
    int value;
};

} // namespace

TEST(SharedBatch, ItsObjectsOutliveIt)
{
    int living = 0;
    std::vector<std::shared_ptr<Counted>> objects;
    {
        SharedBatch<Counted> batch(3);
        for (int value = 0; value < 10; ++value)
            objects.push_back(batch.make(living, value));
    }
    EXPECT_EQ(living, 10);
    for (int value = 0; value < 10; ++value)
        EXPECT_EQ(objects[static_cast<std::size_t>(value)]->value, value);
}

TEST(SharedBatch, ObjectsAreDestroyedOnceWithTheLastOfTheirBatch)
{
    int living = 0;
    SharedBatch<Counted> batch(2);
    auto first = batch.make(living, 1);
    auto second = batch.make(living, 2);
    auto third = batch.make(living, 3);
    first.reset();
    EXPECT_EQ(living, 3);
    second.reset();
    EXPECT_EQ(living, 1);
    EXPECT_EQ(third->value, 3);
}

TEST(SharedBatch, AnIncompleteBatchDestroysOnlyWhatItHolds)
{
    int living = 0;
    {
        SharedBatch<Counted> batch(100);
        batch.make(living, 1);
        EXPECT_EQ(living, 1);
    }
    EXPECT_EQ(living, 0);
}

} // namespace quorvane::rules
