#include "platform/XmlText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace quorvane::platform {

namespace {

std::string taken(std::string_view rest)
{
    const auto text = takeXmlText(rest);
    return text ? "\"" + *text + "\", then " + std::string(rest) : "none";
}

std::string base64Of(std::string_view bytes)
{
    std::string text;
    appendBase64(text, bytes);
    return text;
}

} // namespace

TEST(XmlText, IsTakenUpToTheNextTag)
{
    EXPECT_EQ(taken("one</a>two"), "\"one\", then </a>two");
    EXPECT_EQ(taken("<b>"), "\"\", then <b>");
    EXPECT_EQ(taken("a<![CDATA[<b>]]><![CDATA[]]>c</a>"), "\"a<b>c\", then </a>");
    EXPECT_EQ(taken("no end"), "none");
    EXPECT_EQ(taken("a<![CDATA[b]]"), "none");
}

TEST(XmlText, OfANumberedCharacterIsThatCharacter)
{
    EXPECT_EQ(taken("&#1;&#65;&#x10FFFF;</a>"),
        "\"\x01"
        "A\U0010FFFF\", then </a>");
    EXPECT_EQ(taken("&#xD7FF;&#xE000;</a>"), "\"\uD7FF\uE000\", then </a>");
    EXPECT_EQ(taken("&#000000065;</a>"), "\"A\", then </a>") << "as long as a reference may be";
    for (const char* text :
        {"&#0000000065;</a>", "&#;</a>", "&#x;</a>", "&#-1;</a>", "&#x4G;</a>", "&#4A;</a>", "&#xD800;</a>",
            "&#xDFFF;</a>", "&#1114112;</a>", "&#X41;</a>", "&;</a>", "&AMP;</a>", "&amp </a>"})
        EXPECT_EQ(taken(text), "none") << text;
}

TEST(XmlText, IsEscapedSoThatItIsTakenAgainAsItWas)
{
    for (const std::string text :
        {"", "plain", "a & b < c > d", "]]>", "&amp;", "\t\n\r\r\n", "\u20AC \U0001F600"}) {
        std::string escaped = "kept: ";
        ASSERT_TRUE(appendXmlText(escaped, text)) << text;
        EXPECT_EQ(taken(escaped + "<"), "\"kept: " + text + "\", then <");
        EXPECT_EQ(escaped.find_first_of("<>\r"), std::string::npos) << escaped;
    }
}

TEST(XmlText, CannotHoldControlCharactersAndNoncharacters)
{
    for (int c = 0; c < 0x20; ++c) {
        std::string out;
        const bool canHold = c == '\t' || c == '\n' || c == '\r';
        EXPECT_EQ(appendXmlText(out, std::string(1, static_cast<char>(c))), canHold) << c;
    }
    std::string out;
    EXPECT_TRUE(appendXmlText(out, "\x7F\xEF\xBF\xBD"));
    EXPECT_FALSE(appendXmlText(out, "a\xEF\xBF\xBE"));
    EXPECT_FALSE(appendXmlText(out, "a\xEF\xBF\xBF"));
}

TEST(Base64, OfBytesOfEveryLengthIsThatOfTheStandard)
{
    // The test vectors of RFC 4648, and the two digits that are neither letters nor numbers.
    EXPECT_EQ(base64Of(""), "");
    EXPECT_EQ(base64Of("f"), "Zg==");
    EXPECT_EQ(base64Of("fo"), "Zm8=");
    EXPECT_EQ(base64Of("foo"), "Zm9v");
    EXPECT_EQ(base64Of("foob"), "Zm9vYg==");
    EXPECT_EQ(base64Of("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64Of("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64Of("\xFB\xEF\xBE\xFF\xFF\xFF"), "++++////");
}

TEST(Base64, GivesEveryByteBackWhateverTheBlanks)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        const std::string part = bytes.substr(0, length);
        std::string spaced;
        for (const char digit : base64Of(part))
            spaced.append(1, digit).append(" \t\r\n");
        EXPECT_EQ(bytesOfBase64(base64Of(part)), part);
        EXPECT_EQ(bytesOfBase64(spaced), part);
    }
    for (const char* text : {"Zm9v!", "Zm-v", "Zm_v", "Zm9\xC3\xA9", "Zm9v\x0B"})
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
}

TEST(XmlDate, CountsTheSecondsSince2001)
{
    EXPECT_EQ(secondsOfXmlDate("2001-01-01T00:00:00Z"), 0.0);
    EXPECT_EQ(secondsOfXmlDate("2000-12-31T23:59:59Z"), -1.0);
    EXPECT_EQ(secondsOfXmlDate("2001-02-03T04:05:06Z"), 33 * 86400.0 + 4 * 3600 + 5 * 60 + 6);
    EXPECT_EQ(secondsOfXmlDate("2016-12-31T23:59:60Z"), secondsOfXmlDate("2017-01-01T00:00:00Z"));
    EXPECT_EQ(secondsOfXmlDate("2004-02-29T24:00:00Z"), secondsOfXmlDate("2004-03-01T00:00:00Z"));
}

TEST(XmlDate, OfAnyOtherFormIsNone)
{
    for (const char* text : {"", "2001-01-01", "2001-01-01T00:00:00", "2001-01-01T00:00:00z",
             "2001-01-01 00:00:00Z", "2001/01/01T00:00:00Z", "2001-01-01T00:00:00Z ", "+001-01-01T00:00:00Z",
             "2001-13-01T00:00:00Z", "2001-00-01T00:00:00Z", "2001-04-31T00:00:00Z", "2001-02-29T00:00:00Z",
             "2001-01-00T00:00:00Z", "2001-01-01T25:00:00Z", "2001-01-01T00:60:00Z", "2001-01-01T00:00:61Z",
             "2001-01-01T00:00:0:Z", "2001-01-0/T00:00:00Z"})
        EXPECT_EQ(secondsOfXmlDate(text), std::nullopt) << text;
}

TEST(XmlDate, IsWrittenAsItIsRead)
{
    for (const std::string date : {"0001-01-01T00:00:00Z", "1961-04-12T06:07:08Z", "2000-02-29T23:59:59Z",
             "2001-01-01T00:00:00Z", "9999-12-31T23:59:59Z"})
        EXPECT_EQ(xmlDateOf(secondsOfXmlDate(date).value()), date);
    EXPECT_EQ(xmlDateOf(0.9), "2001-01-01T00:00:00Z");
    EXPECT_EQ(xmlDateOf(-0.1), "2000-12-31T23:59:59Z");
}

TEST(XmlDate, OfYearsThatItsFormCannotHoldIsNone)
{
    EXPECT_EQ(xmlDateOf(secondsOfXmlDate("0001-01-01T00:00:00Z").value() - 1), std::nullopt);
    EXPECT_EQ(xmlDateOf(secondsOfXmlDate("9999-12-31T23:59:59Z").value() + 1), std::nullopt);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {1e12, -1e12, 1e30, infinity, -infinity, std::nan("")})
        EXPECT_EQ(xmlDateOf(seconds), std::nullopt) << seconds;
}

} // namespace quorvane::platform
