#include "platform/PropertyList.h"

#include "tests/support/PropertyListTexts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <plist/plist.h>

namespace quorvane::platform {

namespace {

std::string xmlWith(const std::string& value)
{
    return test::xmlRoot("<dict><key>k</key>" + value + "</dict>");
}

// ASCII text as UTF-16.
std::string utf16Of(const std::string& text, bool littleEndian)
{
    std::string wide;
    for (const char c : text)
        wide.append(littleEndian ? std::string{c, '\0'} : std::string{'\0', c});
    return wide;
}

struct Reading {
    const char* why;
    const char* value;
    bool asBool;
    std::int32_t asInteger;
};

const Reading readings[] = {
    {"true", "<true/>", true, 1},
    {"false", "<false/>", false, 0},
    {"zero", "<integer>0</integer>", false, 0},
    {"one", "<integer>1</integer>", true, 1},
    {"any other number is true", "<integer>2</integer>", true, 2},
    {"a negative number", "<integer>-1</integer>", true, -1},
    {"the largest of 32 bits", "<integer>2147483647</integer>", true, 2147483647},
    {"one more keeps its low 32 bits", "<integer>2147483648</integer>", true, -2147483647 - 1},
    {"beyond 32 bits", "<integer>4294967298</integer>", true, 2},
    {"beyond 32 bits with empty low ones", "<integer>4294967296</integer>", true, 0},
    {"beyond 32 bits below zero", "<integer>-4294967298</integer>", true, -2},
    {"a real is cut", "<real>2.9</real>", true, 2},
    {"a negative real is cut towards zero", "<real>-2.9</real>", true, -2},
    {"a small real is not zero", "<real>0.5</real>", true, 0},
    {"a real zero", "<real>0.0</real>", false, 0},
    {"a string of digits", "<string>2</string>", true, 2},
    {"a string with leading digits", "<string>2 of 3</string>", true, 2},
    {"a string with blanks and a sign", "<string>  -7</string>", true, -7},
    {"a string of zeros", "<string>000</string>", false, 0},
    {"a string beyond 32 bits is held", "<string>99999999999</string>", true, 2147483647},
    {"a string beyond 32 bits below zero is held", "<string>-99999999999</string>", true, -2147483647 - 1},
    {"yes", "<string>YES</string>", true, 0},
    {"true in words", "<string>true</string>", true, 0},
    {"no", "<string>NO</string>", false, 0},
    {"other words", "<string>on</string>", false, 0},
    {"no words", "<string></string>", false, 0},
    {"an array", "<array><integer>1</integer></array>", false, 0},
    {"a dictionary", "<dict><key>k</key><true/></dict>", false, 0},
    {"data", "<data>AQ==</data>", false, 0},
    {"a date", "<date>2020-01-01T00:00:00Z</date>", false, 0},
};

} // namespace

TEST(PropertyList, ReadsValuesUnderEitherKindOfKey)
{
    for (const Reading& c : readings) {
        for (const std::string& bytes : test::bothForms(xmlWith(c.value))) {
            SCOPED_TRACE(c.why + std::string(" in ") + bytes.substr(0, 6));
            const auto list = PropertyList::parse(bytes);
            ASSERT_TRUE(list);
            EXPECT_EQ(list->boolForKey("k"), c.asBool);
            EXPECT_EQ(list->integerForKey("k"), c.asInteger);
        }
    }
}

TEST(PropertyList, MissingKeyIsFalseAndZero)
{
    for (const std::string& bytes : test::bothForms(xmlWith("<true/>"))) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        EXPECT_FALSE(list->boolForKey("other"));
        EXPECT_EQ(list->integerForKey("other"), 0);
        EXPECT_EQ(list->stringForKey("other"), std::nullopt);
    }
}

TEST(PropertyList, StringIsThereOnlyUnderAStringKey)
{
    const struct {
        const char* value;
        std::optional<std::string> text;
    } cases[] = {
        {"<string>a &amp; b</string>", "a & b"},
        {"<string></string>", ""},
        {"<integer>1</integer>", std::nullopt},
        {"<true/>", std::nullopt},
        {"<data>YWJj</data>", std::nullopt},
    };
    for (const auto& c : cases) {
        for (const std::string& bytes : test::bothForms(xmlWith(c.value)))
            EXPECT_EQ(PropertyList::parse(bytes)->stringForKey("k"), c.text) << c.value;
    }
}

TEST(PropertyList, UnderstandsByteOrderMarksAndUtf16)
{
    const std::string xml = xmlWith("<integer>3</integer>");
    const struct {
        const char* why;
        std::string bytes;
    } cases[] = {
        {"no mark", xml},
        {"UTF-8 with a mark", "\xEF\xBB\xBF" + xml},
        {"UTF-16, big end first", "\xFE\xFF" + utf16Of(xml, false)},
        {"UTF-16, little end first", "\xFF\xFE" + utf16Of(xml, true)},
    };
    for (const auto& c : cases) {
        const auto list = PropertyList::parse(c.bytes);
        ASSERT_TRUE(list) << c.why;
        EXPECT_EQ(list->integerForKey("k"), 3) << c.why;
    }
}

TEST(PropertyList, DamagedOnesAreNone)
{
    const std::string xml = xmlWith("<integer>3</integer>");
    const std::string binary = test::binaryOf(xml);
    const struct {
        const char* why;
        std::string bytes;
    } cases[] = {
        {"no bytes", ""},
        {"one byte", "<"},
        {"no property list", "allow prefix / any r\n"},
        {"zeros", std::string(64, '\0')},
        {"an array at the root", test::xmlRoot("<array><true/></array>")},
        {"a string at the root", test::xmlRoot("<string>k</string>")},
        {"an empty root", test::xmlRoot("")},
        {"the start of a binary list", binary.substr(0, 8)},
        {"a binary list without its end", binary.substr(0, binary.size() - 5)},
        {"a byte order mark alone", "\xFF\xFE"},
        {"a byte order mark and half a character", "\xFE\xFF<"},
        {"the old text form", "{ k = 3; }"},
    };
    for (const auto& c : cases)
        EXPECT_FALSE(PropertyList::parse(c.bytes)) << c.why;
}

TEST(PropertyList, DamageAnywhereIsAnAnswerNotACrash)
{
    std::size_t readable = 0;
    std::size_t unreadable = 0;
    const auto ask = [&](std::string_view bytes) {
        const auto list = PropertyList::parse(bytes);
        ++(list ? readable : unreadable);
        return list && list->boolForKey("k") && list->integerForKey("k") == 3 && list->stringForKey("k");
    };

    for (const std::string& whole :
        {xmlWith("<string>3</string>"), test::binaryOf(xmlWith("<string>3</string>"))}) {
        EXPECT_TRUE(ask(whole));
        for (std::size_t at = 0; at < whole.size(); ++at) {
            ask(std::string_view(whole).substr(0, at));
            for (const char damage : {'\0', '\xFF', '<', '\x41'}) {
                std::string damaged = whole;
                damaged[at] = damage;
                ask(damaged);
            }
        }
    }

    EXPECT_GT(readable, 2U);
    EXPECT_GT(unreadable, 2U);
}

TEST(PropertyList, TwentyThousandNestedArraysAreAnAnswerNotACrash)
{
    constexpr std::size_t depth = 20000;
    std::string open;
    std::string close;
    for (std::size_t level = 0; level < depth; ++level) {
        open += "<array>";
        close += "</array>";
    }

    EXPECT_FALSE(PropertyList::parse(xmlWith(open + close)));
    EXPECT_FALSE(PropertyList::parse(xmlWith(open))) << "never closed";
}

TEST(PropertyList, TwentyThousandNestedBinaryArraysAreAnAnswerNotACrash)
{
    constexpr std::size_t depth = 20000;
    const auto appendNumber = [](std::string& out, std::size_t number, int bytes) {
        for (int byte = bytes - 1; byte >= 0; --byte)
            out.push_back(static_cast<char>(number >> (8 * static_cast<unsigned>(byte)) & 0xFF));
    };
    // Object 0 is {k: object 2}; every later one an array of the next, the last an empty array.
    std::string bytes = "bplist00";
    std::string offsets;
    const auto startObject = [&](unsigned char marker) {
        appendNumber(offsets, bytes.size(), 3);
        bytes.push_back(static_cast<char>(marker));
    };
    startObject(0xD1);
    appendNumber(bytes, 1, 2);
    appendNumber(bytes, 2, 2);
    startObject(0x51);
    bytes.push_back('k');
    for (std::size_t level = 0; level < depth; ++level) {
        startObject(0xA1);
        appendNumber(bytes, level + 3, 2);
    }
    startObject(0xA0);
    const std::size_t offsetTable = bytes.size();
    bytes += offsets + std::string(6, '\0') + '\x03' + '\x02';
    appendNumber(bytes, depth + 3, 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, offsetTable, 8);

    const auto list = PropertyList::parse(bytes);

    EXPECT_EQ(list ? list->integerForKey("k") : 0, 0);
}

TEST(PropertyList, LargerThanTheLimitIsNone)
{
    const test::TemporaryFolder folder;
    constexpr std::size_t limit = 16U << 20U;
    const std::size_t frame = xmlWith("<string></string>").size();
    const auto ofSize = [&](std::size_t size) {
        return xmlWith("<string>" + std::string(size - frame, 'x') + "</string>");
    };

    EXPECT_EQ(PropertyList::parse(ofSize(limit))->stringForKey("k")->size(), limit - frame);
    EXPECT_FALSE(PropertyList::parse(ofSize(limit + 1)));
    EXPECT_TRUE(PropertyList::read(folder.write("fits.plist", ofSize(limit))));
    EXPECT_FALSE(PropertyList::read(folder.write("large.plist", ofSize(limit + 1))));
}

TEST(PropertyList, ReadsAFileAlsoThroughALink)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("list.plist", test::binaryOf(xmlWith("<integer>3</integer>")));
    std::filesystem::create_symlink(file, folder.path("link.plist"));

    ASSERT_TRUE(PropertyList::read(file));
    EXPECT_EQ(PropertyList::read(file)->integerForKey("k"), 3);
    EXPECT_TRUE(PropertyList::read(folder.path("link.plist")));
}

TEST(PropertyList, MissingFileOrFolderIsNone)
{
    const test::TemporaryFolder folder;

    EXPECT_FALSE(PropertyList::read(folder.path("missing.plist")));
    EXPECT_FALSE(PropertyList::read(folder.path()));
    EXPECT_FALSE(PropertyList::read(""));
}

} // namespace quorvane::platform
