#include "windows/OneLineText.h"

#include <QLineEdit>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(OneLineText, LosesEveryCharacterThatEndsALineOrAFile)
{
    for (const char16_t end : {u'\0', u'\n', u'\v', u'\f', u'\r', u'\u0085', u'\u2028', u'\u2029'}) {
        QLineEdit field;
        keepToOneLine(field);
        field.insert(QStringLiteral("one") + QChar(end) + QStringLiteral("two"));
        EXPECT_EQ(field.text(), QStringLiteral("onetwo")) << static_cast<int>(end);
    }
}

TEST(OneLineText, KeepsAllOthersAndTheCursorWhereItIs)
{
    QLineEdit field;
    keepToOneLine(field);
    field.insert(QStringLiteral("a\tb \u00a0\u200b"));
    EXPECT_EQ(field.text(), QStringLiteral("a\tb \u00a0\u200b"));
    field.setText(QStringLiteral("behind"));
    field.setCursorPosition(0);
    field.insert(QStringLiteral("x\n\ny"));
    EXPECT_EQ(field.text(), QStringLiteral("xybehind"));
    EXPECT_EQ(field.cursorPosition(), 2);
}

} // namespace quorvane::windows
