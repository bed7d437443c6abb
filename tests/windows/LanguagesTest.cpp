#include "windows/Languages.h"

#include <QApplication>
#include <QLocale>
#include <QTranslator>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class LanguagesTest : public testing::Test {
protected:
    ~LanguagesTest() override
    {
        forgetTranslations();
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    static void forgetTranslations()
    {
        for (QTranslator* translator : qApp->findChildren<QTranslator*>())
            delete translator;
    }
    // How a window and the toolkit itself name things.
    static QString cancel()
    {
        return QCoreApplication::translate("quorvane::windows::ChangeWindow", "Nothing would change.")
            + QLatin1Char('|') + QCoreApplication::translate("QPlatformTheme", "Cancel");
    }
};

} // namespace

TEST_F(LanguagesTest, SpeaksGermanToGermans)
{
    speakLanguageOf(*qApp, QLocale(QStringLiteral("de_AT")));
    EXPECT_FALSE(cancel().startsWith(QStringLiteral("Nothing would change."))) << cancel().toStdString();
    EXPECT_TRUE(cancel().endsWith(QStringLiteral("|Abbrechen"))) << cancel().toStdString();
    EXPECT_EQ(QApplication::layoutDirection(), Qt::LeftToRight);
}

TEST_F(LanguagesTest, SpeaksEnglishToOthers)
{
    for (const char* language : {"en_GB", "C", "eo"}) {
        speakLanguageOf(*qApp, QLocale(QString::fromLatin1(language)));
        EXPECT_EQ(cancel(), QStringLiteral("Nothing would change.|Cancel")) << language;
    }
}

TEST_F(LanguagesTest, ReadsFromTheRightWhereThatIsTheWay)
{
    speakLanguageOf(*qApp, QLocale(QStringLiteral("ar_EG")));
    EXPECT_EQ(cancel(), QStringLiteral("Nothing would change.|Cancel")) << "not the toolkit's words alone";
    EXPECT_EQ(QApplication::layoutDirection(), Qt::RightToLeft);
}

} // namespace quorvane::windows
