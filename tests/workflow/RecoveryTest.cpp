#include "tests/support/SystemCalls.h"
#include "tests/workflow/DocumentSandbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>

#include <sys/resource.h>

// Recovery from a failed or interrupted write of the user's rules, by whichever program runs next.

namespace quorvane::workflow {

namespace {

std::string lineAbout(const std::string& path)
{
    return "allow prefix \"" + path + "\" \"/bin/sh\" r \"\" \"\" \"0\"\n";
}

using Kind = DocumentNews::Kind;

history::NewVersion versionOf(std::string_view bytes, const std::string& action)
{
    history::NewVersion version;
    version.program = "killed";
    version.action = action;
    version.bytes = bytes;
    return version;
}

// During its lifetime, no file of this process can grow beyond a size.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::size_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

class Recovery : public testing::Test {
protected:
    std::string file() const { return test::TemporaryFolder::contents(path()); }
    std::string path() const { return box.locations.userRulesFile(); }
    std::unique_ptr<history::Journal> journal() const
    {
        return history::Journal::open(box.folder.path("state"), path(), {}, test::silentLog());
    }

    // The state left by a program killed while writing `meant` over `before`: the file contains `now`.
    void cutShort(const std::string& before, const std::string& meant, const std::string& now)
    {
        const auto kept = journal();
        if (!before.empty())
            kept->record(versionOf(before, "Before"));
        ASSERT_TRUE(kept->begin(versionOf(meant, "Add Rule")));
        box.writeUserRules(now);
    }

    std::vector<history::VersionState> states() const
    {
        std::vector<history::VersionState> found;
        for (const history::JournalVersion& version : journal()->versions())
            found.push_back(version.state);
        return found;
    }

    // The contents of the file, and the reports, after another program has started.
    std::vector<std::string> recovered()
    {
        test::DocumentAtWork next(box);
        next.document->recover();
        EXPECT_FALSE(history::Journal::mayBeUnderWay(box.folder.path("state"), path()));
        EXPECT_FALSE(next.document->failure());
        return next.newsOf(Kind::recovered);
    }

    test::StoreSandbox box;
};

constexpr int firstOfRules = 1; // among the calls of write, of which the first creates the marker

const std::string before = lineAbout("/a") + lineAbout("/b") + lineAbout("/c");
const std::string meant = lineAbout("/b") + lineAbout("/c") + lineAbout("/new");

} // namespace

TEST_F(Recovery, OfAWriteThatNeverBeganLeavesTheRulesAndSaysSo)
{
    cutShort(before, meant, before);
    const auto said = recovered();
    ASSERT_EQ(said.size(), 1U);
    EXPECT_NE(said[0].find("before it began"), std::string::npos) << said[0];
    EXPECT_EQ(file(), before);
    EXPECT_EQ(states(), (std::vector{history::VersionState::done}));
}

TEST_F(Recovery, OfAWriteThatIsDoneOnlySettlesTheVersion)
{
    cutShort(before, meant, meant);
    EXPECT_EQ(recovered(), std::vector<std::string>());
    EXPECT_EQ(file(), meant);
    EXPECT_EQ(states(), (std::vector{history::VersionState::done, history::VersionState::done}));
}

TEST_F(Recovery, CompletesAWriteWhereverItWasCut)
{
    const std::size_t whole = meant.size();
    for (const std::size_t length :
        {std::size_t{0}, std::size_t{1}, lineAbout("/b").size(), whole / 2, whole - 1}) {
        for (const std::string& rest : {std::string(), before.substr(std::min(length, before.size())),
                 std::string(whole - length, '\0')}) {
            const std::string now = meant.substr(0, length) + rest;
            if (now == before)
                continue;
            SCOPED_TRACE(now);
            cutShort(before, meant, now);
            const auto said = recovered();
            ASSERT_EQ(said.size(), 1U);
            EXPECT_NE(said[0].find("completed"), std::string::npos) << said[0];
            EXPECT_EQ(file(), meant);
            EXPECT_EQ(states().front(), history::VersionState::recovered);
        }
    }
}

TEST_F(Recovery, WritesWhatAnotherProgramDidSinceAndWhatWasMeant)
{
    cutShort(before, meant, lineAbout("/foreign") + before);
    test::DocumentAtWork next(box);
    next.document->recover();
    EXPECT_EQ(file(), lineAbout("/foreign") + lineAbout("/b") + lineAbout("/c") + lineAbout("/new"));
    EXPECT_FALSE(next.document->hasUnwrittenChanges());
    EXPECT_FALSE(history::Journal::mayBeUnderWay(box.folder.path("state"), path()));
}

TEST_F(Recovery, TakesTheOrderOfTheFileOverAndCallsNoMovedRuleLost)
{
    box.writeUserRules(before);
    test::DocumentAtWork window(box);
    const std::string moved = lineAbout("/new") + lineAbout("/c") + lineAbout("/b") + lineAbout("/a");
    cutShort(before, moved, moved);
    window.document->recover();
    EXPECT_EQ(test::rowPaths(*window.store), (std::vector<std::string>{"/new", "/c", "/b", "/a"}));
    EXPECT_EQ(window.newsOf(Kind::rulesLost), std::vector<std::string>());
    EXPECT_EQ(window.newsOf(Kind::merged), std::vector<std::string>{"1 rule of another program was kept."});
}

TEST_F(Recovery, ComesBeforeTheNextChange)
{
    cutShort(before, meant, meant.substr(0, 60));
    test::DocumentAtWork next(box);
    EXPECT_FALSE(next.add("/next").failure);
    EXPECT_EQ(file(), meant + lineAbout("/next"));
    EXPECT_EQ(next.newsOf(Kind::recovered).size(), 1U);
    EXPECT_EQ(next.newsOf(Kind::setAside), std::vector<std::string>());
}

TEST_F(Recovery, OfAFileThatEndsInZerosSetsNothingAside)
{
    cutShort(before, meant, meant.substr(0, 60) + std::string(40, '\0'));
    test::DocumentAtWork next(box);
    EXPECT_FALSE(next.add("/next").failure);
    EXPECT_EQ(file(), meant + lineAbout("/next"));
    EXPECT_EQ(next.newsOf(Kind::setAside), std::vector<std::string>());
}

TEST_F(Recovery, OfAWriteOnTopOfAnotherThatWasCutCompletesTheOlderOne)
{
    const std::string cut = meant.substr(0, 60);
    cutShort(before, meant, cut);
    journal()->record(versionOf(cut, "As it was found"));
    const std::string newer = lineAbout("/b") + lineAbout("/newer");
    ASSERT_TRUE(journal()->begin(versionOf(newer, "Newer"))); // and never began to write
    recovered();
    EXPECT_EQ(file(), meant);
}

TEST_F(Recovery, ThatFindsNoRoomLosesNothingAndIsTriedAgain)
{
    cutShort(before, meant, meant.substr(0, 60));
    test::DocumentAtWork next(box);
    {
        const test::SystemCallHook full(
            test::SystemCall::write, test::failing(ENOSPC, [](int) { return true; }));
        next.document->recover();
        EXPECT_TRUE(next.document->failure());
        EXPECT_EQ(next.store->userRules().size(), 3U) << "those that were meant";
    }
    EXPECT_TRUE(history::Journal::mayBeUnderWay(box.folder.path("state"), path()));
    EXPECT_FALSE(next.add("/next").failure);
    EXPECT_EQ(file(), meant + lineAbout("/next"));
    EXPECT_FALSE(history::Journal::mayBeUnderWay(box.folder.path("state"), path()));
}

TEST_F(Recovery, OfAFailedWriteBringsBackTheRuleThatWasLeftOut)
{
    box.writeUserRules(before);
    {
        test::DocumentAtWork window(box);
        const test::SystemCallHook fault(
            test::SystemCall::write, test::failing(EIO, [](int number) { return number == firstOfRules; }));
        EXPECT_TRUE(window.add("/new").failure);
    }
    EXPECT_EQ(file(), lineAbout("/b") + lineAbout("/c") + lineAbout("/new"));
    recovered();
    EXPECT_EQ(file(), before + lineAbout("/new"));
}

TEST_F(Recovery, IsNotNeededWhereThereIsNoJournalSinceAFailedWritePutsTheOldContentBack)
{
    box.writeUserRules(before);
    box.folder.write("state", "in the way");
    test::DocumentAtWork window(box);
    {
        // Space for some bytes beyond the old content, then none: the write is short before it fails.
        const FileSizeLimit limit(before.size() + 10);
        EXPECT_TRUE(window.remove("/a").failure == std::nullopt);
        EXPECT_TRUE(window.add("/new").failure == std::nullopt);
        EXPECT_TRUE(window.add("/too much").failure);
        EXPECT_EQ(file(), meant);
    }
    EXPECT_FALSE(window.add("/last").failure);
    EXPECT_EQ(file(), meant + lineAbout("/too much") + lineAbout("/last"));
}

TEST_F(Recovery, OfAnUnreadableFileKeepsItUnderAnotherNameUnlessNothingCanTakeItsPlace)
{
    box.writeUserRules(before + "\xFF");
    box.folder.write("state", "in the way");
    test::DocumentAtWork window(box);
    {
        const test::SystemCallHook full(
            test::SystemCall::write, test::failing(ENOSPC, [](int) { return true; }));
        EXPECT_TRUE(window.add("/new").failure);
    }
    EXPECT_EQ(file(), before + "\xFF");
    EXPECT_FALSE(std::filesystem::exists(path() + ".unread"));
    window.document->writeNow();
    EXPECT_EQ(file(), lineAbout("/new"));
    EXPECT_EQ(test::TemporaryFolder::contents(path() + ".unread"), before + "\xFF");
}

TEST_F(Recovery, IsTheWatchersToo)
{
    box.writeUserRules(before);
    test::DocumentAtWork window(box);
    cutShort(before, meant, meant.substr(0, 60));
    window.document->takeForeignChanges();
    EXPECT_EQ(file(), meant);
    EXPECT_EQ(window.store->userRules().size(), 3U);
    EXPECT_EQ(window.newsOf(Kind::recovered).size(), 1U);
}

TEST_F(Recovery, OfAWindowsOwnFailedWriteDoesNotTakeTheCutFileForAnothersRemoval)
{
    box.writeUserRules(before);
    test::DocumentAtWork window(box);
    {
        const test::SystemCallHook full(test::SystemCall::write,
            test::failing(ENOSPC, [](int number) { return number >= firstOfRules; }));
        EXPECT_TRUE(window.add("/new").failure);
    }
    EXPECT_EQ(file(), "");
    window.document->takeForeignChanges();
    EXPECT_EQ(file(), before + lineAbout("/new"));
    EXPECT_EQ(window.store->userRules().size(), 4U);
}

} // namespace quorvane::workflow
