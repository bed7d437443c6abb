#include "rules/RuleManager.h"

#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

const Lines knownOptions{"access.user.restrict", "access.user.create", "access.user.detail",
    "security.hashing.enforce", "filter.exec.allow.signed", "policy.global.user", "policy.global.webcam",
    "policy.global.startup", "policy.global.exec", "policy.global.attach", "policy.global.paranoid",
    "ui.prompts.while_locked", "ui.prompts.oob", "ui.prompts.remote", "ui.prompts.authenticate"};

Lines namesOf(const std::vector<FilterOption>& options)
{
    Lines names;
    for (const FilterOption& option : options)
        names.emplace_back(option.name.written());
    return names;
}

Lines twice(const Lines& names)
{
    Lines both = names;
    both.insert(both.end(), names.begin(), names.end());
    return both;
}

} // namespace

TEST(FilterOption, NewOneHasANullNameAndNoValue)
{
    const FilterOption option;

    EXPECT_TRUE(option.name.isNull());
    EXPECT_EQ(option.value, 0U);
}

TEST(Options, AllKnownOnesAreAppendedInTheirOrderEvenWhenMissing)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences("");
    const auto store = sandbox.emptyStore();

    store->loadOptions();

    EXPECT_EQ(namesOf(store->filterOptions()), knownOptions);
    for (const FilterOption& option : store->filterOptions())
        EXPECT_EQ(option.value, 0U);
}

TEST(Options, NoneAreAppendedWhenThePreferencesCannotBeRead)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    store->loadOptions();
    EXPECT_TRUE(store->filterOptions().empty()) << "missing";

    sandbox.folder.write("Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist", "damaged");
    store->loadOptions();
    EXPECT_TRUE(store->filterOptions().empty()) << "damaged";
    EXPECT_EQ(store->getOption("policy.global.exec"), 0U);
}

TEST(Options, BooleanOnesAreOneOrZeroAndIntegersKeepTheirValue)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences("<key>access.user.restrict</key><integer>7</integer>"
                             "<key>access.user.create</key><string>NO</string>"
                             "<key>access.user.detail</key><true/>"
                             "<key>security.hashing.enforce</key><string>2</string>"
                             "<key>filter.exec.allow.signed</key><real>1.9</real>"
                             "<key>policy.global.user</key><integer>-1</integer>"
                             "<key>policy.global.exec</key><integer>4294967298</integer>");
    const auto store = sandbox.emptyStore();
    store->loadOptions();

    EXPECT_EQ(store->getOption("access.user.restrict"), 1U);
    EXPECT_EQ(store->getOption("access.user.create"), 0U);
    EXPECT_EQ(store->getOption("access.user.detail"), 1U);
    EXPECT_EQ(store->getOption("security.hashing.enforce"), 2U);
    EXPECT_EQ(store->getOption("filter.exec.allow.signed"), 1U);
    EXPECT_EQ(store->getOption("policy.global.user"), 0xFFFFFFFFU);
    EXPECT_EQ(store->getOption("policy.global.exec"), 2U);
}

TEST(Options, NameIsMatchedExactly)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences(test::preference("policy.global.exec", 2));
    const auto store = sandbox.emptyStore();
    store->loadOptions();

    EXPECT_EQ(store->getOption("policy.global.exec"), 2U);
    for (const char* other : {"Policy.global.exec", "policy.global.exec ", "policy.global", "", "unknown"})
        EXPECT_EQ(store->getOption(other), 0U) << other;
}

TEST(Options, SingleOnesAreReadFromThePreferencesLastRead)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences(test::preference("mine", 5));
    const auto store = sandbox.emptyStore();
    store->loadOptions();

    store->loadOptionAsBool("mine");
    EXPECT_EQ(store->filterOptions().back().value, 1U);
    store->loadOptionAsInteger("mine");
    EXPECT_EQ(store->filterOptions().back().value, 5U);
    store->loadOptionAsInteger("not there");
    EXPECT_EQ(store->filterOptions().back().name.view(), "not there");
    EXPECT_EQ(store->filterOptions().back().value, 0U);
    EXPECT_EQ(store->filterOptions().size(), knownOptions.size() + 3);
}

TEST(Options, StandTwiceInALoadedStore)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences(test::preference("policy.global.exec", 1));
    const auto store = sandbox.load();

    EXPECT_EQ(namesOf(store->filterOptions()), twice(knownOptions));
    EXPECT_EQ(store->getOption("policy.global.exec"), 1U);
}

TEST(Options, FirstCopyWinsWhenTheListIsReadTwice)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences(test::preference("policy.global.exec", 1));
    const auto store = sandbox.emptyStore();
    store->loadOptions();
    sandbox.writePreferences(test::preference("policy.global.exec", 2));
    store->loadOptions();

    EXPECT_EQ(namesOf(store->filterOptions()), twice(knownOptions));
    EXPECT_EQ(store->getOption("policy.global.exec"), 1U);
}

TEST(Options, LinesOfTheMainSystemFilesFollowThePreferences)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences(test::preference("policy.global.exec", 1));
    sandbox.writeSystemFile("quorvane.rc", "set policy.global.exec 2\nset own.option 3\n");
    const auto store = sandbox.load();

    Lines expected = twice(knownOptions);
    expected.insert(expected.end(), {"policy.global.exec", "own.option"});
    EXPECT_EQ(namesOf(store->filterOptions()), expected);
    EXPECT_EQ(store->getOption("policy.global.exec"), 1U);
    EXPECT_EQ(store->getOption("own.option"), 3U);
}

TEST(Options, MissingKeyOfReadablePreferencesStillHidesALine)
{
    const test::StoreSandbox sandbox;
    sandbox.writePreferences("");
    sandbox.writeSystemFile("quorvane.rc", "set policy.global.exec 2\n");
    sandbox.writeSystemFile("exec.rc", "allow path /exec any r\n");
    const auto store = sandbox.load();

    EXPECT_EQ(store->getOption("policy.global.exec"), 0U);
    EXPECT_EQ(test::rowPaths(*store), Lines{"/exec"});
}

TEST(Options, LinesCountOnlyInFilesNamedLikeTheMainOnes)
{
    const test::StoreSandbox sandbox;
    const std::string system = "Library/Application Support/Quorvane/";
    const struct {
        const char* why;
        std::string name;
        std::size_t options;
    } cases[] = {
        {"the main file", system + "quorvane.rc", 1},
        {"the paranoid file", system + "paranoid.rc", 1},
        {"a name that begins with the main file's", system + "quorvane.rc.d/more", 1},
        {"another system file", system + "user.rc", 0},
        {"the main file's name in another folder", "quorvane.rc", 0},
        {"a user's file", "Users/Shared/Quorvane/ann.quorvane.rc", 0},
    };
    for (const auto& c : cases) {
        const std::string file = sandbox.folder.write(c.name, "set a.b 1\n");
        for (const bool asSystem : {false, true}) {
            const auto store
                = RuleManager::initWithContentsOfFile(file, asSystem, sandbox.locations, test::silentLog());
            EXPECT_EQ(store->filterOptions().size(), c.options) << c.why;
            EXPECT_EQ(store->totalRules(true), 0U) << c.why;
        }
    }
}

TEST(Options, LongOptionLineIsNoRuleInTheMainFileButOneElsewhere)
{
    const test::StoreSandbox sandbox;
    const std::string line = "set path /a any r\n";
    sandbox.writeSystemFile("quorvane.rc", line);
    sandbox.writeSystemFile("exec.rc", line);
    const auto store = sandbox.load();

    EXPECT_EQ(store->filterOptions().size(), 1U);
    ASSERT_EQ(store->totalRules(true), 1U);
    EXPECT_EQ(test::policyAt(*store, 0)->policyClass(), 4);
}

} // namespace quorvane::rules
