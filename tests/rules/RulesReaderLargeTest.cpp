#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::rules {

namespace {

// Enough lines for several chunks of a long file, each line with another path.
std::string manyLines(std::size_t count, const char* lineEnd)
{
    std::string text;
    for (std::size_t number = 0; number < count; ++number) {
        text += number % 10 == 9 ? "watch" : "allow";
        text += " prefix \"/Users/ann/some/rather/long/path/" + std::to_string(number) + "\" \"/bin/p"
            + std::to_string(number % 7) + "\" r \"\"" + lineEnd;
    }
    return text;
}

} // namespace

TEST(RulesReaderLarge, LongFileIsReadInItsOrder)
{
    constexpr std::size_t lines = 20000;
    const test::StoreSandbox sandbox;
    for (const char* lineEnd : {"\n", "\r\n", "\r"}) {
        const auto store = sandbox.storeOf(manyLines(lines, lineEnd));
        ASSERT_EQ(store->totalRules(true), lines);
        store->sortIndexUsingDescriptors({{SortKey::sequence}});
        for (std::size_t row = 0; row < lines; ++row) {
            const auto path = visitRule(store->ruleAtIndex(row, true),
                [](const auto& rule) { return std::string(rule.path().view()); });
            ASSERT_EQ(path, "/Users/ann/some/rather/long/path/" + std::to_string(row));
        }
    }
}

TEST(RulesReaderLarge, DuplicatesFarApartAreDropped)
{
    const test::StoreSandbox sandbox;
    const std::string half = manyLines(10000, "\n");
    const auto store = sandbox.storeOf(half + half);

    EXPECT_EQ(store->totalRules(true), 10000U);
}

TEST(RulesReaderLarge, RulesOfVeryManyApplicationsFindTheirGroups)
{
    constexpr std::size_t applications = 20000;
    std::string text;
    for (const char* path : {"/first", "/second"}) {
        for (std::size_t number = 0; number < applications; ++number) {
            text += std::string("allow path ") + path + " /bin/p" + std::to_string(number) + " r \"\" T"
                + std::to_string(number % 3) + "\n";
        }
    }
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(text);

    const auto rules = store->policyRules();
    EXPECT_EQ(store->sortedKeys().size(), applications);
    ASSERT_EQ(rules.size(), 2 * applications);
    for (std::size_t number = 0; number < rules.size(); number += 2) {
        ASSERT_EQ(rules[number]->path().view(), "/first");
        ASSERT_EQ(rules[number + 1]->path().view(), "/second");
        ASSERT_EQ(rules[number]->processName().view(), rules[number + 1]->processName().view());
    }
}

TEST(RulesReaderLarge, LineOfTenMegabytesIsARule)
{
    const test::StoreSandbox sandbox;
    const std::string path = "/" + std::string(10U << 20U, 'p');
    const auto store = sandbox.storeOf("allow path \"" + path + "\" any r\nallow path /b any r\n");

    ASSERT_EQ(store->totalRules(true), 2U);
    EXPECT_TRUE(test::policyAt(*store, 0)->path().view() == path);
    EXPECT_EQ(test::policyAt(*store, 1)->path().view(), "/b");
    store->applyFilterWithString("PPPP");
    EXPECT_EQ(store->totalRules(true), 1U);
}

TEST(RulesReaderLarge, TenMegabytesOfQuotesOrBlanksAreNoRule)
{
    const test::StoreSandbox sandbox;
    const std::string blanks(10U << 20U, ' ');
    std::string words;
    for (int number = 0; number < 1 << 20; ++number)
        words += "\"a \" ";

    EXPECT_EQ(
        test::rowPaths(*sandbox.storeOf(blanks + "\nallow path /b any r")), std::vector<std::string>{"/b"});
    EXPECT_EQ(sandbox.storeOf(words)->totalRules(true), 1U) << "empty tokens are tokens";
}

TEST(RulesReaderLarge, MillionEmptyLinesAreSkipped)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(std::string(1000000, '\n') + "allow path /b any r");

    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::policyAt(*store, 0)->sequence(), 0);
}

} // namespace quorvane::rules
