#include "windows/QtText.h"

namespace quorvane {

QString toQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string fromQt(const QString& text)
{
    return text.toStdString();
}

} // namespace quorvane
