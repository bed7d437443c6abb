#include "platform/FileRoot.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

namespace fs = std::filesystem;

class FileRootTest : public testing::Test {
protected:
    FileRootTest()
        : root(*FileRoot::at(folder.path("root"), error))
    {
    }

    void link(const std::string& target, const std::string& name)
    {
        fs::create_directories(fs::path(folder.path("root/" + name)).parent_path());
        fs::create_symlink(target, folder.path("root/" + name));
    }
    // Where the path leads, resolved both by the kernel and by the walk.
    std::string whereIs(const std::string& path)
    {
        const auto found = root.resolved(path);
        std::string walked;
        const FileDescriptor top(open(folder.path("root").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        const FileDescriptor file = openBelow(top.get(), path, O_PATH, &walked);
        EXPECT_EQ(static_cast<bool>(file), found.has_value()) << path;
        EXPECT_EQ(root.isAnythingAt(path), found.has_value()) << path;
        EXPECT_EQ(walked, found.value_or("")) << path;
        return found.value_or("nowhere");
    }

    const test::TemporaryFolder folder;
    const std::string made = folder.write("root/usr/bin/tool", "tool");
    const std::string outside = folder.write("outside/secret", "secret");
    std::error_code error;
    FileRoot root;
};

} // namespace

TEST_F(FileRootTest, PathsBeginAtTheFolder)
{
    EXPECT_EQ(whereIs("/usr/bin/tool"), "/usr/bin/tool");
    EXPECT_EQ(whereIs("usr/bin/tool"), "/usr/bin/tool");
    EXPECT_EQ(whereIs("/usr//./bin/tool"), "/usr/bin/tool");
    EXPECT_EQ(whereIs("/"), "/");
    EXPECT_EQ(whereIs("/usr/bin/none"), "nowhere");
    EXPECT_EQ(whereIs(""), "nowhere");
    EXPECT_EQ(whereIs(outside), "nowhere");
    EXPECT_EQ(whereIs(made), "nowhere") << "the folder's own path is none within it";
    EXPECT_TRUE(root.isFolderAt("/usr/bin/"));
    EXPECT_FALSE(root.isFolderAt("/usr/bin/tool"));
    EXPECT_EQ(whereIs("/usr/bin/tool/"), "nowhere") << "a file is no folder";
    EXPECT_EQ(whereIs("/usr/bin/tool/.."), "nowhere");
    EXPECT_EQ(whereIs(std::string("/usr\0/bin", 9)), "nowhere");
    EXPECT_EQ(whereIs("/" + std::string(5000, 'a')), "nowhere");
}

TEST_F(FileRootTest, NoPathAndNoLinkLeadsOutOfTheFolder)
{
    link("/usr/bin", "absolute");
    link("../../../../..", "up");
    link(folder.path("outside"), "away");
    link("../outside/secret", "beside");
    link("/", "top");
    EXPECT_EQ(whereIs("/absolute/tool"), "/usr/bin/tool");
    EXPECT_EQ(whereIs("/../../outside/secret"), "nowhere");
    EXPECT_EQ(whereIs("/up/usr/bin/tool"), "/usr/bin/tool");
    EXPECT_EQ(whereIs("/up/outside/secret"), "nowhere");
    EXPECT_EQ(whereIs("/away/secret"), "nowhere");
    EXPECT_EQ(whereIs("/beside"), "nowhere");
    EXPECT_EQ(whereIs("/top/top/usr/../usr"), "/usr");
}

TEST_F(FileRootTest, ReadsRegularFilesWithinTheFolderAlone)
{
    link("/usr/bin/tool", "inside");
    link("../outside/secret", "beside");
    ASSERT_EQ(mkfifo(folder.path("root/pipe").c_str(), 0600), 0);
    EXPECT_EQ(root.contents("/usr/bin/tool", 4), "tool");
    EXPECT_EQ(root.contents("/inside", 4), "tool");
    EXPECT_EQ(root.contents("/usr/bin/tool", 3), std::nullopt) << "larger than asked for";
    for (const char* path : {"/beside", "/usr/bin", "/pipe", "/none", ""})
        EXPECT_EQ(root.contents(path, 100), std::nullopt) << path;
}

TEST_F(FileRootTest, ListsTheNamesInAFolderUntilTheyAreEnough)
{
    folder.write("root/usr/bin/other", "");
    link("/usr/bin", "link");
    std::set<std::string> names;
    const auto takeAll = [&](const std::string& name) { return names.insert(name).second; };
    root.forEachName("/link/", takeAll);
    EXPECT_EQ(names, (std::set<std::string>{"other", "tool"}));
    names.clear();
    for (const char* path : {"/usr/bin/tool", "/none", ""})
        root.forEachName(path, takeAll);
    EXPECT_TRUE(names.empty());
    root.forEachName("/usr/bin", [&](const std::string& name) { return !names.insert(name).second; });
    EXPECT_EQ(names.size(), 1U);
}

TEST_F(FileRootTest, LinksThatLeadToEachOtherEnd)
{
    link("b", "a");
    link("a", "b");
    link("self/self", "self");
    EXPECT_EQ(whereIs("/a"), "nowhere");
    EXPECT_EQ(whereIs("/self"), "nowhere");
}

TEST_F(FileRootTest, TheWalkFindsWhatTheKernelFinds)
{
    // given random folders and links
    std::mt19937 random(7);
    const auto name = [&] { return std::string(1, static_cast<char>('a' + random() % 4)); };
    const auto path = [&](std::size_t most) {
        std::string text = random() % 2 == 0 ? "/" : "";
        for (std::size_t names = 1 + random() % most; names > 0; --names)
            text += (random() % 4 == 0 ? ".." : name()) + (random() % 8 == 0 ? "//" : "/");
        return random() % 4 == 0 ? text : text.substr(0, text.size() - 1);
    };
    for (int count = 0; count < 60; ++count) {
        std::error_code ignored;
        const std::string at = folder.path("root/" + name() + "/" + name());
        fs::create_directories(fs::path(at).parent_path(), ignored);
        if (random() % 2 == 0)
            fs::create_symlink(path(3), at, ignored);
        else
            fs::create_directories(at, ignored);
        fs::create_symlink(path(2), folder.path("root/" + name()), ignored);
    }
    // when paths are resolved, then both agree, as whereIs() checks
    int found = 0;
    for (int asked = 0; asked < 2000; ++asked)
        found += whereIs(path(6)) == "nowhere" ? 0 : 1;
    EXPECT_GT(found, 100);
}

TEST_F(FileRootTest, OnlyAFolderIsARoot)
{
    std::error_code why;
    EXPECT_FALSE(FileRoot::at(folder.path("none"), why));
    EXPECT_EQ(why, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(FileRoot::at(outside, why));
    EXPECT_EQ(why, std::errc::not_a_directory);
    EXPECT_FALSE(FileRoot::at("", why));
}

TEST(FileRoot, OfThisMachineIsItsFileSystem)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    fs::create_symlink(file, folder.path("link"));
    const FileRoot machine;
    EXPECT_TRUE(machine.isThisMachines());
    EXPECT_EQ(machine.resolved(folder.path("link")), file);
    EXPECT_TRUE(machine.isAnythingAt(file));
    EXPECT_FALSE(machine.isAnythingAt(file + std::string(1, '\0')));
    EXPECT_TRUE(machine.isFolderAt(folder.path()));
    EXPECT_TRUE(machine.open(file, O_RDONLY));
}

} // namespace quorvane::platform
