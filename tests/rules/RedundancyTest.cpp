#include "platform/Log.h"
#include "rules/RuleManager.h"

#include "rules/CoverIndex.h"
#include "rules/RuleLine.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

PolicyRuleFields broadRule()
{
    return {.policyType = 0, .path = "/Users/", .processName = "/bin/p", .operations = 3};
}

PolicyRuleFields narrowRule()
{
    return {.policyType = 1, .path = "/Users/a/file", .processName = "/bin/p", .operations = 1};
}

using Change = std::function<void(PolicyRuleFields&)>;
void keep(PolicyRuleFields&) { }

} // namespace

TEST(Redundancy, BroaderRuleOfTheSameApplicationCovers)
{
    const struct {
        const char* why;
        Change broad;
        Change narrow;
        bool redundant;
    } cases[] = {
        {"a prefix with more operations", keep, keep, true},
        {"an operation is missing", keep, [](auto& r) { r.operations = 17; }, false},
        {"no operations are in any", keep, [](auto& r) { r.operations = 0; }, true},
        {"operations beyond eight bits are ignored", keep, [](auto& r) { r.operations = 257; }, true},
        {"another class", keep, [](auto& r) { r.policyClass = 1; }, false},
        {"two unknown classes that are equal", [](auto& e) { e.policyClass = 4; },
            [](auto& r) { r.policyClass = 4; }, true},
        {"a path is no prefix", [](auto& e) { e.policyType = 1; }, keep, false},
        {"nor is a suffix", [](auto& e) { e.policyType = 2; }, keep, false},
        {"nor is an unknown type", [](auto& e) { e.policyType = 4; }, keep, false},
        {"the prefix counts by characters", [](auto& e) { e.path = "/Us"; }, keep, true},
        {"the same path", [](auto& e) { e.path = "/Users/a/file"; }, keep, true},
        {"a longer path", [](auto& e) { e.path = "/Users/a/file2"; }, keep, false},
        {"the case counts", [](auto& e) { e.path = "/users/"; }, keep, false},
        {"another constraint: another group", keep, [](auto& r) { r.constraint = "TEAM"; }, false},
        {"the same constraint", [](auto& e) { e.constraint = "TEAM"; },
            [](auto& r) { r.constraint = "TEAM"; }, true},
        {"a null constraint equals none", [](auto& e) { e.constraint = {}; },
            [](auto& r) { r.constraint = {}; }, false},
        {"another process", keep, [](auto& r) { r.processName = "/bin/q"; }, false},
        {"another parent", keep, [](auto& r) { r.processName = "/bin/p via any"; }, false},
        {"the path any", [](auto& e) { e.path = "any"; }, keep, true},
        {"the empty path", [](auto& e) { e.path = ""; }, keep, true},
        {"any with missing operations",
            [](auto& e) {
                e.path = "any";
                e.operations = 2;
            },
            keep, false},
        {"any in another case is a path", [](auto& e) { e.path = "Any"; }, keep, false},
        {"any is a prefix too", [](auto& e) { e.path = "any"; }, [](auto& r) { r.path = "anything"; }, true},
        {"any covers an empty path", [](auto& e) { e.path = "any"; }, [](auto& r) { r.path = ""; }, true},
        {"any covers a null path", [](auto& e) { e.path = "any"; }, [](auto& r) { r.path = {}; }, true},
        {"a null path covers nothing", [](auto& e) { e.path = {}; }, keep, false},
        {"a null path begins with nothing", keep, [](auto& r) { r.path = {}; }, false},
    };
    for (const auto& c : cases) {
        const test::StoreSandbox sandbox;
        const auto store = sandbox.emptyStore();
        PolicyRuleFields broad = broadRule();
        c.broad(broad);
        PolicyRuleFields narrow = narrowRule();
        c.narrow(narrow);
        const auto broader = test::policyRule(broad);
        store->addPolicyRule(broader);
        const PolicyRule candidate(narrow);
        EXPECT_EQ(store->isRedundant(candidate), c.redundant) << c.why;
        EXPECT_EQ(store->coveringRule(candidate), c.redundant ? broader.get() : nullptr) << c.why;
    }
}

TEST(Redundancy, AWildcardsTypeTheRulesTypeFlagsTagsAndSystemDoNotMatter)
{
    const std::vector<Change> broadChanges{[](auto& e) { e.policyType = 0; },
        [](auto& e) {
            e.path = "any";
            e.policyType = 1;
        },
        [](auto& e) {
            e.path = "";
            e.policyType = 2;
        },
        [](auto& e) {
            e.path = "any";
            e.policyType = 4;
        },
        [](auto& e) { e.flags = 1; }, [](auto& e) { e.tag = "t"; }, [](auto& e) { e.system = true; }};
    const std::vector<Change> narrowChanges{[](auto& r) { r.policyType = 0; },
        [](auto& r) { r.policyType = 2; }, [](auto& r) { r.policyType = 4; }, [](auto& r) { r.flags = 1; },
        [](auto& r) { r.tag = "t"; }, [](auto& r) { r.system = true; }};
    for (const Change& changeBroad : broadChanges) {
        for (const Change& changeNarrow : narrowChanges) {
            const test::StoreSandbox sandbox;
            const auto store = sandbox.emptyStore();
            PolicyRuleFields broad = broadRule();
            changeBroad(broad);
            PolicyRuleFields narrow = narrowRule();
            changeNarrow(narrow);
            SCOPED_TRACE(ruleLine(broad) + ruleLine(narrow));
            const auto broader = test::policyRule(broad);
            store->addPolicyRule(broader);
            EXPECT_EQ(store->coveringRule(PolicyRule(narrow)), broader.get());
            EXPECT_TRUE(coversRule(*broader, PolicyRule(narrow)));
        }
    }
}

TEST(Redundancy, GroupsThatIgnoreConstraintsStillCompareThem)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow prefix /Users/ \"any ancestor /bin/p\" rw \"\" TEAM\n");
    PolicyRuleFields fields = narrowRule();
    fields.processName = "any ancestor /bin/p";

    EXPECT_FALSE(store->isRedundant(PolicyRule(fields)));
    fields.constraint = "TEAM";
    EXPECT_TRUE(store->isRedundant(PolicyRule(fields)));
}

TEST(Redundancy, RuleAloneInItsGroupIsNotRedundant)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow prefix any /bin/p rwcmx\nallow prefix /a /bin/q r\n");

    EXPECT_FALSE(store->isRedundant(*test::policyAt(*store, 0)));
    EXPECT_FALSE(store->isRedundant(*test::policyAt(*store, 1)));
}

TEST(Redundancy, IdenticalRulesCoverEachOther)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    const auto first = test::policyRule(broadRule());
    const auto second = test::policyRule(broadRule());
    store->addPolicyRule(first);
    store->addPolicyRule(second);

    EXPECT_EQ(store->coveringRule(*first), second.get());
    EXPECT_EQ(store->coveringRule(*second), first.get());
}

TEST(Redundancy, IdenticalPathRulesDoNotCoverEachOther)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    PolicyRuleFields fields = broadRule();
    fields.policyType = 1;
    const auto first = test::policyRule(fields);
    store->addPolicyRule(first);
    store->addPolicyRule(test::policyRule(fields));

    EXPECT_FALSE(store->isRedundant(*first)) << "only prefixes and wildcards cover";
}

TEST(Redundancy, FirstCoveringRuleOfTheListIsNamedNotTheNarrowest)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow prefix /Users/a/ /bin/p r\n"
                                       "allow suffix any /bin/p r\n"
                                       "allow prefix / /bin/p r\n"
                                       "allow prefix /Users/a/file /bin/p r\n");

    const PolicyRule candidate(narrowRule());
    EXPECT_EQ(store->coveringRule(candidate), test::policyAt(*store, 0).get());
    store->deletePolicyRule(*test::policyAt(*store, 0));
    EXPECT_EQ(store->coveringRule(candidate), test::policyAt(*store, 0).get());
    EXPECT_EQ(store->coveringRule(candidate)->path().view(), "any");
}

TEST(Redundancy, DoesNotDependOnFilterOrSort)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow prefix /Users/ /bin/p rw\nallow path /Users/a /bin/p r\n");
    const PolicyRulePtr narrow = test::policyAt(*store, 1);
    store->applyFilterWithString("/Users/a");
    store->sortIndexUsingDescriptors({{SortKey::path, false}});

    EXPECT_TRUE(store->isRedundant(*narrow));
}

TEST(Redundancy, FollowsChangesOfStoredRules)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf("allow prefix /Users/ /bin/p rw\nallow path /Users/a /bin/p r\n");
    const PolicyRulePtr broad = test::policyAt(*store, 0);
    const PolicyRulePtr narrow = test::policyAt(*store, 1);
    ASSERT_TRUE(store->isRedundant(*narrow));

    broad->setPath("/Library/");
    EXPECT_FALSE(store->isRedundant(*narrow));
    broad->setPath("any");
    EXPECT_TRUE(store->isRedundant(*narrow));
    broad->setOperations(2);
    EXPECT_FALSE(store->isRedundant(*narrow));
    broad->setOperations(3);
    broad->setPolicyClass(1);
    EXPECT_FALSE(store->isRedundant(*narrow));
    broad->setPolicyClass(0);
    broad->setConstraint("TEAM");
    EXPECT_FALSE(store->isRedundant(*narrow));
    broad->setConstraint("");
    EXPECT_TRUE(store->isRedundant(*narrow));
    broad->setPath("/Users/");
    broad->setPolicyType(1);
    EXPECT_FALSE(store->isRedundant(*narrow));
}

TEST(CoversRule, AsksNothingOfTheProcess)
{
    PolicyRuleFields narrow = narrowRule();
    narrow.processName = "/bin/other";

    EXPECT_TRUE(coversRule(PolicyRule(broadRule()), PolicyRule(narrow)));
    EXPECT_FALSE(coversRule(PolicyRule(narrow), PolicyRule(broadRule())));
}

TEST(Redundancy, OfManyAlikeRulesOfSeveralProcessesTheFirstThatIsLeftCovers)
{
    // given rules of one group that differ only in the parent of their process, of which no more than two are
    // indexed
    platform::Log log({});
    RuleManager store(platform::Locations("/nonexistent", "nobody"), log);
    std::vector<PolicyRulePtr> rules;
    for (int number = 0; number < 6; ++number) {
        PolicyRuleFields fields;
        fields.path = "/usr/";
        fields.processName = "any ancestor foo via /" + std::to_string(number);
        fields.operations = 1;
        rules.push_back(std::make_shared<PolicyRule>(std::move(fields)));
        store.addPolicyRule(rules.back());
    }
    EXPECT_EQ(store.coveringRule(*rules[0]), rules[1].get());
    EXPECT_EQ(store.coveringRule(*rules[5]), rules[0].get());

    // when the first two are removed, then the next ones take over
    store.deletePolicyRule(*rules[0]);
    store.deletePolicyRule(*rules[1]);
    EXPECT_EQ(store.coveringRule(*rules[2]), rules[3].get());
    EXPECT_EQ(store.coveringRule(*rules[5]), rules[2].get());
}

} // namespace quorvane::rules
