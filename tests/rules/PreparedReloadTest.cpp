#include "rules/PreparedReload.h"

#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "tests/rules/RandomRules.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::rules {

namespace {

// From so many steps on the store is replaced.
constexpr std::size_t byReplacement = 0;
constexpr std::size_t byChanges = SIZE_MAX;

bool reloadByOtherThread(RuleManager& store, std::size_t manySteps = RuleManager::manyReloadSteps)
{
    auto reload = store.prepareReload(manySteps);
    std::thread([&reload] { reload->run(); }).join();
    const bool isDone = store.finishReload(*reload);
    std::thread([&reload] { reload.reset(); }).join();
    return isDone;
}

std::vector<RuleRef> rowsOf(const RuleManager& store)
{
    std::vector<RuleRef> rows;
    for (std::size_t row = 0; row < store.totalRules(true); ++row)
        rows.push_back(store.ruleAtIndex(row, true));
    return rows;
}

// What is to be the same however the rules were read: all but the numbers of the reading.
std::string descriptionOf(const RuleManager& store)
{
    std::string text = test::rowsAsText(store, true);
    for (const RuleRef& rule : rowsOf(store)) {
        const PolicyRule* policy = policyRuleIn(rule);
        text += std::to_string(policy == nullptr ? 0 : policy->getRuleState())
            + (isSystemRule(rule) ? "s" : "u");
        text += policy != nullptr && store.isRedundant(*policy) ? "r " : " ";
    }
    for (const FilterOption& option : store.filterOptions())
        text += std::string(option.name.written()) + "=" + std::to_string(option.value) + " ";
    return text;
}

// The values of the user's rules, as a write would get them.
std::string snapshotAsText(const RuleManager& store)
{
    std::string text;
    store.userRulesSnapshot().forEach([&text](const RuleValue& value) {
        askValue(value, [&text](const auto& fields) { text += ruleLine(fields) + "\n"; });
    });
    return text;
}

std::string line(const std::string& path, const std::string& rest = "")
{
    return "allow prefix \"" + path + "\" \"/bin/a\" r" + rest + "\n";
}

std::string lines(int count)
{
    std::string text;
    for (int number = 0; number < count; ++number)
        text += line("/" + std::to_string(number));
    return text;
}

// A store of so many rules, to whose file another program has added one.
std::unique_ptr<RuleManager> storeBehindByOne(const test::StoreSandbox& sandbox, int rules)
{
    sandbox.writeUserRules(lines(rules));
    auto store = sandbox.load();
    sandbox.writeUserRules(lines(rules) + line("/added"));
    return store;
}

// A rules file that other programs change at random.
class RandomFile {
public:
    explicit RandomFile(unsigned seed)
        : m_random(seed)
    {
        for (int count = 60; count > 0; --count)
            m_lines.push_back(randomLine());
    }

    void change()
    {
        for (std::size_t steps = m_random.below(5); steps > 0; --steps) {
            const std::size_t place = m_random.below(m_lines.size());
            switch (m_random.below(4)) {
            case 0:
                m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(place));
                break;
            case 1:
                std::swap(m_lines[place], m_lines[m_random.below(m_lines.size())]);
                break;
            default:
                m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(place), randomLine());
            }
        }
    }

    std::string text() const
    {
        std::string text;
        for (const std::string& line : m_lines)
            text += line;
        return text;
    }

    std::string randomLine()
    {
        const std::string process = m_random.oneOf<std::string>({"/bin/a", "/bin/b", "/bin/c", "any"});
        const std::string path = "\"/" + std::to_string(m_random.below(40)) + "/\" ";
        const std::string tag = m_random.oneOf<std::string>({"", "", "work"});
        if (m_random.below(5) == 0)
            return "watch prefix " + path + process + " r \"" + tag + "\"\n";
        return m_random.oneOf<std::string>({"allow", "deny"}) + " prefix " + path + process + " r \"" + tag
            + "\" \"" + m_random.oneOf<std::string>({"", "TEAM"}) + "\" \""
            + m_random.oneOf<std::string>({"0", "1700000000", std::to_string(std::time(nullptr))}) + "\"\n";
    }

    test::RandomRules& random() { return m_random; }

private:
    test::RandomRules m_random;
    std::vector<std::string> m_lines;
};

// Rules that the window has changed and not written, which a reload drops.
void changeAtRandom(RuleManager& store, RandomFile& file)
{
    const std::vector<RuleRef> rules = store.userRules();
    for (std::size_t steps = file.random().below(3); steps > 0 && !rules.empty(); --steps) {
        const RuleRef& rule = file.random().oneOf(rules);
        if (file.random().below(2) == 0)
            store.apply({.removed = {{rule}}});
        else if (const auto* policy = std::get_if<PolicyRulePtr>(&rule))
            (*policy)->setConstraint("CHANGED");
    }
}

} // namespace

// The step by step change, and the exchange of the store.
class PreparedReloadOfSteps : public testing::TestWithParam<std::size_t> { };

INSTANTIATE_TEST_SUITE_P(Steps, PreparedReloadOfSteps, testing::Values(byChanges, byReplacement));

TEST_P(PreparedReloadOfSteps, LeavesTheStoreAsAReloadLeavesIt)
{
    int finished = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        const test::StoreSandbox sandbox;
        RandomFile file(seed);
        sandbox.writeUserRules(file.text());
        sandbox.writeSystemFile("quorvane.rc", file.randomLine() + file.randomLine());
        const auto store = sandbox.load();
        store->sortIndexUsingDescriptors({{SortKey::path, true}});
        for (int step = 0; step < 10; ++step) {
            changeAtRandom(*store, file);
            file.change();
            sandbox.writeUserRules(file.text());
            if (reloadByOtherThread(*store, GetParam()))
                ++finished;
            else
                store->reloadCurrentUserConfiguration();
            const auto fresh = sandbox.emptyStore();
            fresh->sortIndexUsingDescriptors({{SortKey::path, true}});
            fresh->reloadCurrentUserConfiguration();
            store->rebuildRulesCache();
            ASSERT_EQ(descriptionOf(*store), descriptionOf(*fresh));
            ASSERT_EQ(snapshotAsText(*store), snapshotAsText(*fresh));
            for (const RuleRef& rule : store->allRules())
                ASSERT_TRUE(store->isStored(rule));
        }
    }
    EXPECT_GT(finished, 300);
}

TEST_P(PreparedReloadOfSteps, KeepsTheRecordsOfRulesThatAreStillThere)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b") + line("/c"));
    const auto store = sandbox.load();
    const std::vector<RuleRef> before = rowsOf(*store);
    const std::int64_t number = test::policyAt(*store, 0)->sequence();
    sandbox.writeUserRules(line("/new") + line("/c") + line("/a", " \"tagged\""));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/new", "/c", "/a"}));
    EXPECT_EQ(store->ruleAtIndex(1, true), before[2]);
    EXPECT_EQ(store->ruleAtIndex(2, true), before[0]);
    EXPECT_EQ(test::policyAt(*store, 2)->tag().view(), "tagged");
    EXPECT_EQ(test::policyAt(*store, 2)->sequence(), number);
    EXPECT_FALSE(store->isStored(before[1]));
}

TEST_P(PreparedReloadOfSteps, FollowsLaterChangesOfItsRulesAndOfNoOther)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b"));
    auto store = sandbox.load();
    const std::vector<RuleRef> before = rowsOf(*store);
    sandbox.writeUserRules(line("/b") + line("/new"));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    const auto gone = std::get<PolicyRulePtr>(before[0]);
    const auto kept = std::get<PolicyRulePtr>(before[1]);
    const auto rows = store->storedRows();
    gone->setPath("/elsewhere");
    EXPECT_TRUE(store->hasExactly(*rows));
    kept->setPath("/moved");
    EXPECT_FALSE(store->hasExactly(*rows));
    EXPECT_EQ(store->firstEqualRule(*kept), kept);
    EXPECT_EQ(
        store->firstEqualRule(*test::policyRule({.path = "/b", .processName = "/bin/a", .operations = 1})),
        nullptr);
    store.reset();
    kept->setTag("held by an editor");
    EXPECT_EQ(kept->path().view(), "/moved");
}

TEST_P(PreparedReloadOfSteps, CountsTheUsersRulesThatAreLost)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b") + line("/c") + line("/d"));
    sandbox.writeSystemFile("quorvane.rc", line("/system"));
    const auto store = sandbox.load();
    sandbox.writeUserRules(line("/new") + line("/d") + line("/a"));
    std::filesystem::remove(sandbox.locations.mainSystemRulesFile());
    const auto reload = store->prepareReload(GetParam());
    reload->run();
    EXPECT_EQ(reload->lostUserRules(), 2U);
}

TEST(PreparedReload, ChangesOnlyWhatDiffers)
{
    const test::StoreSandbox sandbox;
    const auto store = storeBehindByOne(sandbox, 500);
    const auto before = store->storedRows();
    ASSERT_TRUE(reloadByOtherThread(*store));
    const auto after = store->storedRows(); // what changes gets another number
    EXPECT_TRUE(after->numberedRules().sharesElementsWith(before->numberedRules()));
    EXPECT_EQ(after->numberedRules().size(), before->numberedRules().size() + 1);
    EXPECT_EQ(test::rowPaths(*store).back(), "/added");
}

TEST_P(PreparedReloadOfSteps, GivesNewRulesHigherNumbers)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b"));
    const auto store = sandbox.load();
    const std::int64_t last = test::policyAt(*store, 1)->sequence();
    sandbox.writeUserRules(line("/new") + line("/a") + line("/b"));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    const std::int64_t added = test::policyAt(*store, 0)->sequence();
    EXPECT_GT(added, last);
    sandbox.writeUserRules(line("/newer") + line("/new") + line("/a") + line("/b"));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_GT(test::policyAt(*store, 0)->sequence(), added + 2);
}

TEST_P(PreparedReloadOfSteps, IsNotFinishedAfterAChangeInTheMeantime)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b"));
    const std::vector<std::function<void(RuleManager&)>> changes{
        [](RuleManager& store) { store.addPolicyRule(test::policyRule({.path = "/c"})); },
        [](RuleManager& store) { store.apply({.removed = {{store.ruleAtIndex(0, true)}}}); },
        [](RuleManager& store) { test::policyAt(store, 0)->setTag("mine"); },
    };
    for (const auto& change : changes) {
        const auto store = sandbox.load();
        const auto reload = store->prepareReload(GetParam());
        reload->run();
        change(*store);
        const std::string changed = test::rowsAsText(*store, true);
        EXPECT_FALSE(store->finishReload(*reload));
        EXPECT_EQ(test::rowsAsText(*store, true), changed);
    }
}

// The other thread must not touch a record that stayed in the store; the thread sanitizer sees it.
TEST_P(PreparedReloadOfSteps, IsFreedElsewhereWhenItCameTooLateWhileTheStoreIsInUse)
{
    const test::StoreSandbox sandbox;
    const auto store = storeBehindByOne(sandbox, 2000);
    auto reload = store->prepareReload(GetParam());
    std::thread([&reload] { reload->run(); }).join();
    test::policyAt(*store, 0)->setTag("mine");
    EXPECT_FALSE(store->finishReload(*reload));
    std::thread other([&reload] { reload.reset(); });
    for (int number = 0; number < 1000; ++number)
        store->apply({.removed = {{store->ruleAtIndex(0, true)}}});
    other.join();
    EXPECT_EQ(store->storedRules(), 1000U);
}

TEST_P(PreparedReloadOfSteps, RunsWhileTheStoreIsInUse)
{
    const test::StoreSandbox sandbox;
    const auto store = storeBehindByOne(sandbox, 2000);
    const auto reload = store->prepareReload(GetParam());
    std::thread other([&reload] { reload->run(); });
    for (int number = 0; number < 200; ++number) {
        test::policyAt(*store, 0)->setTag(std::to_string(number));
        store->rebuildRulesCache();
        store->apply({.removed = {{store->ruleAtIndex(1, true)}}});
        store->userRulesSnapshot();
    }
    other.join();
    EXPECT_FALSE(store->finishReload(*reload));
    EXPECT_EQ(store->storedRules(), 1800U);
    EXPECT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_EQ(store->storedRules(), 2001U);
}

TEST_P(PreparedReloadOfSteps, ReplacesMostOrAllRules)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(lines(1000));
    const auto store = sandbox.load();
    sandbox.writeUserRules(lines(500));
    EXPECT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_EQ(store->storedRules(), 500U);

    sandbox.writeUserRules(line("/new") + line("/newer"));
    EXPECT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/new", "/newer"}));
}

TEST(PreparedReload, KnowsWhatIsCoveredInALargeGroupThatIsReplaced)
{
    const auto text = [](const std::string& covering, int step) {
        std::string rules = line(covering);
        for (int number = 0; number < 25'000; ++number)
            rules += line("/" + std::to_string(number % 4) + "/" + std::to_string(number * step));
        return rules;
    };
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(text("/0/", 1));
    const auto store = sandbox.load();
    store->indexLargeGroups();
    const auto expectAsIfReadAnew
        = [&] { EXPECT_TRUE(descriptionOf(*store) == descriptionOf(*sandbox.load())); };
    expectAsIfReadAnew();

    sandbox.writeUserRules(text("/1/", 2));
    ASSERT_TRUE(reloadByOtherThread(*store, byReplacement));
    expectAsIfReadAnew();

    const RuleRef covering = rowsOf(*store).front();
    ASSERT_TRUE(store->deletePolicyRule(*policyRuleIn(covering)));
    ASSERT_TRUE(store->writeToFile(sandbox.locations.userRulesFile()));
    expectAsIfReadAnew();
}

TEST_P(PreparedReloadOfSteps, MakesRulesAsOldAsTheFileIsRead)
{
    const test::StoreSandbox sandbox;
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    sandbox.writeUserRules(line("/a", " \"\" \"\" \"" + std::to_string(now) + "\"") + line("/b"));
    const auto store = sandbox.load();
    test::policyAt(*store, 0)->setInitialized(now + 1000000);
    store->sortIndexUsingDescriptors({{SortKey::ruleState, true}});
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/a", "/b"}));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), (std::vector<std::string>{"/b", "/a"}));
    EXPECT_EQ(test::policyAt(*store, 1)->getRuleState(), RuleState::recent);
}

TEST_P(PreparedReloadOfSteps, MeasuresTheAgeOfAChangedRuleAnew)
{
    const test::StoreSandbox sandbox;
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    const auto created = [](std::uint64_t time) { return " \"\" \"\" \"" + std::to_string(time) + "\""; };
    sandbox.writeUserRules(line("/a", created(now - 1000)) + line("/b"));
    const auto store = sandbox.load();
    test::policyAt(*store, 0)->setInitialized(now - 500); // read before the rule was created again
    sandbox.writeUserRules(line("/a", created(now)) + line("/b"));
    ASSERT_TRUE(reloadByOtherThread(*store, GetParam()));
    EXPECT_EQ(test::policyAt(*store, 0)->getRuleState(), RuleState::recent);
}

TEST(PreparedReload, TakesOverWhatWasReadBesidesTheRules)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a"));
    const auto store = sandbox.load();
    const std::uint64_t readings = store->ownFileReadings();
    sandbox.writePreferences(test::preference("policy.global.attach", 7));
    sandbox.writeUserRules(line("/a") + '\0' + line("/hidden"));
    ASSERT_TRUE(reloadByOtherThread(*store));
    EXPECT_EQ(store->getOption("policy.global.attach"), 7U);
    ASSERT_TRUE(store->unreadRules());
    EXPECT_FALSE(store->unreadRules()->isFailure);
    EXPECT_EQ(store->ownFileReadings(), readings + 1);
    EXPECT_TRUE(KnownFile(store->ownFile()).isStillThere());
}

TEST(PreparedReload, TakesOverWhyAFileCouldNotBeRead)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a"));
    const auto store = sandbox.load();
    EXPECT_TRUE(store->readFailures().empty());
    std::filesystem::create_directories(sandbox.locations.preferencesFile());
    ASSERT_TRUE(reloadByOtherThread(*store));
    ASSERT_EQ(store->readFailures().size(), 1U);
    EXPECT_NE(store->readFailures()[0].find(sandbox.locations.preferencesFile()), std::string::npos);
}

TEST(PreparedReload, LogsTheLinesThatItReads)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a"));
    test::CapturedLog log;
    const auto store = sandbox.load(log.log());
    sandbox.writeUserRules(line("/a") + line("/added"));
    ASSERT_TRUE(reloadByOtherThread(*store));
    const auto lines = log.lines();
    const auto linesAbout = [&lines](const std::string& path) {
        return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.starts_with("policy class 0")
                && line.find(" path " + path + " ") != std::string::npos;
        });
    };
    EXPECT_EQ(linesAbout("/a"), 2);
    EXPECT_EQ(linesAbout("/added"), 1);
}

TEST(PreparedReload, ARuleThatOnlyASystemFileHasNowIsLeftToAReload)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(line("/a") + line("/b"));
    sandbox.writeSystemFile("quorvane.rc", line("/a"));
    const auto store = sandbox.load();
    sandbox.writeUserRules(line("/b"));
    EXPECT_FALSE(reloadByOtherThread(*store));
    EXPECT_FALSE(test::policyAt(*store, 0)->system());
}

} // namespace quorvane::rules
