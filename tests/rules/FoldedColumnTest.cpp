#include "rules/FoldedColumn.h"

#include "platform/Unicode.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace quorvane::rules {

namespace {

// The marks as digits, of `count` texts.
template <class Column>
std::string marksOf(const Column& column, std::string_view text, std::size_t count, std::size_t first = 0)
{
    std::vector<bool> marks(count);
    column.markContaining(platform::searchKey(text), first, marks);
    std::string digits;
    for (const bool mark : marks)
        digits += mark ? '1' : '0';
    return digits;
}

FoldedColumn columnOf(std::initializer_list<std::string_view> texts)
{
    FoldedColumn column;
    for (const std::string_view text : texts)
        column.append(text);
    return column;
}

} // namespace

TEST(FoldedColumn, MarksEveryTextThatContainsTheKey)
{
    const FoldedColumn column = columnOf({"Abc", "", "xABCabc", "ab", "c", "abc"});
    EXPECT_EQ(marksOf(column, "abc", 6), "101001");
    EXPECT_EQ(marksOf(column, "c", 6), "101011");
}

TEST(FoldedColumn, AHitNeverSpansTwoTexts)
{
    EXPECT_EQ(marksOf(columnOf({"ab", "cd"}), "bc", 2), "00");
}

TEST(FoldedColumn, MarksNothingBeforeTheFirstOrBeyondTheLastMark)
{
    const FoldedColumn column = columnOf({"a", "a", "a", "a"});
    EXPECT_EQ(marksOf(column, "a", 4, 2), "0011");
    EXPECT_EQ(marksOf(column, "a", 3, 1), "011");
    EXPECT_EQ(marksOf(column, "a", 2, 2), "00");
    EXPECT_EQ(marksOf(columnOf({}), "a", 0), "");
}

TEST(RepeatedColumn, MarksEveryPlaceOfATextThatContainsTheKey)
{
    const NullableText shell = "/bin/Shell";
    const NullableText list = "/bin/ls";
    RepeatedColumn column;
    for (const NullableText& text : {shell, list, NullableText(), shell, NullableText(""), list, shell})
        column.append(text);
    column.append("/bin/shell"); // equal, but with bytes of its own

    EXPECT_EQ(marksOf(column, "SHELL", 8), "10010011");
    EXPECT_EQ(marksOf(column, "bin", 8, 3), "00010111");
    EXPECT_EQ(marksOf(column, "bin", 2), "11");
    EXPECT_EQ(marksOf(column, "null", 8), "00000000");
}

TEST(RepeatedColumn, ATextWhoseOwnersAreGoneIsNotTakenForALaterOne)
{
    RepeatedColumn column;
    for (int number = 0; number < 100; ++number)
        column.append(NullableText("text" + std::to_string(number % 2)));
    std::string expected;
    for (int number = 0; number < 100; ++number)
        expected += number % 2 == 1 ? '1' : '0';
    EXPECT_EQ(marksOf(column, "text1", 100), expected);
}

} // namespace quorvane::rules
