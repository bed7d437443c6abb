#include "rules/RuleCodes.h"

#include <gtest/gtest.h>

#include <climits>

namespace quorvane::rules {

TEST(RuleCodes, ClassTextsReadBackButWatchWhichReadsAsUnknown)
{
    EXPECT_EQ(policyClassDescription(0), "allow");
    EXPECT_EQ(policyClassDescription(1), "deny");
    EXPECT_EQ(policyClassDescription(2), "watch");
    EXPECT_EQ(policyClassForString("allow"), 0);
    EXPECT_EQ(policyClassForString("deny"), 1);
    EXPECT_EQ(policyClassForString("watch"), 4) << "no policy rule may be read as a watch rule";
}

TEST(RuleCodes, TypeTextsReadBack)
{
    EXPECT_EQ(policyTypeDescription(0), "prefix");
    EXPECT_EQ(policyTypeDescription(1), "path");
    EXPECT_EQ(policyTypeDescription(2), "suffix");
    EXPECT_EQ(policyTypeForString("prefix"), 0);
    EXPECT_EQ(policyTypeForString("path"), 1);
    EXPECT_EQ(policyTypeForString("suffix"), 2);
}

TEST(RuleCodes, UnknownCodesDescribeAsErrAndReadBackAsFour)
{
    for (const int code : {3, 4, -1, 256, INT_MAX, INT_MIN}) {
        EXPECT_EQ(policyClassDescription(code), "err") << code;
        EXPECT_EQ(policyTypeDescription(code), "err") << code;
    }
    EXPECT_EQ(policyClassForString("err"), 4);
    EXPECT_EQ(policyTypeForString("err"), 4);
}

TEST(RuleCodes, ClassAndTypeTextsMatchExactly)
{
    for (const char* text : {"", "Allow", "ALLOW", "allow ", " allow", "allo", "denyed", "set"})
        EXPECT_EQ(policyClassForString(text), 4) << text;
    for (const char* text : {"", "Prefix", "prefix ", "pre", "paths", "any"})
        EXPECT_EQ(policyTypeForString(text), 4) << text;
}

TEST(RuleCodes, OperationLettersCountWhereverTheyStand)
{
    const struct {
        const char* why;
        const char* text;
        std::uint32_t operations;
    } cases[] = {
        {"nothing", "", 0},
        {"no letter of ours", "z", 0},
        {"each letter: r", "r", 1},
        {"each letter: w", "w", 2},
        {"each letter: c", "c", 4},
        {"each letter: m", "m", 8},
        {"each letter: x", "x", 16},
        {"in any order", "xmcwr", 31},
        {"the other order", "wr", 3},
        {"repeated letters count once", "rrr", 1},
        {"within a word", "read", 1},
        {"capitals are other letters", "RWCMX", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(operationsForString(c.text), c.operations) << c.why;
}

TEST(RuleCodes, OperationsAreWrittenInAscendingBits)
{
    EXPECT_EQ(operationsDescription(static_cast<int>(operationsForString("xmcwr"))), "rwcmx");
    EXPECT_EQ(operationsDescription(0), "");
    EXPECT_EQ(operationsDescription(17), "rx");
    EXPECT_EQ(operationsDescription(32 | 64 | 1), "r") << "other bits have no letter";
    EXPECT_EQ(operationsDescription(-1), "rwcmx");
    EXPECT_EQ(operationsForInteger(14), "wcm");
}

TEST(RuleCodes, EveryOperationSetReadsBack)
{
    for (int operations = 0; operations < 32; ++operations) {
        EXPECT_EQ(operationsForString(operationsDescription(operations)), static_cast<unsigned>(operations));
    }
}

TEST(RuleCodes, FlagsAreDescribedWithoutTheSecondBitThatTheirIntegerNames)
{
    const struct {
        int flags;
        const char* description;
        const char* integer;
    } cases[] = {{0, "", ""}, {1, "u", "u"}, {2, "", "s"}, {3, "u", "us"}, {7, "u", "us"}, {4, "", ""}};
    for (const auto& c : cases) {
        EXPECT_EQ(flagsDescription(c.flags), c.description) << c.flags;
        EXPECT_EQ(flagsForInteger(c.flags), c.integer) << c.flags;
    }
}

TEST(RuleCodes, FlagLettersCountWhereverTheyStand)
{
    EXPECT_EQ(flagsForString("us"), 3U);
    EXPECT_EQ(flagsForString("su"), 3U);
    EXPECT_EQ(flagsForString("u"), 1U);
    EXPECT_EQ(flagsForString("s"), 2U);
    EXPECT_EQ(flagsForString("users"), 3U);
    EXPECT_EQ(flagsForString(""), 0U);
    EXPECT_EQ(flagsForString("US"), 0U);
}

TEST(BitwiseInclusive, LooksAtTheLowEightBitsOnly)
{
    const struct {
        const char* why;
        std::uint32_t a;
        std::uint32_t b;
        bool inclusive;
    } cases[] = {
        {"nothing is in nothing", 0, 0, true},
        {"bit 8 is ignored", 0, 256, true},
        {"a bit is missing", 1, 3, false},
        {"more than asked", 3, 1, true},
        {"the same", 31, 31, true},
        {"bit 7 counts", 0, 128, false},
        {"bit 7 is there", 128, 128, true},
        {"high bits do not help", 256, 1, false},
        {"all high bits are ignored", 1, 0xFFFFFF01U, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isBitwiseInclusive(c.a, c.b), c.inclusive) << c.why;
}

TEST(BitwiseInclusive, AgreesWithABitByBitWalk)
{
    for (std::uint32_t a = 0; a < 512; a += 3) {
        for (std::uint32_t b = 0; b < 512; b += 7) {
            bool expected = true;
            for (unsigned bit = 0; bit < 8; ++bit)
                expected = expected && ((b >> bit & 1U) == 0 || (a >> bit & 1U) == 1);
            EXPECT_EQ(isBitwiseInclusive(a, b), expected) << a << " of " << b;
        }
    }
}

} // namespace quorvane::rules
