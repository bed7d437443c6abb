#include "codesign/Ber.h"
#include "codesign/InfoPlist.h"
#include "codesign/SealPattern.h"
#include "codesign/XmlPropertyList.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::test {

namespace {

std::optional<PropertyValue> parse(const std::string& text)
{
    return parseXmlPropertyList(ByteView(text.data(), text.size()));
}

std::string textOf(const std::string& inside)
{
    const auto value = parse("<plist><string>" + inside + "</string></plist>");
    return value ? value->text : "unreadable";
}

bool found(const std::string& pattern, const std::string& text)
{
    return SealPattern::compile(pattern).value().isFoundIn(text);
}

} // namespace

TEST(ByteView, ReadsNumbersInBothOrdersAndZeroOutside)
{
    const Bytes bytes{1, 2, 3, 4, 5, 6, 7, 8};
    const ByteView view(bytes);
    EXPECT_EQ(view.u32(0), 0x01020304U);
    EXPECT_EQ(view.u32(4, ByteOrder::little), 0x08070605U);
    EXPECT_EQ(view.u64(0), 0x0102030405060708U);
    EXPECT_EQ(view.u8(7), 8);
    for (const std::uint64_t offset : {std::uint64_t{5}, std::uint64_t{8}, UINT64_MAX, UINT64_MAX - 3}) {
        EXPECT_EQ(view.u32(offset), 0U) << offset;
        EXPECT_FALSE(view.holds(offset, 4)) << offset;
    }
    EXPECT_FALSE(view.part(4, UINT64_MAX - 2)) << "a sum that wraps around";
    EXPECT_TRUE(view.part(8, 0));
    EXPECT_FALSE(view.part(9, 0));
}

TEST(ByteView, FindsTextsThatEndInsideOnly)
{
    const Bytes bytes = bytesOf(std::string("ab\0cd", 5));
    EXPECT_EQ(ByteView(bytes).zeroTerminated(0), "ab");
    EXPECT_EQ(ByteView(bytes).zeroTerminated(2), "");
    EXPECT_FALSE(ByteView(bytes).zeroTerminated(3));
    EXPECT_FALSE(ByteView(bytes).zeroTerminated(UINT64_MAX));
}

TEST(BerReader, RefusesLengthsThatTheBytesDoNotHold)
{
    for (const Bytes& bytes : std::initializer_list<Bytes>{{}, {0x30}, {0x30, 1}, {0x30, 0x81},
             {0x30, 0x84, 0xff, 0xff, 0xff, 0xff},
             {0x30, 0x88, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff},
             {0x30, 0x89, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0x30, 0x80}, {0x30, 0x80, 0}, {0x04, 0x80, 0, 0},
             {0x3f, 0x81, 0x01, 0}, {0x30, 0x80, 0x04, 0x05, 0, 0}})
        EXPECT_FALSE(BerReader(bytes).next());
}

TEST(BerReader, ReadsIndefiniteLengthsWithinEachOtherUpToABound)
{
    const auto nested = [](int depth) {
        Bytes bytes;
        for (int i = 0; i < depth; ++i)
            append(bytes, Bytes{0x30, 0x80});
        bytes.resize(bytes.size() + static_cast<std::size_t>(depth) * 2);
        return bytes;
    };
    const Bytes sound = nested(48);
    const auto element = BerReader(sound).next();
    ASSERT_TRUE(element);
    EXPECT_EQ(element->whole.size(), sound.size());
    EXPECT_EQ(element->content.size(), sound.size() - 4);
    EXPECT_FALSE(BerReader(nested(49)).next());
    EXPECT_FALSE(BerReader(nested(100000)).next());
}

TEST(BerReader, JoinsOctetStringsInPieces)
{
    const Bytes pieces{0x24, 0x80, 0x04, 1, 'a', 0x04, 2, 'b', 'c', 0, 0};
    EXPECT_EQ(octets(*BerReader(pieces).next()), bytesOf("abc"));
    const Bytes other{0x24, 3, 0x02, 1, 'a'};
    EXPECT_FALSE(octets(*BerReader(other).next()));
}

TEST(XmlPropertyList, ReadsEveryKindOfValue)
{
    const auto list = parse("\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- a > b --><!DOCTYPE plist SYSTEM \"x\">"
                            "<plist version=\"1.0\"> <dict><key>s</key><string>text</string><key>d</key>"
                            "<data>\n\tYWJj\n\tZA==\n</data><key>t</key><true/><key>f</key><false/>"
                            "<key>n</key><integer>-3</integer><key>a</key><array><string/><dict/></array>"
                            "</dict></plist>");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->find("s")->text, "text");
    EXPECT_EQ(list->find("d")->text, "abcd");
    EXPECT_TRUE(list->find("t")->flag);
    EXPECT_FALSE(list->find("f")->flag);
    EXPECT_EQ(list->find("n")->text, "-3");
    EXPECT_EQ(list->find("a")->items.size(), 2U);
    EXPECT_EQ(list->find("x"), nullptr);
}

TEST(XmlPropertyList, ReplacesEntitiesAndTakesLiteralsAsTheyAre)
{
    EXPECT_EQ(textOf("a &amp; b &lt;&gt;&quot;&apos;"), "a & b <>\"'");
    EXPECT_EQ(textOf("&#65;&#x42;&#xe9;&#x20ac;&#x1F600;"), "AB\u00e9\u20ac\U0001F600");
    EXPECT_EQ(textOf("<![CDATA[a <b> &amp;]]>c"), "a <b> &amp;c");
    for (const char* text :
        {"&own;", "&#0;", "&#xD800;", "&#x110000;", "&#99999999999;", "&amp", "&", "<![CDATA[", "<b>"})
        EXPECT_EQ(textOf(text), "unreadable") << text;
}

TEST(XmlPropertyList, RefusesWhatIsDamagedDeepOrDeclaresEntities)
{
    std::string deepest;
    std::string tooDeep;
    for (int i = 0; i < 33; ++i)
        (i < 32 ? deepest : tooDeep) += "<array>";
    tooDeep += deepest + "<array/>";
    std::string closing;
    for (int i = 0; i < 32; ++i)
        closing += "</array>";
    EXPECT_TRUE(parse(deepest + closing));
    for (const std::string& text : {std::string(), std::string("<plist>"), std::string("<plist></plist>"),
             std::string("<dict><string>no key</string></dict>"),
             std::string("<dict><key>no value</key></dict>"), std::string("<array><string>x</array>"),
             std::string("<data>!</data>"), std::string("<unknown/>"),
             std::string("<!DOCTYPE p [<!ENTITY a \"aaa\">]><string>&a;</string>"),
             std::string("<!-- <string/>"), tooDeep + closing + "</array>", std::string(1 << 20, '<')})
        EXPECT_FALSE(parse(text)) << text.substr(0, 60);
}

TEST(InfoPlist, OfABinaryListThatIsDamagedOrRefersToItselfIsHarmless)
{
    Bytes list = bytesOf("bplist00");
    append(list, Bytes{0xd1, 0, 0}); // a dictionary whose key and value are itself
    list.push_back(8);
    Bytes trailer(32);
    trailer[6] = trailer[7] = 1;
    trailer[15] = 1;
    trailer[31] = 11;
    append(list, trailer);
    const auto info = parseInfoPlist(list);
    ASSERT_TRUE(info);
    EXPECT_FALSE(info->executable);

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

TEST(SealPattern, FindsWhatTheRulesOfSealsSay)
{
    const struct {
        const char* pattern;
        const char* text;
        bool found;
    } cases[] = {
        {"^Resources/", "Resources/a", true},
        {"^Resources/", "a/Resources/b", false},
        {"^.*", "", true},
        {".*\\.dSYM($|/)", "a/b.dSYM", true},
        {".*\\.dSYM($|/)", "a/b.dSYM/c", true},
        {".*\\.dSYM($|/)", "a/b.dSYMx", false},
        {"^(.*/)?\\.DS_Store$", ".DS_Store", true},
        {"^(.*/)?\\.DS_Store$", "a/b/.DS_Store", true},
        {"^(.*/)?\\.DS_Store$", "a.DS_Store", false},
        {"^(Frameworks|SharedFrameworks|Library/(Automator|Spotlight))/", "Library/Spotlight/x", true},
        {"^(Frameworks|SharedFrameworks|Library/(Automator|Spotlight))/", "Library/Other/x", false},
        {"^[^/]+$", "file", true},
        {"^[^/]+$", "a/b", false},
        {"[a-c]x", "bx", true},
        {"[a-c]x", "dx", false},
        {"[]x]y", "]y", true},
        {"[a-]b", "-b", true},
        {"ab+c?", "ab", true},
        {"^ab+c?$", "a", false},
        {"^(a|b|)c$", "c", true},
        {"^(a*)*$", "aaaa", true},
        {"x$", "xy", false},
        {"", "anything", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(found(c.pattern, c.text), c.found) << c.pattern << " in " << c.text;
}

TEST(SealPattern, IsRefusedWhenMalformedOrBeyondWhatSealsUse)
{
    for (const std::string& pattern : {std::string("("), std::string(")"), std::string("a)"),
             std::string("["), std::string("[]"), std::string("*a"), std::string("a{2}"), std::string("\\d"),
             std::string("(a)\\1"), std::string("a\\"), std::string(1025, 'a'), std::string(1000, '(')})
        EXPECT_FALSE(SealPattern::compile(pattern)) << pattern.substr(0, 20);
}

TEST(SealPattern, TakesTimeInProportionWhateverThePattern)
{
    EXPECT_FALSE(found("^(a*)*(a*)*(a|a|aa)*(a+)+b$", std::string(20000, 'a')));
}

} // namespace quorvane::test
