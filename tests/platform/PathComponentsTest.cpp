#include "platform/PathComponents.h"

#include <gtest/gtest.h>

namespace quorvane::platform {

TEST(PathComponents, LastOneIgnoresATrailingSlash)
{
    const struct {
        const char* why;
        const char* path;
        const char* last;
    } cases[] = {
        {"after the last slash", "/usr/bin/ssh", "ssh"},
        {"a trailing slash is ignored", "/usr/bin/", "bin"},
        {"several trailing slashes too", "/usr/bin///", "bin"},
        {"doubled slashes fold", "/usr//bin", "bin"},
        {"no slash: the whole", "ssh", "ssh"},
        {"relative with a trailing slash", "ssh/", "ssh"},
        {"the root is its own last component", "/", "/"},
        {"so is the root written twice", "//", "/"},
        {"nothing has none", "", ""},
        {"blanks are ordinary", "/a b/c d", "c d"},
        {"dots are ordinary", "/a/..", ".."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lastPathComponent(c.path), c.last) << c.why;
}

TEST(PathComponents, DeletingTheLastOneLeavesTheFolder)
{
    const struct {
        const char* why;
        const char* path;
        const char* folder;
    } cases[] = {
        {"without its last component", "/usr/bin/ssh", "/usr/bin"},
        {"a trailing slash is ignored", "/usr/bin/", "/usr"},
        {"several trailing slashes too", "/usr/bin//", "/usr"},
        {"in the root only the root stays", "/a", "/"},
        {"the root stays the root", "/", "/"},
        {"the root written twice is the root", "//", "/"},
        {"a relative name leaves nothing", "a", ""},
        {"also with a trailing slash", "a/", ""},
        {"nothing stays nothing", "", ""},
        {"relative folders stay relative", "a/b", "a"},
        {"doubled slashes before the last component fold", "/a//b", "/a"},
        {"doubled slashes elsewhere fold too", "/a//b/c", "/a/b"},
        {"doubled slashes in front fold", "//a/b", "/a"},
        {"doubled slashes in front of the only component", "//a", "/"},
        {"a resource is a relative path", ":NVRAM/boot-args", ":NVRAM"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(deletingLastPathComponent(c.path), c.folder) << c.why;
}

} // namespace quorvane::platform
