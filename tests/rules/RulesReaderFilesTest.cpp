#include "rules/RuleManager.h"

#include "rules/RulesFile.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/rules/SystemErrorWords.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

constexpr const char* readableRule = "allow path /a any r\n";

// The reader's result for a file.
struct Outcome {
    bool result;
    std::optional<std::string> message;
    Lines log;
    std::size_t rules;
};

Outcome read(const test::StoreSandbox& sandbox, const NullableText& path)
{
    test::CapturedLog log;
    RuleManager store(sandbox.locations, log.log());
    store.setLastErrorMessage("of an earlier reading");
    Outcome outcome{store.addFileContents(path, false), store.lastErrorMessage(), log.lines(), 0};
    store.rebuildRulesCache();
    outcome.rules = store.totalRules(true);
    return outcome;
}

void expectNothingRead(const Outcome& outcome, const std::string& path)
{
    EXPECT_TRUE(outcome.result) << path;
    EXPECT_EQ(outcome.message, std::nullopt) << path;
    EXPECT_EQ(outcome.log, Lines{"failed to load contents of " + path});
    EXPECT_EQ(outcome.rules, 0U) << path;
}

void expectFailure(const Outcome& outcome, const std::string& message)
{
    EXPECT_FALSE(outcome.result) << message;
    EXPECT_EQ(outcome.message, message);
    EXPECT_EQ(outcome.log, Lines()) << message;
    EXPECT_EQ(outcome.rules, 0U) << message;
}

} // namespace

TEST(RulesReaderFiles, MissingEmptyOrUndecodableIsNothingReadAndNoFailure)
{
    const test::StoreSandbox sandbox;
    std::filesystem::create_symlink(sandbox.folder.path("nowhere"), sandbox.folder.path("dangling"));
    std::filesystem::create_symlink(sandbox.folder.write("empty", ""), sandbox.folder.path("to-empty"));
    ASSERT_EQ(mkfifo(sandbox.folder.path("pipe").c_str(), 0600), 0);

    for (const std::string& path : {
             sandbox.folder.path("missing"),
             sandbox.folder.path("missing-folder/file"),
             sandbox.folder.path("empty"),
             sandbox.folder.path("dangling"),
             sandbox.folder.path("to-empty"),
             sandbox.folder.path("pipe"),
             sandbox.folder.write("wrong", std::string(readableRule) + "allow path /\xFF any r\n"),
             sandbox.folder.write("cut", std::string(readableRule) + "\xE2\x82"),
             sandbox.folder.write("surrogate", std::string(readableRule) + "\xED\xA0\x80"),
             std::string(),
         })
        expectNothingRead(read(sandbox, path), path);
}

TEST(RulesReaderFiles, MissingFileLeavesTheStoreAsItIs)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(readableRule);

    EXPECT_TRUE(store->addFileContents(sandbox.folder.path("missing"), false));
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"});
}

TEST(RulesReaderFiles, NullPathFails)
{
    const Outcome outcome = read(test::StoreSandbox(), {});

    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.message, "Internal error: the path provided was null");
    EXPECT_EQ(outcome.log, Lines{"could not open null path"});
}

TEST(RulesReaderFiles, SymbolicLinkIsRefused)
{
    const test::StoreSandbox sandbox;
    const std::string link = sandbox.folder.path("link");
    std::filesystem::create_symlink(sandbox.folder.write("target", readableRule), link);

    expectFailure(read(sandbox, link),
        "Failed to open file '" + link + "' for reading: " + test::systemErrorWords(ELOOP));
}

TEST(RulesReaderFiles, LinkAmongTheFoldersAboveIsFollowed)
{
    const test::StoreSandbox sandbox;
    sandbox.folder.write("real/file", readableRule);
    std::filesystem::create_symlink(sandbox.folder.path("real"), sandbox.folder.path("link"));

    EXPECT_EQ(read(sandbox, sandbox.folder.path("link/file")).rules, 1U);
}

TEST(RulesReaderFiles, FolderCannotBeRead)
{
    const test::StoreSandbox sandbox;
    const std::string folder = sandbox.folder.path();
    struct stat status { };
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    if (status.st_size == 0)
        GTEST_SKIP() << "on this file system folders have no size";

    expectFailure(
        read(sandbox, folder), "Failed to read() file '" + folder + "': " + test::systemErrorWords(EISDIR));
}

TEST(RulesReaderFiles, UnreadableFileCannotBeOpened)
{
    const test::StoreSandbox sandbox;
    std::filesystem::permissions(sandbox.folder.path(), std::filesystem::perms::all);
    const std::string file = sandbox.folder.write("secret", readableRule);
    std::filesystem::permissions(file, std::filesystem::perms::owner_write);

    const std::string answer = test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        const auto store = sandbox.emptyStore();
        const bool result = store->addFileContents(file, false);
        return (result ? "true " : "false ") + store->lastErrorMessage().value_or("none");
    });

    EXPECT_EQ(
        answer, "false Failed to open file '" + file + "' for reading: " + test::systemErrorWords(EACCES));
}

TEST(RulesReaderFiles, DescriptorZeroCountsAsAFailure)
{
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.write("file", readableRule);

    const std::string answer = test::answerOfChild([&] {
        close(STDIN_FILENO);
        const auto store = sandbox.emptyStore();
        const bool result = store->addFileContents(file, false);
        return (result ? "true " : "false ") + store->lastErrorMessage().value_or("none");
    });

    EXPECT_EQ(answer, "false Failed to open file '" + file + "' for reading: " + test::systemErrorWords(0));
}

TEST(RulesReaderFiles, FileThatEndsBeforeItsSizeCannotBeRead)
{
    // Files in sysfs report a size of one page but contain less.
    const std::string file = "/sys/kernel/mm/transparent_hugepage/enabled";
    struct stat status { };
    if (stat(file.c_str(), &status) != 0 || status.st_size < 1024)
        GTEST_SKIP() << "no file that is shorter than its size";

    expectFailure(read(test::StoreSandbox(), file),
        "Failed to read() file '" + file + "': " + test::systemErrorWords(0));
}

TEST(RulesReaderFiles, FileLargerThanMemoryIsAFailureNotACrash)
{
    int overcommit = 0;
    std::ifstream("/proc/sys/vm/overcommit_memory") >> overcommit;
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.write("huge", "x");
    constexpr off_t hugeSize = off_t{1} << 43;
    if (overcommit == 1 || truncate(file.c_str(), hugeSize) != 0)
        GTEST_SKIP() << "here such a file cannot be made, or such memory can be had";

    const Outcome outcome = read(sandbox, file);

    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.message, "Internal error: unable to allocate memory");
    EXPECT_EQ(outcome.log, Lines{"failed to allocate buffer for " + file});
}

TEST(RulesReaderFiles, FailureKeepsWhatWasReadBefore)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(readableRule);
    const std::string link = sandbox.folder.path("link");
    std::filesystem::create_symlink(sandbox.folder.write("target", "allow path /b any r\n"), link);

    EXPECT_FALSE(store->addFileContents(link, false));
    store->rebuildRulesCache();
    EXPECT_EQ(test::rowPaths(*store), Lines{"/a"});
}

TEST(RulesReaderFiles, EveryReadingStartsWithoutMessage)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.emptyStore();
    store->addFileContents(NullableText(), false);
    ASSERT_TRUE(store->lastErrorMessage());

    store->addFileContents(sandbox.folder.path("missing"), false);

    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

TEST(RulesReaderFiles, StoreOfAFileThatCannotBeReadIsEmptyAndSaysWhy)
{
    const test::StoreSandbox sandbox;
    const auto store = RuleManager::initWithContentsOfFile({}, false, sandbox.locations, test::silentLog());

    EXPECT_EQ(store->totalRules(true), 0U);
    EXPECT_EQ(store->lastErrorMessage(), "Internal error: the path provided was null");
}

TEST(ReasonRulesAreUnread, IsThereOnlyWhenRulesWouldBeLost)
{
    const test::StoreSandbox sandbox;
    const std::string link = sandbox.folder.path("link");
    const std::string undecodable = sandbox.folder.write("wrong", "\xFF");
    std::filesystem::create_symlink(sandbox.folder.write("target", readableRule), link);

    EXPECT_EQ(RulesFileText::read(sandbox.folder.path("missing")).unreadReason(), std::nullopt);
    EXPECT_EQ(RulesFileText::read(sandbox.folder.write("empty", "")).unreadReason(), std::nullopt);
    EXPECT_EQ(RulesFileText::read(sandbox.folder.write("rules", readableRule)).unreadReason(), std::nullopt);
    EXPECT_NE(RulesFileText::read(undecodable).unreadReason(), std::nullopt);
    EXPECT_NE(RulesFileText::read(link).unreadReason(), std::nullopt);
    EXPECT_NE(RulesFileText::read(sandbox.folder.write("nul", std::string("a\0b", 3))).unreadReason(),
        std::nullopt);
}

} // namespace quorvane::rules
