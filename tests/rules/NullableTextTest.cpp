#include "rules/NullableText.h"
#include "rules/TextPool.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace quorvane::rules {

TEST(NullableText, NullAndEmptyDiffer)
{
    const NullableText null;
    const NullableText empty("");

    EXPECT_TRUE(null.isNull());
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(null.view(), "");
    EXPECT_EQ(empty.view(), "");
    EXPECT_EQ(null.written(), "(null)");
    EXPECT_EQ(empty.written(), "");
    EXPECT_TRUE(NullableText(std::nullopt).isNull());
}

TEST(NullableText, NullEqualsNothing)
{
    const NullableText null;
    const NullableText empty("");
    const NullableText text("a");

    EXPECT_FALSE(equalNonNull(null, null));
    EXPECT_FALSE(equalNonNull(null, empty));
    EXPECT_FALSE(equalNonNull(empty, null));
    EXPECT_FALSE(equalNonNull(text, null));
    EXPECT_TRUE(equalNonNull(empty, NullableText("")));
    EXPECT_TRUE(equalNonNull(text, NullableText("a")));
    EXPECT_FALSE(equalNonNull(text, NullableText("A")));
    EXPECT_FALSE(equalNonNull(NullableText("(null)"), null));
}

TEST(NullableText, CopyKeepsTheTextWhenTheOriginalChanges)
{
    NullableText original("first");
    const NullableText copy = original;
    original = "second";

    EXPECT_EQ(copy.view(), "first");
    EXPECT_EQ(original.view(), "second");
    EXPECT_FALSE(copy.sharesBytesWith(original));
}

TEST(NullableText, CopyOutlivesTheOriginal)
{
    NullableText copy;
    {
        const NullableText original(std::string(100, 'x'));
        copy = original;
        EXPECT_TRUE(copy.sharesBytesWith(original));
    }

    EXPECT_EQ(copy.view(), std::string(100, 'x'));
}

TEST(NullableText, MovingLeavesNull)
{
    NullableText from("text");
    const NullableText to = std::move(from);

    EXPECT_EQ(to.view(), "text");
    EXPECT_TRUE(from.isNull()); // NOLINT(bugprone-use-after-move): tests the moved-from state
}

TEST(NullableText, KeepsNulBytes)
{
    const std::string_view text("a\0b", 3);

    EXPECT_EQ(NullableText(text).view(), text);
}

TEST(TextPool, EqualTextsShareTheirBytes)
{
    TextPool pool;
    const NullableText first = pool.text("/bin/ls");
    const NullableText second = pool.text(std::string("/bin/") + "ls");

    EXPECT_TRUE(first.sharesBytesWith(second));
    EXPECT_FALSE(first.sharesBytesWith(pool.text("/bin/sh")));
}

TEST(TextPool, TextsThatPushEachOtherOutStayRight)
{
    TextPool pool(1);
    const NullableText first = pool.text("a");
    const NullableText second = pool.text("b");

    EXPECT_EQ(first.view(), "a");
    EXPECT_EQ(second.view(), "b");
    EXPECT_EQ(pool.text("").view(), "");
    EXPECT_FALSE(pool.text("").isNull());
}

} // namespace quorvane::rules
