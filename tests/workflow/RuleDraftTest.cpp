#include "workflow/RuleDraft.h"
#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

TEST(OperationBoxes, StandForTheFiveLowestBits)
{
    EXPECT_EQ(operationsForBoxes({}), 0U);
    EXPECT_EQ(operationsForBoxes({true, false, false, false, false}), 1U);
    EXPECT_EQ(operationsForBoxes({false, true, false, false, false}), 2U);
    EXPECT_EQ(operationsForBoxes({false, false, true, false, false}), 4U);
    EXPECT_EQ(operationsForBoxes({false, false, false, true, false}), 8U);
    EXPECT_EQ(operationsForBoxes({false, false, false, false, true}), 16U);
    EXPECT_EQ(operationsForBoxes({true, true, true, true, true}), 31U);
    for (std::uint32_t operations = 0; operations < 32; ++operations)
        EXPECT_EQ(operationsForBoxes(boxesForOperations(operations)), operations);
    EXPECT_EQ(operationsForBoxes(boxesForOperations(0xFFFFFFE1U)), 1U);
}

TEST(RuleDraft, SaysOfAPolicyRuleWhatHasAControl)
{
    const RuleDraft draft = draftOf(test::policyRule({.policyClass = rules::PolicyClass::deny,
        .policyType = rules::PolicyType::suffix,
        .path = ".jpg",
        .processName = "/bin/sh",
        .tag = "shell",
        .constraint = "TEAM",
        .operations = 0xFFFFFFE5U}));
    EXPECT_EQ(draft,
        (RuleDraft{.policyClass = rules::PolicyClass::deny,
            .policyType = rules::PolicyType::suffix,
            .path = ".jpg",
            .processName = "/bin/sh",
            .constraint = "TEAM",
            .operations = 5}));
}

TEST(RuleDraft, OfAWatchRuleHasNoClassAndNoConstraint)
{
    const RuleDraft draft = draftOf(test::watchRule({.path = "/w", .processName = "any", .operations = 1}));
    EXPECT_EQ(draft.policyClass, std::nullopt);
    EXPECT_EQ(draft.policyType, rules::PolicyType::prefix);
    EXPECT_EQ(draft.constraint, "");
}

TEST(RuleDraft, HasNoItemForAnUnknownCodeAndAnEmptyTextForNull)
{
    const RuleDraft draft = draftOf(
        test::policyRule({.policyClass = rules::unknownCode, .policyType = -1, .constraint = std::nullopt}));
    EXPECT_EQ(draft, RuleDraft());
}

TEST(RuleDraft, PutIntoTheRuleItWasTakenFromChangesNothingThatAControlShows)
{
    for (std::int32_t code = -1; code <= rules::unknownCode; ++code) {
        const rules::RuleRef rule = test::policyRule(
            {.policyClass = code, .policyType = code, .path = "/a", .processName = "/b", .operations = 3});
        const RuleDraft draft = draftOf(rule);
        setValue(rule, valueWithDraft(valueOf(rule), draft));
        EXPECT_EQ(draftOf(rule), draft) << code;
        EXPECT_EQ(policyRuleIn(rule)->policyClass(), code);
        EXPECT_EQ(policyRuleIn(rule)->policyType(), code);
    }
}

TEST(RuleDraft, DiffersAsSoonAsOneControlDoes)
{
    const rules::RuleRef rule = test::policyRule({.path = "/a", .processName = "/b", .operations = 3});
    const auto differsAfter = [&](auto edit) {
        RuleDraft draft = draftOf(rule);
        edit(draft);
        return draft != draftOf(rule);
    };
    EXPECT_FALSE(differsAfter([](RuleDraft&) {}));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.policyClass = rules::PolicyClass::deny; }));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.policyType = rules::PolicyType::path; }));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.path += ' '; }));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.processName.clear(); }));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.constraint = "TEAM"; }));
    EXPECT_TRUE(differsAfter([](RuleDraft& draft) { draft.operations = 1; }));
}

} // namespace quorvane::workflow
