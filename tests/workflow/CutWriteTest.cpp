#include "workflow/CutWrite.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::workflow {

TEST(CutWrite, KnowsAFileAsBeforeAndAsMeant)
{
    EXPECT_EQ(fileAfterWrite("old\n", "old\n", "new\n"), FileAfterWrite::asBefore);
    EXPECT_EQ(fileAfterWrite("new\n", "old\n", "new\n"), FileAfterWrite::asMeant);
    EXPECT_EQ(fileAfterWrite("new\n", std::nullopt, "new\n"), FileAfterWrite::asMeant);
}

TEST(CutWrite, KnowsEveryBeginningOfTheNewBytesOverTheOldOnes)
{
    const std::string meant = "the new rules, every one\n";
    for (const std::string before : {"old\n", "an older text, longer than the new rules are\n"}) {
        for (std::size_t written = 1; written < meant.size(); ++written) {
            std::string now = meant.substr(0, written);
            if (written < before.size())
                now += before.substr(written);
            EXPECT_EQ(fileAfterWrite(now, before, meant), FileAfterWrite::cutShort) << written << now;
        }
    }
}

TEST(CutWrite, KnowsTheNewBytesOverOldOnesThatWereCutShortThemselves)
{
    const std::string old = "old rules\n";
    EXPECT_EQ(fileAfterWrite("new ru", old, "new\n", OldBytes::beginning), FileAfterWrite::cutShort);
    EXPECT_EQ(fileAfterWrite("new ru", old, "new\n", OldBytes::all), FileAfterWrite::foreign);
    EXPECT_EQ(fileAfterWrite("new rod", old, "new\n", OldBytes::beginning), FileAfterWrite::foreign);
    EXPECT_EQ(fileAfterWrite("new rules\nand", old, "new\n", OldBytes::beginning), FileAfterWrite::foreign);
}

TEST(CutWrite, KnowsAnEmptyFileAndZerosForBytesThatNeverReachedTheDisk)
{
    EXPECT_EQ(fileAfterWrite("", "old\n", "new\n"), FileAfterWrite::cutShort);
    EXPECT_EQ(fileAfterWrite(std::string("ne\0\0", 4), "old\n", "new\n"), FileAfterWrite::cutShort);
}

TEST(CutWrite, TakesAnythingElseForAnotherProgramsWrite)
{
    EXPECT_EQ(fileAfterWrite("new\nmore\n", "old\n", "new\n"), FileAfterWrite::foreign);
    EXPECT_EQ(fileAfterWrite("nex\n", "old\n", "new\n"), FileAfterWrite::foreign);
    EXPECT_EQ(fileAfterWrite("third\n", std::nullopt, "new\n"), FileAfterWrite::foreign);
}

} // namespace quorvane::workflow
