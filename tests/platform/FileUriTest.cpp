#include "platform/FileUri.h"

#include <gtest/gtest.h>

namespace quorvane::platform {
namespace {

TEST(FileUri, NamesAPathOfThisComputer)
{
    EXPECT_EQ(pathOfFileUri("file:///tmp/a.quorv"), "/tmp/a.quorv");
    EXPECT_EQ(pathOfFileUri("file://localhost/tmp/a.quorv"), "/tmp/a.quorv");
    EXPECT_EQ(pathOfFileUri("file:/tmp/a.quorv"), "/tmp/a.quorv");
}

TEST(FileUri, GivesEveryByteOfAName)
{
    EXPECT_EQ(pathOfFileUri("file:///tmp/Photo%20Tools%2C2.quorv"), "/tmp/Photo Tools,2.quorv");
    EXPECT_EQ(pathOfFileUri("file:///tmp/%ff%C3%A4%25%23%3f"), "/tmp/\xff\xc3\xa4%#?");
}

TEST(FileUri, EndsAtItsQueryOrFragment)
{
    EXPECT_EQ(pathOfFileUri("file:///tmp/a?b"), "/tmp/a");
    EXPECT_EQ(pathOfFileUri("file:///tmp/a#b"), "/tmp/a");
}

TEST(FileUri, OfAnotherHostOrSchemeNamesNoPath)
{
    for (const char* uri : {"", "file:", "file://", "file:tmp/a", "file://elsewhere/tmp/a",
             "file://localhosts/a", "https://localhost/tmp/a", "/tmp/a", "FILE"})
        EXPECT_EQ(pathOfFileUri(uri), std::nullopt) << uri;
}

TEST(FileUri, WithABrokenEscapeOrANulByteNamesNoPath)
{
    for (const char* uri : {"file:///a%", "file:///a%2", "file:///a%2g", "file:///a%+1", "file:///a%00b"})
        EXPECT_EQ(pathOfFileUri(uri), std::nullopt) << uri;
    EXPECT_EQ(pathOfFileUri(std::string_view("file:///a\0b", 11)), std::nullopt);
}

} // namespace
} // namespace quorvane::platform
