#include "windows/QtText.h"

#include <QLocale>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(QtText, GoesToTheWindowsAndBackUnchanged)
{
    for (const std::string text :
        {"", "plain", "\u00e9\u2026\U0001F600", "\uFEFFwith a mark", "in\uFEFFside", "\uFEFF", "two\nlines"})
        EXPECT_EQ(fromQt(toQt(text)), text);
    EXPECT_EQ(fromQt(toQt(std::string("a\0b", 3))), std::string("a\0b", 3));
}

TEST(QtText, GroupsTheDigitsOfANumberAsTheDesktopDoes)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(inWords(1234567), QStringLiteral("1,234,567"));
    EXPECT_EQ(inWords(UINT64_MAX), QStringLiteral("18,446,744,073,709,551,615"));
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(inWords(1234567), QStringLiteral("1.234.567"));
    QLocale::setDefault(QLocale::system());
}

} // namespace quorvane::windows
