#include "rules/RuleManager.h"

#include "platform/FileDescriptor.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/rules/SystemErrorWords.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace quorvane::rules {

namespace {

constexpr const char* oneLine = "allow path \"/a\" \"any\" r \"\" \"\" \"0\"\n";

struct stat statusOf(const std::string& path)
{
    struct stat status { };
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t modeOf(const std::string& path)
{
    return statusOf(path).st_mode & 07777U;
}

std::string answerOf(const RuleManager& store, bool result)
{
    return (result ? "true " : "false ") + store.lastErrorMessage().value_or("none");
}

} // namespace

TEST(WriteUserConfiguration, KeepsAFileOfWhichNotEverythingWasReadUnderAnotherName)
{
    const test::StoreSandbox box;
    const std::string path = box.locations.userRulesFile();
    const std::string unread = oneLine + std::string("\xFF\n");
    for (const char* aside : {".unread", ".unread.2"}) {
        box.writeUserRules(unread);
        const auto store = box.load();
        ASSERT_TRUE(store->unreadRules());
        store->addPolicyRule(
            test::policyRule({.policyType = 1, .path = "/a", .processName = "any", .operations = 1}));
        EXPECT_TRUE(store->writeToCurrentUserConfiguration());
        EXPECT_EQ(test::TemporaryFolder::contents(path + aside), unread);
        EXPECT_EQ(test::TemporaryFolder::contents(path), oneLine);
        EXPECT_FALSE(store->unreadRules());
    }
}

TEST(WriteUserConfiguration, LeavesAFileAloneThatItCanNeitherReadWholeNorKeep)
{
    const test::StoreSandbox box;
    const std::string path = box.locations.userRulesFile();
    box.writeUserRules("\xFF\n");
    const auto store = box.load();
    // All the names are taken.
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    for (int number = 1; number <= 99; ++number)
        std::filesystem::create_directory(
            path + ".unread" + (number == 1 ? "" : "." + std::to_string(number)));

    EXPECT_FALSE(store->writeToCurrentUserConfiguration());

    EXPECT_EQ(*store->lastErrorMessage(),
        "Not writing file '" + path + "': The rules file '" + path
            + "' is not valid UTF-8: none of it is read, and it cannot be kept under another name");
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST(RulesWriterFiles, NewFileIsForOwnerAndGroupWhateverTheMask)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneLine);
    const std::string strict = sandbox.folder.path("strict.rc");
    const std::string loose = sandbox.folder.path("loose.rc");

    const mode_t before = umask(0777);
    EXPECT_TRUE(store->writeToFile(strict));
    umask(0);
    EXPECT_TRUE(store->writeToFile(loose, {}));
    umask(before);

    EXPECT_EQ(modeOf(strict), 0640U);
    EXPECT_EQ(modeOf(loose), 0640U);
}

TEST(RulesWriterFiles, ExistingFileKeepsItsInodeAndGetsItsBits)
{
    const test::StoreSandbox sandbox;
    const std::string file = sandbox.folder.write("out.rc", std::string(1000, 'x'));
    std::filesystem::permissions(file, std::filesystem::perms::all);
    const auto inode = statusOf(file).st_ino;

    EXPECT_TRUE(sandbox.storeOf(oneLine)->writeToFile(file));

    EXPECT_EQ(statusOf(file).st_ino, inode);
    EXPECT_EQ(modeOf(file), 0640U);
    EXPECT_EQ(test::TemporaryFolder::contents(file), oneLine);
}

TEST(RulesWriterFiles, UsersFileGetsItsBits)
{
    const test::StoreSandbox sandbox;
    sandbox.writeUserRules(oneLine);
    std::filesystem::permissions(sandbox.locations.userRulesFile(), std::filesystem::perms::all);

    EXPECT_TRUE(sandbox.load()->writeToCurrentUserConfiguration());

    EXPECT_EQ(modeOf(sandbox.locations.userRulesFile()), 0640U);
}

TEST(RulesWriterFiles, SymbolicLinkIsRefusedAndItsTargetStays)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneLine);
    const std::string target = sandbox.folder.write("target", "before\n");
    const std::string link = sandbox.folder.path("link");
    std::filesystem::create_symlink(target, link);
    const std::string message
        = "Failed to open file '" + link + "' for writing: " + test::systemErrorWords(ELOOP);

    EXPECT_EQ(answerOf(*store, store->writeToFile(link)), "false " + message);
    store->setLastErrorMessage({});
    EXPECT_EQ(answerOf(*store, store->writeToFile(link, {})), "false " + message);

    EXPECT_EQ(test::TemporaryFolder::contents(target), "before\n");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST(RulesWriterFiles, UnusablePlacesAreRefused)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneLine);
    const struct {
        std::string path;
        int error;
    } cases[] = {
        {sandbox.folder.path(), EISDIR},
        {sandbox.folder.path("missing/out.rc"), ENOENT},
        {"", ENOENT},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(answerOf(*store, store->writeToFile(c.path)),
            "false Failed to open file '" + c.path + "' for writing: " + test::systemErrorWords(c.error));
    }
    EXPECT_EQ(store->totalRules(true), 1U) << "the rules in memory stay";
}

TEST(RulesWriterFiles, FailureOfTheUsersFileIsAnswered)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.load();
    std::filesystem::remove_all(sandbox.locations.sharedFolder());

    EXPECT_FALSE(store->writeToCurrentUserConfiguration());
    EXPECT_EQ(store->lastErrorMessage(),
        "Failed to open file '" + sandbox.locations.userRulesFile()
            + "' for writing: " + test::systemErrorWords(ENOENT));
}

TEST(RulesWriterFiles, FileThatMayNotBeWrittenIsRefused)
{
    const test::StoreSandbox sandbox;
    std::filesystem::permissions(sandbox.folder.path(), std::filesystem::perms::all);
    const std::string file = sandbox.folder.write("out.rc", "before\n");
    std::filesystem::permissions(
        file, std::filesystem::perms::owner_read | std::filesystem::perms::others_read);

    const std::string answer = test::answerOfChild([&] {
        if (!test::becomeOrdinaryUser())
            return std::string("still root");
        const auto store = sandbox.emptyStore();
        return answerOf(*store, store->writeToFile(file));
    });

    EXPECT_EQ(
        answer, "false Failed to open file '" + file + "' for writing: " + test::systemErrorWords(EACCES));
    EXPECT_EQ(test::TemporaryFolder::contents(file), "before\n");
}

TEST(RulesWriterFiles, WhatIsNoRegularFileIsRefusedAtOnceAndKeepsItsBits)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneLine);
    const std::string pipe = sandbox.folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0604), 0);
    const std::string device = sandbox.folder.path("device");
    std::vector<std::string> places{pipe, "/dev/full"};
    if (mknod(device.c_str(), S_IFCHR | 0604, makedev(1, 7)) == 0) // requires root
        places.push_back(device);
    for (const std::string& place : places) {
        const mode_t before = modeOf(place);
        const std::string answer
            = "false Failed to open file '" + place + "' for writing: " + test::systemErrorWords(ENOTSUP);
        EXPECT_EQ(answerOf(*store, store->writeToFile(place)), answer);
        EXPECT_EQ(answerOf(*store, store->writeToFile(place, {store->ruleAtIndex(0, true)})), answer);
        EXPECT_EQ(modeOf(place), before) << place;
    }
    EXPECT_EQ(store->totalRules(true), 1U);
}

TEST(RulesWriterFiles, PipeWithAReaderIsRefusedToo)
{
    const test::StoreSandbox sandbox;
    const std::string path = sandbox.folder.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const platform::FileDescriptor reader(open(path.c_str(), O_RDONLY | O_NONBLOCK));

    EXPECT_FALSE(sandbox.storeOf(oneLine)->writeToFile(path));
    char byte = 0;
    EXPECT_EQ(::read(reader.get(), &byte, 1), 0) << "nothing was written";
}

TEST(RulesWriterFiles, ALineCutShortIsASuccessOfWhichOnlyTheMessageTells)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(std::string(oneLine) + "allow path /b any r\nallow path /c any r\n");
    const std::string file = sandbox.folder.path("out.rc");
    const std::size_t limit = std::strlen(oneLine) + 10;
    const std::function<bool()> writes[] = {
        [&] { return store->writeToFile(file); },
        [&] { return store->writeToFile(file, store->allRules()); },
    };
    for (const auto& write : writes) {
        std::filesystem::remove(file);
        const std::string answer = test::answerOfChild([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit sizes{limit, limit};
            setrlimit(RLIMIT_FSIZE, &sizes);
            return answerOf(*store, write());
        });

        EXPECT_EQ(
            answer, "true Failed write() operation on file '" + file + "' " + test::systemErrorWords(EFBIG))
            << "the last failed write is the one that remains";
        EXPECT_EQ(test::TemporaryFolder::contents(file), std::string(oneLine) + "allow path");
        EXPECT_EQ(modeOf(file), 0640U);
    }
}

TEST(RulesWriterFiles, WrittenAfterAFailureForgetsIt)
{
    const test::StoreSandbox sandbox;
    const auto store = sandbox.storeOf(oneLine);
    ASSERT_FALSE(store->writeToFile(sandbox.folder.path("missing/out.rc")));

    EXPECT_TRUE(store->writeToFile(sandbox.folder.path("out.rc")));
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
    ASSERT_FALSE(store->writeToFile(sandbox.folder.path("missing/out.rc"), {}));
    EXPECT_TRUE(store->writeToFile(sandbox.folder.path("out.rc"), {}));
    EXPECT_EQ(store->lastErrorMessage(), std::nullopt);
}

} // namespace quorvane::rules
