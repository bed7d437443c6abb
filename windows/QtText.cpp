#include "windows/QtText.h"

#include <QLocale>

namespace quorvane::windows {

QString toQt(std::string_view text)
{
    // Qt would remove a byte order mark, so that an unedited text could come back changed.
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const QString converted = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return text.starts_with(mark) ? QChar(QChar::ByteOrderMark) + converted : converted;
}

QString asSentence(std::string_view text)
{
    QString sentence = toQt(text);
    if (sentence.isEmpty())
        return sentence;
    sentence[0] = sentence[0].toUpper();
    return sentence.back().isLetterOrNumber() ? sentence + QLatin1Char('.') : sentence;
}

QString inWords(std::uint64_t number)
{
    return QLocale().toString(static_cast<qulonglong>(number));
}

std::string fromQt(const QString& text)
{
    return text.toStdString();
}

} // namespace quorvane::windows
