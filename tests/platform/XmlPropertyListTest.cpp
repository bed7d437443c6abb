#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace quorvane::platform {

namespace {

std::string textOf(const std::string& inside)
{
    const auto value = readPropertyList("<plist><string>" + inside + "</string></plist>");
    const auto* text = value ? value->as<std::string>() : nullptr;
    return text == nullptr ? "unreadable" : *text;
}

std::string nested(int depth)
{
    std::string list;
    for (int i = 0; i < depth; ++i)
        list += "<array>";
    for (int i = 0; i < depth; ++i)
        list += "</array>";
    return list;
}

} // namespace

TEST(XmlPropertyList, ReadsEveryKindOfValue)
{
    const auto list = readPropertyList(
        "\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- a > b --><!DOCTYPE plist SYSTEM \"x\">"
        "<plist version=\"1.0\"> <dict><key>s</key><string>text</string><key>d</key>"
        "<data>\n\tYWJj\n\tZA==\n</data><key>t</key><true/><key>f</key><false/>"
        "<key>n</key><integer>-3</integer><key>h</key><integer> 0x1F </integer><key>r</key><real>-2.5</real>"
        "<key>date</key><date>2001-01-02T00:00:01Z</date><key>a</key><array><string/><dict/></array>"
        "</dict></plist>");
    ASSERT_TRUE(list);
    EXPECT_EQ(*list->find<std::string>("s"), "text");
    EXPECT_EQ(list->find<PropertyValue::Data>("d")->bytes, "abcd");
    EXPECT_TRUE(*list->find<bool>("t"));
    EXPECT_FALSE(*list->find<bool>("f"));
    EXPECT_EQ(*list->find<std::int64_t>("n"), -3);
    EXPECT_EQ(*list->find<std::int64_t>("h"), 31);
    EXPECT_EQ(*list->find<double>("r"), -2.5);
    EXPECT_EQ(list->find<PropertyValue::Date>("date")->seconds, 86401);
    EXPECT_EQ(list->find<PropertyValue::Array>("a")->size(), 2U);
    EXPECT_EQ(list->find("x"), nullptr);
    EXPECT_EQ(list->find<bool>("s"), nullptr) << "another kind";
}

TEST(XmlPropertyList, ReplacesEntitiesAndTakesLiteralsAsTheyAre)
{
    EXPECT_EQ(textOf("a &amp; b &lt;&gt;&quot;&apos;"), "a & b <>\"'");
    EXPECT_EQ(textOf("&#65;&#x42;&#xe9;&#x20ac;&#x1F600;"), "AB\u00e9\u20ac\U0001F600");
    EXPECT_EQ(textOf("<![CDATA[a <b> &amp;]]>c"), "a <b> &amp;c");
    for (const char* text : {"&own;", "&#0;", "&#xD800;", "&#x110000;", "&#99999999999;", "&amp", "&",
             "<![CDATA[", "<b>", "\xFF", "\xED\xA0\x80"})
        EXPECT_EQ(textOf(text), "unreadable") << text;
}

TEST(XmlPropertyList, RefusesWhatIsDamagedDeepOrDeclaresEntities)
{
    EXPECT_TRUE(readPropertyList(nested(513)));
    for (const std::string& text : {std::string(), std::string("<plist>"), std::string("<plist></plist>"),
             std::string("<dict><string>no key</string></dict>"),
             std::string("<dict><key>no value</key></dict>"), std::string("<array><string>x</array>"),
             std::string("<data>!</data>"), std::string("<unknown/>"), std::string("<integer>x</integer>"),
             std::string("<integer/>"), std::string("<integer>18446744073709551616</integer>"),
             std::string("<integer>-9223372036854775809</integer>"), std::string("<real>1,5</real>"),
             std::string("<date>2001-02-30T00:00:00Z</date>"), std::string("<date>yesterday</date>"),
             std::string("<!DOCTYPE p [<!ENTITY a \"aaa\">]><string>&a;</string>"),
             std::string("<!-- <string/>"), nested(514), std::string(1 << 20, '<')})
        EXPECT_FALSE(readPropertyList(text)) << text.substr(0, 60);
}

TEST(XmlPropertyList, KeepsTheLastValueOfAKeyThatComesAgain)
{
    const auto list
        = readPropertyList("<dict><key>b</key><integer>1</integer><key>a</key><integer>2</integer>"
                           "<key>b</key><integer>3</integer><key>b</key><integer>4</integer></dict>");
    ASSERT_TRUE(list);
    const auto* entries = list->as<PropertyValue::Dictionary>();
    ASSERT_EQ(entries->size(), 2U);
    EXPECT_EQ(entries->front().key, "b");
    EXPECT_EQ(*list->find<std::int64_t>("b"), 4);
    EXPECT_EQ(*list->find<std::int64_t>("a"), 2);
}

TEST(XmlPropertyList, OfMoreValuesThanTwoMillionIsRefused)
{
    const auto listOf = [](std::size_t values) {
        std::string list = "<array>";
        for (std::size_t i = 1; i < values; ++i)
            list += "<true/>";
        return list + "</array>";
    };
    EXPECT_TRUE(readPropertyList(listOf(2U << 20U)));
    EXPECT_FALSE(readPropertyList(listOf((2U << 20U) + 1)));
}

} // namespace quorvane::platform
