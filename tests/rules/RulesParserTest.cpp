#include "rules/RulesParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

namespace {

std::string pathOf(const ParsedLine& line)
{
    return std::string(std::get<std::shared_ptr<PolicyRuleFields>>(line.content)->path.view());
}

} // namespace

TEST(RulesParser, AppendsTheRulesOfEachText)
{
    RulesParser parser({});
    std::vector<ParsedLine> lines = parser.parse("allow path /a any r\n; a comment\nnothing\n");
    parser.parse("deny path /b any w", lines);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(pathOf(lines[0]), "/a");
    EXPECT_EQ(pathOf(lines[1]), "/b");
    EXPECT_NE(lines[0].hash, lines[1].hash);
}

TEST(RulesParser, ReadsOptionsOnlyWhereTheyAreAllowed)
{
    const std::string_view option = "set dontload 5\n";
    EXPECT_TRUE(RulesParser({}).parse(option).empty());
    const std::vector<ParsedLine> lines = RulesParser({.system = true, .optionsAllowed = true}).parse(option);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(std::get<FilterOption>(lines.front().content).value, 5U);
}

TEST(RulesParser, DiscardsALongTextPartByPartOnceItIsRead)
{
    constexpr std::size_t rules = 100'000;
    std::string text;
    for (std::size_t number = 0; number < rules; ++number)
        text += "allow path /some/long/way/to/a/file/number/" + std::to_string(number) + " any r\n";
    ASSERT_GT(text.size(), 4U << 20U) << "too short for several parts";

    std::size_t used = 0;
    std::size_t discarded = 0;
    std::size_t parts = 0;
    useParsedLines(
        text, {},
        [&](const std::vector<ParsedLine>& lines) {
            for (const ParsedLine& line : lines) {
                ASSERT_EQ(pathOf(line), "/some/long/way/to/a/file/number/" + std::to_string(used));
                ++used;
            }
        },
        [&](std::string_view part) {
            ASSERT_EQ(part.data(), text.data() + discarded) << "they follow each other";
            std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(discarded), part.size(), '\0');
            discarded += part.size();
            parts += part.empty() ? 0U : 1U;
        });
    EXPECT_EQ(used, rules);
    EXPECT_EQ(discarded, text.size());
    EXPECT_GE(parts, 4U);
}

} // namespace quorvane::rules
