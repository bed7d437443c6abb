#include "workflow/RuleCriteria.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/Answers.h"
#include "tests/support/FakeProgramFacts.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

using Rows = std::vector<std::size_t>;

class RuleCriteriaTest : public testing::Test {
protected:
    RuleCriteriaTest()
    {
        box.writeUserRules("watch prefix /w any r look\n" // 0
                           "deny prefix /a/ /bin/a r one\n" // 1
                           "allow path /a/ /bin/a r\n" // 2
                           "allow suffix .a \"/bin/b via /bin/a\" rw two\n" // 3
                           "allow prefix /a/ \"/bin/b (-x)\" rw two\n"); // 4
        store = box.load();
        store->sortIndexUsingDescriptors({{rules::SortKey::sequence, true}});
    }

    Rows meeting(const RuleCriteria& criteria) const { return rowsMeeting(*store, false, criteria); }

    test::StoreSandbox box;
    std::unique_ptr<rules::RuleManager> store;
};

} // namespace

TEST_F(RuleCriteriaTest, OfTheSameOneAnyHolds)
{
    EXPECT_EQ(meeting({}), (Rows{0, 1, 2, 3, 4}));
    EXPECT_EQ(meeting({.classes = {2}}), (Rows{0}));
    EXPECT_EQ(meeting({.classes = {1, 2}}), (Rows{0, 1}));
    EXPECT_EQ(meeting({.types = {1, 2}}), (Rows{2, 3}));
    EXPECT_EQ(meeting({.tags = {""}}), (Rows{2}));
    EXPECT_EQ(meeting({.tags = {"look", "two", "on"}}), (Rows{0, 3, 4}));
    EXPECT_EQ(meeting({.processes = {"/bin/b via /bin/a"}}), (Rows{3}));
    EXPECT_EQ(meeting({.programs = {"/bin/b"}}), (Rows{3, 4}));
    EXPECT_EQ(meeting({.programs = {"any", "/bin/a"}}), (Rows{0, 1, 2}));
    EXPECT_EQ(meeting({.paths = {"/a/", "/w"}}), (Rows{0, 1, 2, 4}));
    EXPECT_EQ(meeting({.paths = {"/A/", "/a"}}), Rows{});
    EXPECT_EQ(meeting({.rows = {4, 1, 1}}), (Rows{1, 4}));
}

TEST_F(RuleCriteriaTest, OfDifferentOnesAllHold)
{
    EXPECT_EQ(meeting({.classes = {0}, .types = {0}}), (Rows{4}));
    EXPECT_EQ(meeting({.tags = {"two"}, .programs = {"/bin/b"}, .rows = {0, 3}}), (Rows{3}));
    EXPECT_EQ(meeting({.classes = {2}, .programs = {"/bin/a"}}), Rows{});
}

TEST_F(RuleCriteriaTest, CountsRowsAsFilterAndSortOrderMakeThem)
{
    store->applyFilterWithString("/a/");
    store->sortIndexUsingDescriptors({{rules::SortKey::sequence, false}});
    EXPECT_EQ(meeting({}), (Rows{0, 1, 2}));
    EXPECT_EQ(meeting({.classes = {1}}), (Rows{2}));
    EXPECT_EQ(missingRow(*store, false, {.rows = {2}}), std::nullopt);
    EXPECT_EQ(missingRow(*store, false, {.rows = {0, 3}}), 3U);
    EXPECT_EQ(meeting({.rows = {3}}), Rows{});
}

TEST_F(RuleCriteriaTest, FindingsChooseTheRowsOfWhichTheyAreTold)
{
    test::FakeProgramFacts facts;
    facts.existing = {"/bin/a"};
    const auto found = [&](std::vector<FindingKind> findings, RuleCriteria criteria = {}) {
        criteria.findings = std::move(findings);
        return rowsMeeting(*store, false, criteria, RulesPlace::of(facts));
    };
    EXPECT_EQ(found({FindingKind::invalidProgram}), (Rows{3, 4}));
    EXPECT_EQ(found({FindingKind::invalidProgram}, {.types = {0}}), (Rows{4}));
    EXPECT_EQ(found({FindingKind::joined}), Rows{});
    EXPECT_EQ(found({FindingKind::overlap}), (Rows{2}));
    EXPECT_EQ(found({FindingKind::overlap, FindingKind::invalidProgram}), (Rows{2, 3, 4}));
}

TEST_F(RuleCriteriaTest, KnowWhetherRowsAloneAreNamed)
{
    EXPECT_TRUE(RuleCriteria().isEmpty());
    EXPECT_FALSE(RuleCriteria().isOfRowsAlone());
    EXPECT_TRUE(RuleCriteria{.rows = {0}}.isOfRowsAlone());
    EXPECT_FALSE((RuleCriteria{.tags = {""}, .rows = {0}}.isOfRowsAlone()));
    EXPECT_FALSE(RuleCriteria{.tags = {""}}.isEmpty());
}

} // namespace quorvane::workflow
