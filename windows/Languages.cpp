#include "windows/Languages.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

// See WindowLook.cpp.
static void keepTranslations()
{
    Q_INIT_RESOURCE(translations);
}

namespace quorvane::windows {

namespace {

// Untranslated texts are English.
bool isEnglish(const QString& language)
{
    return QLocale(language).language() == QLocale::English;
}

bool install(QApplication& application, const QString& language, const QString& name, const QString& folder)
{
    auto* translator = new QTranslator(&application);
    return translator->load(QLocale(language), name, QStringLiteral("_"), folder)
        && QApplication::installTranslator(translator);
}

} // namespace

void speakLanguageOf(QApplication& application, const QLocale& locale)
{
    keepTranslations();
    // Not left to QTranslator, which would skip English in favour of a less preferred language.
    for (const QString& language : locale.uiLanguages()) {
        if (isEnglish(language))
            break;
        if (install(application, language, QStringLiteral("quorvane"), QStringLiteral(":/translations"))) {
            install(application, language, QStringLiteral("qtbase"),
                QLibraryInfo::path(QLibraryInfo::TranslationsPath));
            break;
        }
    }
    QApplication::setLayoutDirection(locale.textDirection());
}

} // namespace quorvane::windows
