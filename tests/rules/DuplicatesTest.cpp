#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace quorvane::rules {

TEST(Duplicates, AreDroppedWhateverTagAndTime)
{
    const struct {
        const char* why;
        const char* first;
        const char* second;
        std::size_t rules;
    } cases[] = {
        {"the same line", "allow path /a any r", "allow path /a any r", 1},
        {"another tag", "allow path /a any r t", "allow path /a any r u", 1},
        {"another time", "allow path /a any r t c 1", "allow path /a any r t c 2", 1},
        {"the same operations in another order", "allow path /a any rw", "allow path /a any wr", 1},
        {"two unknown classes", "permit path /a any r", "forbid path /a any r", 1},
        {"another class", "allow path /a any r", "deny path /a any r", 2},
        {"another type", "allow path /a any r", "allow prefix /a any r", 2},
        {"another path", "allow path /a any r", "allow path /A any r", 2},
        {"another process", "allow path /a any r", "allow path /a /any r", 2},
        {"other operations", "allow path /a any r", "allow path /a any w", 2},
        {"another constraint", "allow path /a any r t c", "allow path /a any r t C", 2},
        {"a watch rule of another tag", "watch path /a any r t", "watch path /a any r u", 1},
        {"a watch rule of another path", "watch path /a any r", "watch path /b any r", 2},
        {"a watch rule and a policy rule", "watch path /a any r", "allow path /a any r", 2},
    };
    const test::StoreSandbox sandbox;
    for (const auto& c : cases) {
        const auto store = sandbox.storeOf(std::string(c.first) + "\n" + c.second + "\n");
        EXPECT_EQ(store->totalRules(true), c.rules) << c.why;
    }
}

TEST(Duplicates, FirstOneReadIsKept)
{
    const test::StoreSandbox sandbox;
    const auto store
        = sandbox.storeOf("allow path /a any r first TEAM 1\nallow path /a any r second TEAM 2\n");

    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::policyAt(*store, 0)->tag().view(), "first");
    EXPECT_EQ(test::policyAt(*store, 0)->created(), 1U);
}

TEST(Duplicates, UsersRuleHidesTheSystemsEqualOne)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules("allow path /a any r\nwatch path /w any r\n");
    sandbox.writeSystemFile("quorvane.rc",
        "allow path /a any r\nwatch path /w any r\nallow path /b any r\nallow path /a any r u\n");
    const auto store = sandbox.load();

    EXPECT_EQ(store->totalRules(true), 4U) << "flags make another rule";
    EXPECT_EQ(store->totalRules(false), 2U);
}

TEST(Duplicates, OfLongWatchListsAgreeWithAPlainWalk)
{
    std::mt19937 random(5);
    std::string text;
    std::vector<WatchRulePtr> kept;
    for (int number = 0; number < 3000; ++number) {
        const auto rule = test::watchRule({.policyType = static_cast<int>(random() % 3),
            .path = "/" + std::to_string(random() % 30),
            .processName = "/p" + std::to_string(random() % 5),
            .operations = 1 + static_cast<std::uint32_t>(random() % 3)});
        const char* types[] = {"prefix", "path", "suffix"};
        const char* letters[] = {"", "r", "w", "wr"};
        text += std::string("watch ") + types[rule->policyType()] + " " + std::string(rule->path().view())
            + " " + std::string(rule->processName().view()) + " " + letters[rule->operations()] + "\n";
        bool known = false;
        for (const WatchRulePtr& other : kept)
            known = known || other->isEqualToWatchRule(*rule);
        if (!known)
            kept.push_back(rule);
    }
    std::vector<std::string> expected;
    for (const WatchRulePtr& rule : kept)
        expected.push_back(std::string(rule->path().view()));

    const test::StoreSandbox sandbox;
    EXPECT_EQ(test::rowPaths(*sandbox.storeOf(text)), expected);
}

} // namespace quorvane::rules
