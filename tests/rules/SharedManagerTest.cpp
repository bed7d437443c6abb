#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

namespace quorvane::rules {

namespace {

// Created once per process, whichever test comes first.
const test::StoreSandbox& firstSandbox()
{
    static const test::StoreSandbox sandbox;
    static const bool written = [] {
        sandbox.writeUserRules("allow path /shared any r\n");
        return true;
    }();
    static_cast<void>(written);
    return sandbox;
}

} // namespace

TEST(SharedManager, IsOneObjectAlsoUnderConcurrentFirstCalls)
{
    const test::StoreSandbox& sandbox = firstSandbox();
    constexpr std::size_t callers = 8;
    std::vector<RuleManager*> answers(callers, nullptr);
    std::latch start(callers);
    std::vector<std::thread> threads;
    for (std::size_t caller = 0; caller < callers; ++caller) {
        threads.emplace_back([&, caller] {
            start.arrive_and_wait();
            answers[caller] = &RuleManager::sharedManager(sandbox.locations, test::silentLog());
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    for (const RuleManager* answer : answers)
        EXPECT_EQ(answer, answers.front());
    EXPECT_EQ(test::rowPaths(*answers.front()), std::vector<std::string>{"/shared"});
}

TEST(SharedManager, LaterCallsGiveTheFirstStoreWhateverTheLocations)
{
    const RuleManager& first = RuleManager::sharedManager(firstSandbox().locations, test::silentLog());
    const test::StoreSandbox other;
    other.writeUserRules("allow path /other any r\n");

    const RuleManager& second = RuleManager::sharedManager(other.locations, test::silentLog());

    EXPECT_EQ(&first, &second);
    EXPECT_EQ(second.locations().userRulesFile(), firstSandbox().locations.userRulesFile());
    EXPECT_EQ(test::rowPaths(second), std::vector<std::string>{"/shared"});
}

TEST(SharedManager, PrivateStoreIsIndependentOfIt)
{
    RuleManager& shared = RuleManager::sharedManager(firstSandbox().locations, test::silentLog());
    const auto own = firstSandbox().storeOf("allow path /own any r\nallow path /shared any r\n");

    own->applyFilterWithString("/own");
    own->sortIndexUsingDescriptors({{SortKey::path, false}});
    own->addPolicyRule(test::policyRule({.path = "/own/2", .processName = "any"}));
    own->deletePolicyRule(*test::policyAt(shared, 0));
    own->setLastErrorMessage("own");

    EXPECT_EQ(test::rowPaths(shared), std::vector<std::string>{"/shared"});
    EXPECT_EQ(shared.lastErrorMessage(), std::nullopt);
    EXPECT_EQ(test::rowPaths(*own), (std::vector<std::string>{"/own/2", "/own"}));
    EXPECT_EQ(own->storedRules(), 2U);
    EXPECT_EQ(test::policyAt(*own, 1)->sequence(), 0) << "numbers of its own";
}

} // namespace quorvane::rules
