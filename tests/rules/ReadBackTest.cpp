#include "rules/RuleLine.h"

#include "tests/rules/RandomRules.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace quorvane::rules {

namespace {

bool same(const NullableText& a, const NullableText& b)
{
    return a.isNull() == b.isNull() && a.view() == b.view();
}

bool sameTag(const NullableText& written, const NullableText& read)
{
    std::string plain(written.view());
    std::erase(plain, '"');
    return written.isNull() == read.isNull() && plain == read.view();
}

bool sameRule(const PolicyRuleFields& a, const PolicyRuleFields& b)
{
    return a.policyClass == b.policyClass && a.policyType == b.policyType && same(a.path, b.path)
        && same(a.processName, b.processName) && a.operations == b.operations && sameTag(a.tag, b.tag)
        && same(a.constraint, b.constraint) && a.created == b.created;
}

bool sameRule(const WatchRuleFields& a, const WatchRuleFields& b)
{
    return a.policyType == b.policyType && same(a.path, b.path) && same(a.processName, b.processName)
        && a.operations == b.operations && sameTag(a.tag, b.tag);
}

// Writes the rule to a file, followed by another rule of its kind, and reads them: both must be unchanged.
template <class Fields> bool survivesAFile(const test::StoreSandbox& sandbox, const Fields& fields)
{
    Fields behind;
    behind.path = "/the/rule/behind";
    behind.processName = "any";
    behind.operations = 1;
    std::vector<RuleRef> rules;
    if constexpr (std::is_same_v<Fields, PolicyRuleFields>)
        rules = {test::policyRule(fields), test::policyRule(behind)};
    else
        rules = {test::watchRule(fields), test::watchRule(behind)};
    const std::string file = sandbox.folder.path("out.quorv");
    sandbox.emptyStore()->writeToFile(file, rules);
    const auto store = RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog());
    store->sortIndexUsingDescriptors({{SortKey::sequence}});
    const auto isThere = [&](std::size_t row, const Fields& wanted) {
        using Pointer
            = std::conditional_t<std::is_same_v<Fields, PolicyRuleFields>, PolicyRulePtr, WatchRulePtr>;
        const auto* read = std::get_if<Pointer>(&store->ruleAtIndex(row, true));
        return read != nullptr && sameRule(wanted, (*read)->fields());
    };
    return store->totalRules(true) == 2 && isThere(0, fields) && isThere(1, behind);
}

const std::vector<NullableText> hostileTexts{"/a", "/a b", " /a", "/a ", " ", "", "a  b", "/a\"b", "\"",
    "\"\"", "\"a\"", "/caf\u00E9", "\U0001F600", "a\nb", "a\rb", "a\vb", "a\u0085b", "a\u2028", "a\tb", ";a",
    "(null)", {}, "a\0b"s, "a\xFF", "\uFEFF", "\\", "'", "r", "12", "\n"};

} // namespace

TEST(ReadsBackAsWritten, SaysWhatWouldBeLost)
{
    const struct {
        const char* why;
        std::function<void(PolicyRuleFields&)> change;
        bool readsBack;
    } cases[] = {
        {"a plain rule", [](auto&) {}, true},
        {"blanks within", [](auto& r) { r.path = "/a  b c"; }, true},
        {"a blank in front", [](auto& r) { r.path = " /a"; }, true},
        {"empty texts", [](auto& r) { r.path = r.processName = r.tag = r.constraint = ""; }, true},
        {"quotes in the tag", [](auto& r) { r.tag = "\"t\""; }, true},
        {"flags are not asked for", [](auto& r) { r.flags = 3; }, true},
        {"unknown class and type", [](auto& r) { r.policyClass = r.policyType = 4; }, true},
        {"the top bit of the time", [](auto& r) { r.created = UINT64_MAX; }, true},
        {"no operations", [](auto& r) { r.operations = 0; }, false},
        {"operations without a letter", [](auto& r) { r.operations = 33; }, false},
        {"another unknown class", [](auto& r) { r.policyClass = 3; }, false},
        {"the class of watch rules", [](auto& r) { r.policyClass = 2; }, false},
        {"another unknown type", [](auto& r) { r.policyType = 9; }, false},
        {"a quote in the path", [](auto& r) { r.path = "/a\"b"; }, false},
        {"a quote in the process", [](auto& r) { r.processName = "\""; }, false},
        {"a quote in the constraint", [](auto& r) { r.constraint = "\"\""; }, false},
        {"a trailing blank in the path", [](auto& r) { r.path = "/a "; }, false},
        {"a trailing blank in the tag", [](auto& r) { r.tag = "t "; }, false},
        {"beyond ASCII", [](auto& r) { r.path = "/caf\u00E9"; }, false},
        {"beyond ASCII in the tag", [](auto& r) { r.tag = "\U0001F600"; }, false},
        {"a line end", [](auto& r) { r.tag = "a\nb"; }, false},
        {"a null path", [](auto& r) { r.path = {}; }, false},
        {"a null process", [](auto& r) { r.processName = {}; }, false},
        {"a null constraint", [](auto& r) { r.constraint = {}; }, false},
        {"a null tag", [](auto& r) { r.tag = {}; }, false},
        {"a NUL", [](auto& r) { r.path = "/a\0b"s; }, false},
        {"bytes that are no UTF-8, which lose the whole file", [](auto& r) { r.tag = "a\xFF"; }, false},
    };
    const test::StoreSandbox sandbox;
    for (const auto& c : cases) {
        PolicyRuleFields rule{.path = "/a",
            .processName = "/bin/p",
            .tag = "t",
            .constraint = "c",
            .operations = 3,
            .created = 1478000000};
        c.change(rule);
        EXPECT_EQ(survivesAFile(sandbox, rule), c.readsBack) << c.why << ", through a file";
        EXPECT_EQ(readsBackAsWritten(rule), c.readsBack) << c.why;
    }
}

TEST(ReadsBackAsWritten, AgreesWithAFileOnRandomPolicyRules)
{
    test::RandomRules random(41);
    const test::StoreSandbox sandbox;
    std::size_t surviving = 0;
    for (int round = 0; round < 1500; ++round) {
        PolicyRuleFields rule{.policyClass = random.oneOf<std::int32_t>({0, 1, 1, 2, 3, 4}),
            .policyType = random.oneOf<std::int32_t>({0, 1, 2, 4, -1}),
            .path = "/a",
            .processName = "any",
            .tag = "t",
            .constraint = "c",
            .operations = random.oneOf<std::uint32_t>({1, 3, 31, 31, 0, 32}),
            .created = random.oneOf<std::uint64_t>({0, 5, 0x8000000000000000U})};
        for (std::size_t changes = random.below(3); changes > 0; --changes) {
            const auto property = random.oneOf<NullableText PolicyRuleFields::*>({&PolicyRuleFields::path,
                &PolicyRuleFields::processName, &PolicyRuleFields::tag, &PolicyRuleFields::constraint});
            rule.*property = random.oneOf(hostileTexts);
        }
        const bool survives = survivesAFile(sandbox, rule);
        surviving += survives ? 1 : 0;
        ASSERT_EQ(readsBackAsWritten(rule), survives) << ruleLine(rule);
    }
    EXPECT_GT(surviving, 100U);
}

TEST(ReadsBackAsWritten, AgreesWithAFileOnRandomWatchRules)
{
    test::RandomRules random(42);
    const test::StoreSandbox sandbox;
    std::size_t surviving = 0;
    for (int round = 0; round < 1500; ++round) {
        WatchRuleFields rule{.policyType = random.oneOf<std::int32_t>({0, 1, 2, 4, 5}),
            .path = "/a",
            .processName = "any",
            .tag = "t",
            .operations = random.oneOf<std::uint32_t>({1, 3, 31, 31, 0, 32})};
        for (std::size_t changes = random.below(3); changes > 0; --changes) {
            const auto property = random.oneOf<NullableText WatchRuleFields::*>(
                {&WatchRuleFields::path, &WatchRuleFields::processName, &WatchRuleFields::tag});
            rule.*property = random.oneOf(hostileTexts);
        }
        const bool survives = survivesAFile(sandbox, rule);
        surviving += survives ? 1 : 0;
        ASSERT_EQ(readsBackAsWritten(rule), survives) << ruleLine(rule);
    }
    EXPECT_GT(surviving, 100U);
}

TEST(RoundTrip, StoreOfWritableRulesComesBackWhole)
{
    test::RandomRules random(43);
    const test::StoreSandbox sandbox;
    for (int round = 0; round < 40; ++round) {
        const auto store = sandbox.emptyStore();
        for (int left = 60; left > 0; --left) {
            PolicyRuleFields policy = random.policy();
            policy.flags = 0;
            policy.system = false;
            if (readsBackAsWritten(policy) && !store->firstEqualRule(PolicyRule(policy)))
                store->addPolicyRule(test::policyRule(policy));
            WatchRuleFields watch = random.watch();
            watch.flags = 0;
            watch.system = false;
            if (readsBackAsWritten(watch) && !store->firstEqualRule(WatchRule(watch)))
                store->addWatchRule(test::watchRule(watch));
        }
        ASSERT_GT(store->totalRules(true), 5U);
        const std::string file = sandbox.folder.path("out.rc");
        ASSERT_TRUE(store->writeToFile(file));

        const auto read
            = RuleManager::initWithContentsOfFile(file, false, sandbox.locations, test::silentLog());

        EXPECT_EQ(test::rowsAsText(*read, true), test::rowsAsText(*store, true));
        EXPECT_EQ(test::rowsAsText(*read, true), test::TemporaryFolder::contents(file));
    }
}

} // namespace quorvane::rules
