#include "rules/RuleIdentity.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

// How many allocations of this thread still succeed; negative for all of them.
thread_local std::ptrdiff_t allocationsLeft = -1;

void* allocated(std::size_t size)
{
    if (allocationsLeft == 0)
        return nullptr;
    if (allocationsLeft > 0)
        --allocationsLeft;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

void* operator new(std::size_t size)
{
    if (void* memory = allocated(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocated(size);
}
// Not inlined: otherwise the compiler would report memory of new passed to free().
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace quorvane::rules {

namespace {

std::string manyRules()
{
    std::string text = "watch prefix \"/watched\" \"/bin/w\" r\n";
    for (int rule = 0; rule < 60; ++rule)
        text += "allow prefix \"/folder/" + std::to_string(rule % 40) + "\" \"/bin/"
            + std::to_string(rule / 20) + "\" r \"tag\"\n";
    return text;
}

using Work = std::function<void(RuleManager&)>;

// Makes each allocation of `work` fail in turn, and all after it; the store must then be as before or after
// the work, and the work must succeed once there is memory.
void failEachAllocation(const Work& prepare, const Work& work)
{
    const test::StoreSandbox sandbox;
    const auto fresh = [&] {
        auto store = sandbox.storeOf(manyRules());
        store->sortIndexUsingDescriptors({{SortKey::path, true}});
        store->isRedundant(*test::policyAt(*store, 0));
        store->totalRules(true);
        prepare(*store);
        return store;
    };
    const auto untouched = fresh();
    const std::string before = test::rowsAsText(*untouched, true);
    work(*untouched);
    const std::string after = test::rowsAsText(*untouched, true);
    bool hasFailed = true;
    for (std::ptrdiff_t allowed = 0; hasFailed; ++allowed) {
        SCOPED_TRACE(allowed);
        const auto store = fresh();
        store->setLastErrorMessage(std::nullopt);
        allocationsLeft = allowed;
        work(*store);
        store->totalRules(true);
        hasFailed = allocationsLeft == 0;
        allocationsLeft = -1;
        const std::string rows = test::rowsAsText(*store, true);
        ASSERT_TRUE(rows == before || rows == after) << rows;
        if (rows != after) {
            ASSERT_EQ(store->lastErrorMessage(), "Out of memory");
            work(*store);
            ASSERT_EQ(test::rowsAsText(*store, true), after);
        }
    }
}

void nothing(RuleManager&) { }

} // namespace

TEST(OutOfMemory, WhileSortingKeepsTheRows)
{
    failEachAllocation(nothing, [](RuleManager& store) {
        const std::ptrdiff_t left = std::exchange(allocationsLeft, -1);
        std::vector<SortDescriptor> descriptors{{SortKey::processName, false}, {SortKey::path, true}};
        allocationsLeft = left;
        store.sortIndexUsingDescriptors(std::move(descriptors));
    });
}

TEST(OutOfMemory, WhileSearchingKeepsTheRows)
{
    failEachAllocation(nothing, [](RuleManager& store) {
        static const std::string text = "folder/1";
        store.applyFilterWithString(text);
    });
}

TEST(OutOfMemory, WhileAddingADeletedRuleOfANewGroupAddsAllOrNothing)
{
    static PolicyRulePtr rule;
    failEachAllocation(
        [](RuleManager&) {
            rule = test::policyRule({.path = "/new", .processName = "/bin/new", .operations = 1});
        },
        [](RuleManager& store) { store.addPolicyRule(rule); });
    rule.reset();
}

TEST(OutOfMemory, WhileApplyingAChangeSetDoesAllOrNothing)
{
    static ChangeSet changes;
    failEachAllocation(
        [](RuleManager& store) {
            changes = {};
            changes.removed.push_back({store.ruleAtIndex(3, true)});
            changes.removed.push_back({store.ruleAtIndex(30, true)});
            changes.changed.push_back({store.ruleAtIndex(5, true), {},
                makeRuleValue(
                    PolicyRuleFields{.path = "/changed", .processName = "/bin/0", .operations = 1})});
            changes.added.push_back({store.ruleAtIndex(3, true),
                makeRuleValue(
                    PolicyRuleFields{.path = "/edited", .processName = "/bin/9", .operations = 1})});
            changes.added.push_back({test::policyRule({}),
                makeRuleValue(PolicyRuleFields{.path = "/new", .processName = "/bin/1", .operations = 1})});
        },
        [](RuleManager& store) {
            const ChangeSet done = store.apply(changes);
            EXPECT_TRUE(done.isEmpty() || done.added.size() == 2U);
        });
    changes = {};
}

TEST(OutOfMemory, WhileRemovingMostRulesAtOnceRemovesAllOrNone)
{
    static ChangeSet changes;
    failEachAllocation(
        [](RuleManager& store) {
            changes = {};
            for (std::size_t row = 0; row < 40; ++row)
                changes.removed.push_back({store.ruleAtIndex(row, true)});
            changes.added.push_back({store.ruleAtIndex(3, true), valueOf(store.ruleAtIndex(3, true))});
        },
        [](RuleManager& store) {
            const ChangeSet done = store.apply(changes);
            EXPECT_TRUE(done.isEmpty() || done.removed.size() == 40U);
        });
    changes = {};
}

TEST(OutOfMemory, WhileTakingBackARemovalOfMostRulesDoesAllOrNothing)
{
    static ChangeSet removal;
    failEachAllocation(
        [](RuleManager& store) {
            ChangeSet changes;
            for (std::size_t row = 0; row < 40; ++row)
                changes.removed.push_back({store.ruleAtIndex(row, true)});
            removal = store.apply(changes).inverted();
        },
        [](RuleManager& store) {
            const ChangeSet done = store.apply(removal);
            EXPECT_TRUE(done.isEmpty() || done.added.size() == 40U);
        });
    removal = {};
}

TEST(OutOfMemory, WhileRemovingAllRulesAsAWholeRemovesAllOrNone)
{
    failEachAllocation(nothing, [](RuleManager& store) {
        if (auto removal = store.removalOfAllUserRules())
            store.apply(std::move(*removal));
    });
}

TEST(OutOfMemory, WhilePuttingAllRulesBackAsAWholeDoesAllOrNothing)
{
    static ChangeSet removed;
    failEachAllocation(
        [](RuleManager& store) {
            removed = store.apply(store.removalOfAllUserRules().value());
            store.addPolicyRule(test::policyRule(
                {.path = "/system", .processName = "/bin/new", .operations = 1, .system = true}));
        },
        [](RuleManager& store) { store.apply(removed.inverted()); });
    removed = {};
}

TEST(OutOfMemory, WhileAskingForEqualOrCoveringRulesAnswersAsAWalkDoes)
{
    const test::StoreSandbox sandbox;
    const auto reference = sandbox.storeOf(manyRules());
    const PolicyRule asked({.path = "/folder/1/file", .processName = "/bin/0", .operations = 1});
    const PolicyRule* expected = reference->coveringRule(asked);
    ASSERT_NE(expected, nullptr);
    bool hasFailed = true;
    for (std::ptrdiff_t allowed = 0; hasFailed; ++allowed) {
        const auto store = sandbox.storeOf(manyRules());
        allocationsLeft = allowed;
        const PolicyRule* covering = store->coveringRule(asked);
        hasFailed = allocationsLeft == 0;
        allocationsLeft = -1;
        if (covering == nullptr) {
            ASSERT_EQ(store->lastErrorMessage(), "Out of memory");
        } else {
            ASSERT_EQ(covering->path().view(), expected->path().view());
        }
    }
}

} // namespace quorvane::rules
