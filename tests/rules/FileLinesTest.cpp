#include "rules/FileLines.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace quorvane::rules {

namespace {

// A line of a rule of our own, by its path.
std::string lineOf(const std::string& path)
{
    return "allow path \"" + path + "\" \"any\" r \"\" \"\" \"0\"\n";
}

bool isRule(const char* line, RuleLines lines)
{
    return RuleReader(lines).ruleOf(line).has_value();
}

using Numbers = std::vector<std::uint32_t>;

} // namespace

TEST(FileLines, EndWithTheirLineEndAndNothingStandsBehindTheLast)
{
    const auto shown = [](const std::string& text) {
        std::string all;
        for (const FileLine& line : fileLines(text))
            all += "[" + std::string(line.text) + "," + std::to_string(line.end.size()) + "]";
        return all;
    };
    EXPECT_EQ(shown(""), "");
    EXPECT_EQ(shown("\n"), "[,1]");
    EXPECT_EQ(shown("a"), "[a,0]");
    EXPECT_EQ(shown("a\r\nb\rc\n"), "[a,2][b,1][c,1]");
    EXPECT_EQ(shown("a\r\n\r\n"), "[a,2][,2]");
    EXPECT_EQ(shown("a\n\rb\xC2\x85\xE2\x80\xA8"), "[a,1][,1][b,2][,3]");
    EXPECT_EQ(shown("a\r"), "[a,1]");
}

TEST(RuleReader, TakesForARuleWhatAStoreReadsAsOne)
{
    for (const char* line :
        {"allow path /a any r", "watch path /a any r", "permit path /a any r", "# allow path /a any r",
            "allow path /a any none", "allow pat /a any r", "set name value more of it",
            "allow path \"/a\" \"any\" r \"\" \"\" \"0\"deny path \"/b\" \"any\" w \"\" \"\" \"0\""})
        EXPECT_TRUE(isRule(line, RuleLines::all)) << line;
    for (const char* line : {"", "# a comment", "allow path /a", "one word", "  "}) {
        EXPECT_FALSE(isRule(line, RuleLines::all)) << line;
        EXPECT_FALSE(isRule(line, RuleLines::usable)) << line;
    }
}

TEST(RuleReader, TakesForUsableWhatIsPlainlyARule)
{
    for (const char* line : {"allow path /a any r", "deny prefix /a any rw tag", "watch suffix .x any r"})
        EXPECT_TRUE(isRule(line, RuleLines::usable)) << line;
    for (const char* line :
        {"permit path /a any r", "# allow path /a any r", "allow pat /a any r", "watch pat /a any r",
            "allow path /a any none", "watch path /a any none", "set name value more of it",
            "allow path \"/a\" \"any\" r \"\" \"\" \"0\"deny path \"/b\" \"any\" w \"\" \"\" \"0\""})
        EXPECT_FALSE(isRule(line, RuleLines::usable)) << line;
}

TEST(LineCatalogue, NumbersDifferentLinesInTheOrderInWhichTheyCome)
{
    LineCatalogue catalogue(RuleLines::usable);
    EXPECT_EQ(catalogue.numbersOf(fileLines("b\na\n\nb\nb")), (Numbers{0, 1, 2, 0, 0}));
    EXPECT_EQ(catalogue.numbersOf(fileLines("a\r\nc\nb\n")), (Numbers{1, 3, 0})) << "of several files";
    EXPECT_EQ(catalogue.numbersOf({}), Numbers());
    EXPECT_EQ(catalogue.size(), 4U);
    EXPECT_EQ(catalogue.ruleCount(), 0U);
    EXPECT_EQ(catalogue.ruleNumber(0), LineCatalogue::none);
}

TEST(LineCatalogue, GivesEqualRulesOneNumberHoweverTheyAreSpelt)
{
    LineCatalogue catalogue(RuleLines::usable);
    const std::string text = "allow path /a any rw\n# text\nallow path \"/a\" \"any\" wr \"tag\"\n"
                             "watch path /a any r\ndeny path /a any rw\n";
    catalogue.numbersOf(fileLines(text));
    EXPECT_EQ(catalogue.ruleNumber(0), 0U);
    EXPECT_EQ(catalogue.ruleNumber(1), LineCatalogue::none);
    EXPECT_EQ(catalogue.ruleNumber(2), 0U) << "but for its tag the same";
    EXPECT_EQ(catalogue.ruleNumber(3), 1U);
    EXPECT_EQ(catalogue.ruleNumber(4), 2U);
    EXPECT_EQ(catalogue.ruleCount(), 3U);
    EXPECT_FALSE(catalogue.isWatchRule(0));
    EXPECT_TRUE(catalogue.isWatchRule(1));
    EXPECT_EQ(std::get<PolicyValue>(catalogue.ruleOf(2))->tag.view(), "tag")
        << "of the line, not of the rule";
}

// More lines than one thread parses.
TEST(LineCatalogue, NumbersTheRulesOfALongFileAsThoseOfAShortOne)
{
    constexpr std::uint32_t count = 20000;
    std::string text;
    for (std::uint32_t line = 0; line < count; ++line)
        text += line % 5 == 0 ? "# " + std::to_string(line) + "\n" : lineOf("/" + std::to_string(line));
    LineCatalogue catalogue(RuleLines::usable);
    const Numbers numbers = catalogue.numbersOf(fileLines(text));
    ASSERT_EQ(numbers.size(), count);
    EXPECT_EQ(catalogue.ruleCount(), count / 5 * 4);
    std::uint32_t expected = 0;
    for (std::uint32_t line = 0; line < count; ++line) {
        ASSERT_EQ(numbers[line], line);
        ASSERT_EQ(catalogue.ruleNumber(line), line % 5 == 0 ? LineCatalogue::none : expected++) << line;
    }
    EXPECT_EQ(
        std::get<PolicyValue>(catalogue.ruleOf(count - 1))->path.view(), "/" + std::to_string(count - 1));
}

} // namespace quorvane::rules
