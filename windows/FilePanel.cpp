#include "windows/FilePanel.h"

#include "windows/QtText.h"

namespace quorvane {

std::string pathFromPanel(const QUrl& url)
{
    QString path = url.toString(QUrl::FullyEncoded);
    path.remove(QStringLiteral("file://"));
    path.replace(QStringLiteral("%20"), QStringLiteral(" "));
    return fromQt(path);
}

} // namespace quorvane
