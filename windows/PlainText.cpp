#include "windows/PlainText.h"

namespace quorvane::windows {

QString plainToolTip(const QString& text)
{
    constexpr int longest = 2000;
    if (text.isEmpty())
        return {};
    const QString shown = text.size() > longest ? text.first(longest) + QChar(0x2026) : text;
    return QStringLiteral("<p style='white-space: pre-wrap'>") + withBreakPoints(shown).toHtmlEscaped()
        + QStringLiteral("</p>");
}

QString plainTitle(const QString& text)
{
    const QString placeholder = QStringLiteral("[*]"); // Qt's placeholder for the mark of a changed document
    return QString(text).replace(placeholder, placeholder + placeholder);
}

QString withBreakPoints(const QString& text)
{
    constexpr int longestRun = 30;
    constexpr QChar breakPoint(0x200b); // zero width space
    QString broken;
    int run = 0;
    for (const QChar character : text) {
        if (run >= longestRun && !character.isLowSurrogate() && !character.isMark()) {
            broken += breakPoint;
            run = 0;
        }
        broken += character;
        run = character.isSpace() || character == QLatin1Char('/') ? 0 : run + 1;
    }
    return broken;
}

} // namespace quorvane::windows
