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

std::string line(const std::string& path, const std::string& tag = "")
{
    return "allow prefix \"" + path + "\" \"/bin/sh\" r \"" + tag + "\" \"\" \"0\"\n";
}

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
    load(line("/a") + line("/b") + line("/c"));
    const rules::RulesSnapshot base = store->userRulesSnapshot();
    store->apply({.removed = {{store->ruleAtIndex(0, true)}}});
    ForeignMerge merge(*store, base);
    merge.run(rules::rulesOfText(line("/a") + line("/b", "theirs") + line("/d")));

    ASSERT_TRUE(merge.isFor(*store));
    store->apply(merge.change());
    EXPECT_EQ(text(), line("/b", "theirs") + line("/d"));
    EXPECT_EQ(merge.theirs().size(), 3U);
    EXPECT_TRUE(merge.reports().empty());
}

TEST_F(ForeignMergeTest, TakesTheStoreForTheBaseWithoutAnother)
{
    load(line("/a") + line("/b"));
    ForeignMerge merge(*store, std::nullopt);
    merge.run(rules::rulesOfText(line("/b")));
    store->apply(merge.change());
    EXPECT_EQ(text(), line("/b"));
}

TEST_F(ForeignMergeTest, ReportsATagThatBothSidesHaveSet)
{
    load(line("/a"));
    const rules::RulesSnapshot base = store->userRulesSnapshot();
    test::policyAt(*store, 0)->setTag("ours");
    ForeignMerge merge(*store, base);
    merge.run(rules::rulesOfText(line("/a", "theirs")));
    ASSERT_EQ(merge.reports().size(), 1U);
    EXPECT_EQ(merge.reports()[0].kind, rules::MergeReport::tagSetOnBothSides);
    EXPECT_TRUE(merge.change().isEmpty());
}

TEST_F(ForeignMergeTest, RunsWhileTheStoreChangesAndIsNoLongerForIt)
{
    std::string all;
    for (int number = 0; number < 2000; ++number)
        all += line("/" + std::to_string(number));
    load(all);
    ForeignMerge merge(*store, std::nullopt);
    std::thread other([&] { merge.run(rules::rulesOfText(all + line("/theirs"))); });
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
    merge.run(rules::rulesOfText(line("/theirs")));
    ASSERT_TRUE(merge.isFor(*store));
    store->apply(merge.change());
    EXPECT_EQ(text(), line("/theirs"));
}

} // namespace quorvane::workflow
