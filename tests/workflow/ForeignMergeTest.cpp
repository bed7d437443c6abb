#include "workflow/ForeignMerge.h"

#include "rules/RulesText.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::workflow {

namespace {

class ForeignMergeTest : public testing::Test {
protected:
    void load(const std::string& text)
    {
        box.writeUserRules(text);
        store = box.load();
    }
    std::string text() const { return test::rowsAsText(*store, true); }

    test::StoreSandbox box;
    std::unique_ptr<rules::RuleManager> store;
};

} // namespace

TEST_F(ForeignMergeTest, LeadsTheStoreToTheRulesOfBothSides)
{
    load(test::fileLine("/a") + test::fileLine("/b") + test::fileLine("/c"));
    const rules::RulesSnapshot base = store->userRulesSnapshot();
    store->apply({.removed = {{store->ruleAtIndex(0, true)}}});
    ForeignMerge merge(*store, base);
    merge.run(
        rules::rulesOfText(test::fileLine("/a") + test::fileLine("/b", "theirs") + test::fileLine("/d")),
        ForeignMerge::Order::ours);

    ASSERT_TRUE(merge.isFor(*store));
    store->apply(merge.change());
    EXPECT_EQ(text(), test::fileLine("/b", "theirs") + test::fileLine("/d"));
    EXPECT_EQ(merge.theirs().size(), 3U);
    EXPECT_TRUE(merge.reports().empty());
}

TEST_F(ForeignMergeTest, WithoutChangesOfTheStoresOwnLeadsToTheOtherSideAndItsOrder)
{
    load(test::fileLine("/a") + test::fileLine("/b") + test::fileLine("/c"));
    const std::string theirs = test::fileLine("/new") + test::fileLine("/c", "theirs") + test::fileLine("/a");
    ForeignMerge merge(*store, std::nullopt);
    merge.run(rules::rulesOfText(theirs), ForeignMerge::Order::theirs);
    store->apply(merge.change());
    EXPECT_EQ(text(), theirs);
}

TEST_F(ForeignMergeTest, WithChangesOfTheStoresOwnKeepsItsOrder)
{
    load(test::fileLine("/a") + test::fileLine("/b"));
    const rules::RulesSnapshot base = store->userRulesSnapshot();
    test::policyAt(*store, 0)->setTag("ours");
    ForeignMerge merge(*store, base);
    merge.run(rules::rulesOfText(test::fileLine("/new") + test::fileLine("/b") + test::fileLine("/a")),
        ForeignMerge::Order::theirs);
    store->apply(merge.change());
    EXPECT_EQ(text(), test::fileLine("/a", "ours") + test::fileLine("/b") + test::fileLine("/new"));
}

TEST_F(ForeignMergeTest, ReportsATagThatBothSidesHaveSet)
{
    load(test::fileLine("/a"));
    const rules::RulesSnapshot base = store->userRulesSnapshot();
    test::policyAt(*store, 0)->setTag("ours");
    ForeignMerge merge(*store, base);
    merge.run(rules::rulesOfText(test::fileLine("/a", "theirs")), ForeignMerge::Order::ours);
    ASSERT_EQ(merge.reports().size(), 1U);
    EXPECT_EQ(merge.reports()[0].kind, rules::MergeReport::tagSetOnBothSides);
    EXPECT_TRUE(merge.change().isEmpty());
}

TEST_F(ForeignMergeTest, RunsWhileTheStoreChangesAndIsNoLongerForIt)
{
    std::string all;
    for (int number = 0; number < 2000; ++number)
        all += test::fileLine("/" + std::to_string(number));
    load(all);
    ForeignMerge merge(*store, std::nullopt);
    std::thread other(
        [&] { merge.run(rules::rulesOfText(all + test::fileLine("/theirs")), ForeignMerge::Order::ours); });
    for (int number = 0; number < 500; ++number) {
        test::policyAt(*store, 0)->setTag(std::to_string(number));
        store->userRulesSnapshot();
    }
    other.join();
    EXPECT_FALSE(merge.isFor(*store));
    EXPECT_EQ(merge.theirs().size(), 2001U);
}

TEST_F(ForeignMergeTest, IsForAStoreWithoutRules)
{
    load("");
    ForeignMerge merge(*store, std::nullopt);
    merge.run(rules::rulesOfText(test::fileLine("/theirs")), ForeignMerge::Order::ours);
    ASSERT_TRUE(merge.isFor(*store));
    store->apply(merge.change());
    EXPECT_EQ(text(), test::fileLine("/theirs"));
}

} // namespace quorvane::workflow
