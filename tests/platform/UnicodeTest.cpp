#include "platform/Unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

using namespace std::string_literals;

namespace quorvane::platform {

TEST(Unicode, ValidUtf8HasNoOverlongSurrogateOrCutCharacters)
{
    const struct {
        const char* why;
        std::string text;
        bool valid;
    } cases[] = {
        {"nothing", "", true},
        {"ASCII", "/usr/bin", true},
        {"a NUL is a character", "a\0b"s, true},
        {"two to four bytes", "\u00E9 \u20AC \U0001F600", true},
        {"a byte order mark is a character",
            "\xEF\xBB\xBF"
            "a",
            true},
        {"the last code point", "\xF4\x8F\xBF\xBF", true},
        {"a noncharacter is a code point", "\xEF\xBF\xBF", true},
        {"a lone continuation byte", "a\x80", false},
        {"a cut character", "a\xE2\x82", false},
        {"a cut character before ASCII",
            "\xE2\x82"
            "aaaaaaaaaaaaaaaaaa",
            false},
        {"a wrong byte behind a long ASCII run", "aaaaaaaaaaaaaaaaaaaaaaa\xFF", false},
        {"a wrong byte behind a right character",
            "\u00E9\xFF"
            "abcdefgh",
            false},
        {"overlong slash", "\xC0\xAF", false},
        {"overlong in three bytes", "\xE0\x80\xAF", false},
        {"a surrogate", "\xED\xA0\x80", false},
        {"beyond the last code point", "\xF4\x90\x80\x80", false},
        {"five bytes", "\xF8\x88\x80\x80\x80", false},
        {"Latin-1", "caf\xE9", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isValidUtf8(c.text), c.valid) << c.why;
}

TEST(Unicode, Utf16LengthCountsCodeUnits)
{
    const struct {
        const char* why;
        std::string text;
        std::size_t units;
    } cases[] = {
        {"nothing", "", 0},
        {"ASCII counts by bytes", "0123456789abcdef!", 17},
        {"two bytes are one unit", "\u00E9", 1},
        {"three bytes are one unit", "\u20AC", 1},
        {"four bytes are two units", "\U0001F600", 2},
        {"the last character of one unit", "\uFFFF", 1},
        {"the first character of two units", "\U00010000", 2},
        {"mixed", "0123456789\u00E9\u20AC\U0001F600!", 15},
        {"a combining mark counts for itself", "e\u0301", 2},
    };
    for (const auto& c : cases)
        EXPECT_EQ(utf16Length(c.text), c.units) << c.why;
}

TEST(Unicode, FoldedCaseOrdersByCodePoint)
{
    const struct {
        const char* why;
        std::string first;
        std::string second;
    } cases[] = {
        {"case does not count", "Apple", "banana"},
        {"nor the other way", "apple", "Banana"},
        {"an underscore stands before small letters", "A_", "AB"},
        {"digits stand by code point, not by value", "a10", "a9"},
        {"no locale: accents stand behind all of ASCII", "zebra", "\u00C4pfel"},
        {"a shorter text stands before what it begins", "Mail", "Mail.app"},
        {"beyond the first plane stands last", "\uFFFD", "\U0001F600"},
    };
    for (const auto& c : cases)
        EXPECT_LT(foldedCase(c.first), foldedCase(c.second)) << c.why;
}

TEST(Unicode, FoldedCaseOfTextsThatDifferInCaseIsEqual)
{
    EXPECT_EQ(foldedCase("/APPLICATIONS/Mail.App"), "/applications/mail.app");
    EXPECT_EQ(foldedCase("\u00C4\u0416\u03A9"), "\u00E4\u0436\u03C9");
    EXPECT_EQ(foldedCase("plain ASCII then \u00C9T\u00C9"), "plain ascii then \u00E9t\u00E9");
    EXPECT_EQ(foldedCase("stra\u00DFe"), foldedCase("STRASSE"));
    EXPECT_EQ(foldedCase("\u03C3\u03C2\u03A3"), "\u03C3\u03C3\u03C3") << "the final sigma";
    EXPECT_EQ(foldedCase("\u017Fet"), "set") << "the long s";
    EXPECT_EQ(foldedCase("I\u0130\u0131"), "ii\u0307\u0131") << "as outside the Turkic languages";
    EXPECT_NE(foldedCase("e\u0301"), foldedCase("\u00E9")) << "no composing";
}

TEST(Unicode, AppendingAKeyKeepsWhatIsThere)
{
    std::string key = "A\u00C9";

    appendFoldedCase(key, "B");
    appendSearchKey(key, "C\u00C9");

    EXPECT_EQ(key,
        "A\u00C9"
        "bc\u00E9");
}

TEST(Unicode, SearchKeyFindsWhatAPersonCallsTheSameLetters)
{
    const struct {
        const char* why;
        std::string text;
        std::string wanted;
        bool contained;
    } cases[] = {
        {"capitals", "/Applications/Safari.app/Contents/MacOS/Safari", "SAFARI", true},
        {"in the middle", "abcdef", "CD", true},
        {"accented capitals", "caf\u00E9", "CAF\u00C9", true},
        {"composed and decomposed", "cafe\u0301", "caf\u00E9", true},
        {"decomposed and composed", "caf\u00E9", "CAFE\u0301", true},
        {"an accent counts", "cafe", "caf\u00E9", false},
        {"an accent counts the other way", "caf\u00E9", "cafe", false},
        {"Greek final letters", "\u039F\u0394\u039F\u03A3", "\u03BF\u03B4\u03BF\u03C2", true},
        {"other letters", "abc", "abd", false},
        {"longer than the text", "abc", "abcd", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(searchKey(c.text).find(searchKey(c.wanted)) != std::string::npos, c.contained) << c.why;
}

TEST(Unicode, IllFormedBytesCountAsReplacementCharacters)
{
    EXPECT_EQ(utf16Length("a\xFF"), 2U);
    EXPECT_EQ(foldedCase("A\xFF"), "a\uFFFD");
    EXPECT_EQ(searchKey("A\xFF"), "a\uFFFD");
    EXPECT_TRUE(isValidUtf8(searchKey("\xE2\x82 \xF0\x9F caf\xE9")));
}

TEST(Unicode, MacRomanBytesAreTheirLetters)
{
    EXPECT_EQ(textFromMacRoman("Gr\x9A\xA7"
                               "e \xA5"),
        "Gr\u00F6\u00DF"
        "e \u2022");
    EXPECT_EQ(textFromMacRoman("plain"), "plain");
    EXPECT_EQ(textFromMacRoman(""), "");
}

TEST(Unicode, Utf16ComesBackAsItWas)
{
    const std::string text = "a\u00e9\u20ac\U0001F600z";
    const std::string units("\0a\0\xE9\x20\xAC\xD8\x3D\xDE\0\0z", 12);
    std::string swapped = units;
    for (std::size_t at = 0; at < swapped.size(); at += 2)
        std::swap(swapped[at], swapped[at + 1]);
    EXPECT_EQ(utf16FromText(text), units);
    EXPECT_EQ(textFromUtf16(units, false), text);
    EXPECT_EQ(textFromUtf16(swapped, true), text);
    EXPECT_EQ(textFromUtf16("", false), "");
}

TEST(Unicode, Utf16ThatIsDamagedIsNone)
{
    for (const std::string& units : {std::string("\0", 1), std::string("\0a\0", 3), std::string("\xD8\0", 2),
             std::string("\xDC\0", 2), std::string("\xDC\0\xD8\0", 4), std::string("\xD8\0\0a", 4)})
        EXPECT_EQ(textFromUtf16(units, false), std::nullopt);
}

} // namespace quorvane::platform
