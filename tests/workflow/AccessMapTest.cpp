#include "workflow/AccessMap.h"

#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

rules::RuleRef rule(
    std::int32_t policyClass, std::int32_t type, const char* path, const char* process = "/bin/sh")
{
    return test::policyRule({.policyClass = policyClass,
        .policyType = type,
        .path = path,
        .processName = process,
        .operations = 1});
}

// Each folder as "depth path allow/deny/watch programs".
std::vector<std::string> mapOf(const std::vector<rules::RuleRef>& rules)
{
    std::vector<std::string> lines;
    for (const MappedFolder& folder : accessMap(rules)) {
        const AccessCounts& counts = folder.counts;
        std::string line = std::to_string(folder.depth) + " " + folder.path + " "
            + std::to_string(counts.allow) + "/" + std::to_string(counts.deny) + "/"
            + std::to_string(counts.watch);
        for (const auto& [program, number] : folder.programs)
            line += " " + program + ":" + std::to_string(number);
        lines.push_back(line);
    }
    return lines;
}

} // namespace

TEST(AccessMap, ARuleCountsForTheFolderThatItIsOnOrThatItsFileIsIn)
{
    EXPECT_EQ(mapOf({rule(rules::PolicyClass::allow, rules::PolicyType::prefix, "/Users/ann/"),
                  rule(rules::PolicyClass::deny, rules::PolicyType::path, "/Users/ann/letter"),
                  rule(rules::PolicyClass::allow, rules::PolicyType::prefix, "/Users/ann/x/y", "any"),
                  test::watchRule(
                      {.policyType = rules::PolicyType::path, .path = "/etc/hosts", .processName = "any"}),
                  rule(rules::PolicyClass::allow, rules::PolicyType::path, "~/notes")}),
        (std::vector<std::string>{"0 /Users/ann/ 1/1/0 /bin/sh:2", "1 /Users/ann/x/ 1/0/0 any:1",
            "0 /etc/ 0/0/1 any:1", "0 ~/ 1/0/0 /bin/sh:1"}));
}

TEST(AccessMap, WhatIsNoFolderStandsByItself)
{
    const auto map = accessMap({rule(rules::PolicyClass::allow, rules::PolicyType::suffix, ".txt"),
        rule(rules::PolicyClass::allow, rules::PolicyType::path, "any"),
        rule(rules::PolicyClass::deny, rules::PolicyType::prefix, ""),
        rule(rules::PolicyClass::allow, rules::PolicyType::path, ":NVRAM/boot-args"),
        rule(rules::PolicyClass::allow, rules::PolicyType::path, "word")});
    ASSERT_EQ(map.size(), 4U);
    EXPECT_EQ(map[0].kind, MappedFolder::Kind::everyPath);
    EXPECT_EQ(map[0].counts.allow + map[0].counts.deny, 2U);
    EXPECT_EQ(map[1].kind, MappedFolder::Kind::byEnding);
    EXPECT_EQ(map[2].path, ":NVRAM/");
    EXPECT_EQ(map[3].path, "word");
    EXPECT_EQ(map[3].depth, 0U);
}

TEST(AccessMap, ARuleOfAnUnknownClassIsLeftOut)
{
    EXPECT_TRUE(accessMap({rule(rules::unknownCode, rules::PolicyType::path, "/x")}).empty());
}

} // namespace quorvane::workflow
