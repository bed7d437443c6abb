#include "workflow/DifferenceTable.h"

#include "platform/Unicode.h"
#include "rules/RulesText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::workflow {

namespace {

DifferenceTablePtr rulesTable(const std::string& before, const std::string& after)
{
    return differenceTable(rulesDifference(rules::rulesOfText(before), rules::rulesOfText(after)));
}

platform::PropertyList list(const std::string& entries)
{
    return platform::PropertyList::parse("<plist version=\"1.0\"><dict>" + entries + "</dict></plist>")
        .value();
}

std::vector<std::string> row(const DifferenceTable& table, std::size_t number)
{
    std::vector<std::string> texts;
    for (std::size_t column = 0; column < table.titles().size(); ++column)
        texts.push_back(table.text(number, column));
    return texts;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(DifferenceTable, ShowsWhatCameThenWhatWentThenWhatChanged)
{
    const auto table = rulesTable("allow prefix \"/a\" \"/bin/sh\" r \"old\" \"\" \"0\"\n"
                                  "deny path \"/b\" \"any\" rw \"\" \"\" \"0\"\n",
        "watch suffix \".c\" \"/bin/cat\" x\n"
        "allow prefix \"/a\" \"/bin/sh\" r \"new\" \"\" \"0\"\n");
    ASSERT_EQ(table->rows(), 3U);
    EXPECT_EQ(row(*table, 0), (Texts{"Added", "watch", "suffix", "x", "/bin/cat", ".c", "", ""}));
    EXPECT_EQ(row(*table, 1), (Texts{"Removed", "deny", "path", "rw", "any", "/b", "", ""}));
    EXPECT_EQ(row(*table, 2),
        (Texts{"Changed", "allow", "prefix", "r", "/bin/sh", "/a", "new",
            "tag changed from \"old\" to \"new\""}));
    EXPECT_EQ(table->summary(), "1 rule added, 1 removed, 1 changed");
    EXPECT_EQ(table->titles().size(), 8U);
    EXPECT_EQ(table->titles()[table->widestColumn()], "Path");
}

TEST(DifferenceTable, IsSearchedInWholeRulesWhateverTheirCase)
{
    const auto table = rulesTable("", "allow prefix \"/Mail/\" \"/bin/sh\" r \"tag\" \"\" \"0\"\n");
    EXPECT_TRUE(table->contains(platform::searchKey("mAIL")));
    EXPECT_TRUE(table->contains(platform::searchKey("bin/sh")));
    EXPECT_FALSE(table->contains(platform::searchKey("post")));
}

TEST(DifferenceTable, IsNotSearchedAcrossItsRows)
{
    const auto table
        = differenceTable(list(""), list("<key>a</key><string>x</string><key>b</key><string>y</string>"));
    const std::string first = table->line(0);
    const std::string second = table->line(1);
    EXPECT_TRUE(table->contains(second));
    EXPECT_FALSE(table->contains(first + second));
}

TEST(DifferenceTable, OfPreferencesTellsKeyByKey)
{
    const auto table = differenceTable(
        list("<key>a</key><integer>1</integer><key>b</key><string>x</string><key>same</key><true/>"),
        list("<key>same</key><true/><key>c</key><integer>2</integer><key>a</key><integer>3</integer>"));
    ASSERT_EQ(table->rows(), 3U);
    EXPECT_EQ(row(*table, 0), (Texts{"Added", "c", "", "2"}));
    EXPECT_EQ(row(*table, 1), (Texts{"Removed", "b", "\"x\"", ""}));
    EXPECT_EQ(row(*table, 2), (Texts{"Changed", "a", "1", "3"}));
    EXPECT_EQ(table->line(2), "a = 3, before: 1");
    EXPECT_EQ(table->summary(), "1 setting added, 1 removed, 1 changed");
}

TEST(DifferenceTable, OfTheSameIsEmpty)
{
    EXPECT_EQ(differenceTable(list("<key>a</key><true/>"), list("<key>a</key><true/>"))->rows(), 0U);
    EXPECT_EQ(rulesTable("", "")->summary(), "no rule changed");
}

} // namespace quorvane::workflow
