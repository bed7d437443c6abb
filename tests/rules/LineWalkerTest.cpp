#include "rules/LineWalker.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Lines = std::vector<std::string>;

Lines linesOf(std::string_view text)
{
    Lines lines;
    LineWalker walker(text);
    while (const auto line = walker.next())
        lines.emplace_back(*line);
    return lines;
}

const std::vector<std::string> lineEnds{"\n", "\r", "\v", "\f", "\u0085", "\u2028", "\u2029"};

// Repeatedly cuts at the first line end, whichever it is.
Lines plainLines(std::string text)
{
    Lines lines;
    while (true) {
        std::size_t first = std::string::npos;
        std::size_t length = 0;
        for (const std::string& end : lineEnds) {
            if (const std::size_t at = text.find(end); at < first) {
                first = at;
                length = end.size();
            }
        }
        lines.push_back(text.substr(0, first));
        if (first == std::string::npos)
            return lines;
        text.erase(0, first + length);
    }
}

} // namespace

TEST(LineWalker, EveryLineEndEndsALine)
{
    for (const std::string& end : lineEnds) {
        EXPECT_EQ(linesOf("a" + end + "b"), (Lines{"a", "b"}));
        EXPECT_EQ(linesOf("0123456789abcdef" + end + "0123456789abcdef"),
            (Lines{"0123456789abcdef", "0123456789abcdef"}));
        EXPECT_EQ(linesOf(end), (Lines{"", ""}));
        EXPECT_EQ(linesOf("a" + end + end + "b" + end), (Lines{"a", "", "b", ""}));
    }
}

TEST(LineWalker, CarriageReturnAndLineFeedMakeAnEmptyLine)
{
    EXPECT_EQ(linesOf("a\r\nb"), (Lines{"a", "", "b"}));
}

TEST(LineWalker, NoTextIsOneEmptyLine)
{
    EXPECT_EQ(linesOf(""), Lines{""});
}

TEST(LineWalker, OtherControlsAndNeighbouringCharactersEndNoLine)
{
    for (const char* text : {"a\tb",
             "a\x0E"
             "b",
             "a\x1F"
             "b",
             "a\x7F"
             "b",
             "a\u0084b", "a\u0086b", "a\u2027b", "a\u202Ab", "a\u00C5b", "a\u0405b", "a\u3028b", "\uFEFFa"}) {
        EXPECT_EQ(linesOf(text), Lines{text});
    }
}

TEST(LineWalker, AgreesWithAPlainWalkOnRandomTexts)
{
    std::vector<std::string> pieces = lineEnds;
    pieces.insert(
        pieces.end(), {"a", "bc", "\u00E9", "\u0086", "\u2027", "\U0001F600", "a long run of ASCII"});
    std::mt19937 random(99);
    for (int number = 0; number < 5000; ++number) {
        std::string text;
        for (std::size_t left = random() % 12; left > 0; --left)
            text += pieces[random() % pieces.size()];
        ASSERT_EQ(linesOf(text), plainLines(text)) << text;
    }
}

} // namespace quorvane::rules
