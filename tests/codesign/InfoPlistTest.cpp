#include "codesign/InfoPlist.h"

#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::codesign {

namespace {

// The executable that the list names; "none" without one, "unusable" for a list that is none.
std::string executableOf(const std::string& text)
{
    const Bytes bytes = test::bytesOf(text);
    const auto info = parseInfoPlist(bytes);
    return info ? info->executable.value_or("none") : "unusable";
}

std::string listOf(const std::string& entries)
{
    return "<plist><dict>" + entries + "</dict></plist>";
}

} // namespace

TEST(InfoPlist, NamesTheExecutable)
{
    const std::string key = "<key>CFBundleExecutable</key>";
    EXPECT_EQ(executableOf(listOf(key + "<string>Tool \u00e9</string>")), "Tool \u00e9");
    EXPECT_EQ(executableOf(listOf("<key>CFBundleName</key><string>Tool</string>")), "none");
    EXPECT_EQ(executableOf(listOf(key + "<integer>7</integer>")), "none") << "a number is no name";
}

TEST(InfoPlist, WhoseExecutableIsNoPlainFileNameIsUnusable)
{
    for (const std::string name : {"", ".", "..", "../Tool", "/bin/sh", "MacOS/Tool", "Tool/"})
        EXPECT_EQ(
            executableOf(listOf("<key>CFBundleExecutable</key><string>" + name + "</string>")), "unusable")
            << name;
}

TEST(InfoPlist, ThatIsNoDictionaryIsUnusable)
{
    EXPECT_EQ(executableOf("<plist><array/></plist>"), "unusable");
    EXPECT_EQ(executableOf("no list"), "unusable");
    EXPECT_EQ(executableOf(""), "unusable");
}

TEST(InfoPlist, OfABinaryListThatIsDamagedOrRefersToItselfIsHarmless)
{
    Bytes list = test::bytesOf("bplist00");
    test::append(list, Bytes{0xd1, 0, 0}); // a dictionary whose key and value are itself
    list.push_back(8);
    Bytes trailer(32);
    trailer[6] = trailer[7] = 1;
    trailer[15] = 1;
    trailer[31] = 11;
    test::append(list, trailer);
    EXPECT_FALSE(parseInfoPlist(list));

    for (std::size_t at = 8; at < list.size(); ++at) {
        for (const std::uint8_t value : std::initializer_list<std::uint8_t>{0xff, 0xdf, 0x5f, 0x80, 0}) {
            Bytes damaged = list;
            damaged[at] = value;
            const auto answer = parseInfoPlist(damaged);
            EXPECT_FALSE(answer && answer->executable) << at;
        }
        const Bytes cut(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_FALSE(parseInfoPlist(cut)) << at;
    }
}

} // namespace quorvane::codesign
