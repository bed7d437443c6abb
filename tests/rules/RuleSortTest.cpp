#include "rules/RuleSort.h"

#include "tests/rules/RandomRules.h"
#include "tests/rules/ReferenceStore.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Order = std::vector<std::uint32_t>;

const std::vector<SortKey> allKeys{SortKey::policyClass, SortKey::policyType, SortKey::path,
    SortKey::processName, SortKey::tag, SortKey::constraint, SortKey::operations, SortKey::flags,
    SortKey::created, SortKey::sequence, SortKey::system, SortKey::processShortName, SortKey::ruleState,
    SortKey::shownClass};

AppendOnlyTable<RuleRef> tableOf(const std::vector<RuleRef>& rules)
{
    AppendOnlyTable<RuleRef> table;
    for (const RuleRef& rule : rules)
        table.append(rule);
    return table;
}

Order sorted(const std::vector<RuleRef>& rules, const std::vector<SortDescriptor>& descriptors)
{
    Order order(rules.size());
    std::iota(order.begin(), order.end(), 0U);
    sortRules(order, tableOf(rules), descriptors);
    return order;
}

std::vector<RuleRef> rulesOnPaths(const std::vector<NullableText>& paths)
{
    std::vector<RuleRef> rules;
    for (const NullableText& path : paths)
        rules.emplace_back(test::policyRule({.path = path, .processName = "any"}));
    return rules;
}

} // namespace

TEST(RuleSort, PropertyNamesAreThoseOfTheRecords)
{
    EXPECT_EQ(sortKeyNamed("policyClass"), SortKey::policyClass);
    EXPECT_EQ(sortKeyNamed("policyType"), SortKey::policyType);
    EXPECT_EQ(sortKeyNamed("path"), SortKey::path);
    EXPECT_EQ(sortKeyNamed("processName"), SortKey::processName);
    EXPECT_EQ(sortKeyNamed("tag"), SortKey::tag);
    EXPECT_EQ(sortKeyNamed("constraint"), SortKey::constraint);
    EXPECT_EQ(sortKeyNamed("operations"), SortKey::operations);
    EXPECT_EQ(sortKeyNamed("flags"), SortKey::flags);
    EXPECT_EQ(sortKeyNamed("created"), SortKey::created);
    EXPECT_EQ(sortKeyNamed("sequence"), SortKey::sequence);
    EXPECT_EQ(sortKeyNamed("system"), SortKey::system);
    for (const char* other : {"", "Path", "path ", "ruleState", "nothing"})
        EXPECT_EQ(sortKeyNamed(other), std::nullopt) << other;
}

TEST(RuleSort, TextsCompareAfterCaseFoldingNullFirst)
{
    const auto rules = rulesOnPaths({"b", "A", {}, "a10", "a9", "", "\u00E4", "_", "Z"});

    EXPECT_EQ(sorted(rules, {{SortKey::path}}), (Order{2, 5, 7, 1, 3, 4, 0, 8, 6}));
    EXPECT_EQ(sorted(rules, {{SortKey::path, false}}), (Order{6, 8, 0, 4, 3, 1, 7, 5, 2}));
}

TEST(RuleSort, LongTextsAreComparedToTheirEnd)
{
    const std::string eight = "12345678";
    const std::string sixteen = eight + eight;
    const auto rules
        = rulesOnPaths({sixteen + "b", sixteen, eight, sixteen + std::string(1, '\0'), sixteen + "a",
            eight + std::string(1, '\0'), eight + std::string(8, '\0'), sixteen + sixteen, sixteen + "B"});

    EXPECT_EQ(sorted(rules, {{SortKey::path}}), (Order{2, 5, 6, 1, 3, 7, 4, 0, 8}));
    EXPECT_EQ(sorted(rules, {{SortKey::path, false}}), (Order{0, 8, 4, 7, 3, 1, 6, 5, 2}))
        << "rules that tie keep their order in either direction";
}

TEST(RuleSort, NumbersCompareAsNumbers)
{
    std::vector<RuleRef> rules;
    for (const std::uint64_t created : {10U, 9U, 100U})
        rules.emplace_back(test::policyRule({.path = "/", .processName = "any", .created = created}));
    rules.emplace_back(test::policyRule({.path = "/", .processName = "any", .created = UINT64_MAX}));
    rules.emplace_back(test::watchRule({.path = "/", .processName = "any"}));

    EXPECT_EQ(sorted(rules, {{SortKey::created}}), (Order{4, 1, 0, 2, 3})) << "watch rules have none";
    EXPECT_EQ(sorted(rules, {{SortKey::created, false}}), (Order{3, 2, 0, 1, 4}));

    std::vector<RuleRef> signedRules;
    for (const std::int64_t sequence : {1, -1, 0})
        signedRules.emplace_back(test::watchRule({.path = "/", .processName = "any", .sequence = sequence}));
    EXPECT_EQ(sorted(signedRules, {{SortKey::sequence}}), (Order{1, 2, 0}));
}

TEST(RuleSort, ClassOfAWatchRuleIsZeroAsPropertyAndTwoAsShown)
{
    const std::vector<RuleRef> rules{test::policyRule({.policyClass = 1, .path = "/", .processName = "any"}),
        test::watchRule({.path = "/", .processName = "any"}),
        test::policyRule({.policyClass = 0, .path = "/", .processName = "any"})};

    EXPECT_EQ(sorted(rules, {{SortKey::policyClass}}), (Order{1, 2, 0}));
    EXPECT_EQ(sorted(rules, {{SortKey::shownClass}}), (Order{2, 0, 1}));
}

TEST(RuleSort, LaterDescriptorsBreakTies)
{
    std::vector<RuleRef> rules;
    for (const char* names : {"b1", "a1", "b2", "a2", "a1"}) {
        rules.emplace_back(test::policyRule({.path = std::string_view(names).substr(0, 1),
            .processName = std::string_view(names).substr(1)}));
    }

    EXPECT_EQ(sorted(rules, {{SortKey::path}, {SortKey::processName, false}}), (Order{3, 1, 4, 2, 0}));
    EXPECT_EQ(sorted(rules, {{SortKey::processName, false}, {SortKey::path}}), (Order{3, 2, 1, 4, 0}));
    EXPECT_EQ(sorted(rules, {{SortKey::path}, {SortKey::path, false}}), (Order{1, 3, 4, 0, 2}));
}

TEST(RuleSort, SortsOnlyTheNumbersGiven)
{
    const auto rules = rulesOnPaths({"c", "b", "a", "d"});
    Order order{3, 0, 2};

    sortRules(order, tableOf(rules), {{SortKey::path}});
    EXPECT_EQ(order, (Order{2, 0, 3}));
    order = {3, 0, 2};
    sortRules(order, tableOf(rules), {});
    EXPECT_EQ(order, (Order{3, 0, 2}));
    Order none;
    sortRules(none, tableOf(rules), {{SortKey::path}});
    EXPECT_TRUE(none.empty());
}

TEST(RuleSort, AgreesWithAStableSortOnRandomRules)
{
    test::RandomRules random(31);
    for (int round = 0; round < 300; ++round) {
        std::vector<RuleRef> rules;
        for (std::size_t left = random.below(80); left > 0; --left) {
            if (random.below(4) == 0)
                rules.emplace_back(test::watchRule(random.watch()));
            else
                rules.emplace_back(test::policyRule(random.policy()));
        }
        std::vector<SortDescriptor> descriptors;
        for (std::size_t left = random.below(5); left > 0; --left)
            descriptors.push_back({random.oneOf(allKeys), random.below(2) == 0});
        Order order;
        for (std::uint32_t number = 0; number < rules.size(); ++number) {
            if (random.below(4) > 0)
                order.insert(
                    order.begin() + static_cast<std::ptrdiff_t>(random.below(order.size() + 1)), number);
        }

        Order expected = order;
        std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
            return test::ReferenceStore::standsBefore(rules[a], rules[b], descriptors);
        });
        sortRules(order, tableOf(rules), descriptors);
        ASSERT_EQ(order, expected) << "round " << round;
        for (std::size_t place = 1; place < order.size(); ++place) {
            const RuleRef& before = rules[order[place - 1]];
            const RuleRef& behind = rules[order[place]];
            const bool ties = !test::ReferenceStore::standsBefore(before, behind, descriptors);
            ASSERT_EQ(compareRules(before, behind, descriptors) == 0, ties);
            ASSERT_EQ(compareRules(before, behind, descriptors) < 0, !ties);
            ASSERT_EQ(compareRules(behind, before, descriptors) > 0, !ties);
        }
    }
}

TEST(RuleSort, AgreesWithAStableSortOnLongTexts)
{
    test::RandomRules random(32);
    for (int round = 0; round < 200; ++round) {
        std::vector<NullableText> paths;
        for (int left = 60; left > 0; --left) {
            std::string path;
            for (std::size_t length = random.below(40); length > 0; --length)
                path += random.oneOf<char>({'a', 'a', 'a', 'a', 'a', 'a', 'A', 'b', '\0'});
            paths.emplace_back(path);
        }
        const auto rules = rulesOnPaths(paths);
        const std::vector<SortDescriptor> descriptors{{SortKey::path, random.below(2) == 0}};
        Order expected(rules.size());
        std::iota(expected.begin(), expected.end(), 0U);
        std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
            return test::ReferenceStore::standsBefore(rules[a], rules[b], descriptors);
        });
        ASSERT_EQ(sorted(rules, descriptors), expected) << "round " << round;
    }
}

} // namespace quorvane::rules
