#include "rules/SequenceMatching.h"

#include "tests/rules/RandomRules.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::rules {

namespace {

Sequence letters(const std::string& text)
{
    return {text.begin(), text.end()};
}

// The matching letters of two texts.
std::string common(const std::string& a, const std::string& b)
{
    std::string text;
    for (const auto& [inA, inB] : matchingPlaces(letters(a), letters(b)))
        text += a[inA] == b[inB] ? a[inA] : '!';
    return text;
}

std::string repeated(const std::string& text, std::size_t times)
{
    std::string all;
    for (; times > 0; --times)
        all += text;
    return all;
}

} // namespace

TEST(SequenceMatching, FindsWhatIsInsertedAndRemoved)
{
    EXPECT_EQ(common("abc", "abc"), "abc");
    EXPECT_EQ(common("abc", "xaybzc"), "abc");
    EXPECT_EQ(common("xaybzc", "abc"), "abc");
    EXPECT_EQ(common("abc", ""), "");
    EXPECT_EQ(common("", ""), "");
    EXPECT_EQ(common("abc", "def"), "");
}

TEST(SequenceMatching, MatchesWhatStandsOnceBeforeWhatStandsOften)
{
    // The blank lines around a moved part do not split it.
    const auto pairs = matchingPlaces(letters("  a  b  "), letters("  b  "));
    EXPECT_EQ(pairs, (std::vector<PlacePair>{{0, 0}, {1, 1}, {5, 2}, {6, 3}, {7, 4}}));
}

TEST(SequenceMatching, KeepsTheLongestOrderOfWhatHasMoved)
{
    EXPECT_EQ(common("abcde", "eabcd"), "abcd");
    EXPECT_EQ(common("abcde", "bcdea"), "bcde");
}

TEST(SequenceMatching, FindsFewDifferencesWhereNothingStandsOnce)
{
    EXPECT_EQ(common("ababab", "abbab"), "abbab");
    EXPECT_EQ(common("aabb", "abab").size(), 3U);
    EXPECT_EQ(common("xxaaxx", "yyaayy"), "aa");
}

TEST(SequenceMatching, EndsWhereNothingStandsOnceAndNothingIsInCommon)
{
    EXPECT_EQ(common(repeated("ab", 5000), repeated("cd", 5000)), "");
    EXPECT_EQ(common("x" + repeated("ab", 5000) + "y", "x" + repeated("cd", 5000) + "y"), "xy");
}

TEST(SequenceMatching, PairsAscendAndAreEqual)
{
    test::RandomRules random(7);
    for (int round = 0; round < 3000; ++round) {
        const std::size_t letterCount = 1 + random.below(12);
        Sequence a;
        Sequence b;
        for (Sequence* sequence : {&a, &b}) {
            for (std::size_t left = random.below(40); left > 0; --left)
                sequence->push_back(static_cast<std::uint32_t>(random.below(letterCount)));
        }
        std::int64_t lastA = -1;
        std::int64_t lastB = -1;
        for (const auto& [inA, inB] : matchingPlaces(a, b)) {
            ASSERT_TRUE(inA > lastA && inB > lastB && inA < a.size() && inB < b.size());
            ASSERT_EQ(a[inA], b[inB]);
            lastA = inA;
            lastB = inB;
        }
        ASSERT_EQ(matchingPlaces(a, a).size(), a.size());
    }
}

} // namespace quorvane::rules
