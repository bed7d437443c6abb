#include "platform/Workspace.h"

#include "platform/PropertyList.h"

#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>
#include <QPixmap>

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

// Larger images are for other uses than a table's or an editor's, and serve only where no smaller one does.
constexpr int largestIcon = 256;

// The extent and the number of each image in the file, smallest first.
std::vector<std::pair<int, int>> imagesBySize(const QString& file)
{
    std::vector<std::pair<int, int>> images;
    const int count = std::min(QImageReader(file).imageCount(), 32);
    for (int number = 0; number < count; ++number) {
        QImageReader reader(file);
        if (reader.jumpToImage(number))
            images.emplace_back(std::max(reader.size().width(), reader.size().height()), number);
    }
    std::sort(images.begin(), images.end());
    return images;
}

// Every size that the image file holds and the reader understands, up to the first that is large enough;
// sizes in JPEG 2000 are not understood.
QIcon iconFromImageFile(const QString& file)
{
    QIcon icon;
    if (!QFileInfo(file).isFile()) // a pipe would hold up the window
        return icon;
    for (const auto& [extent, number] : imagesBySize(file)) {
        QImageReader reader(file);
        reader.jumpToImage(number);
        QImage image = reader.read();
        if (image.isNull())
            continue;
        if (extent > largestIcon)
            image = image.scaled(largestIcon, largestIcon, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        icon.addPixmap(QPixmap::fromImage(image));
        if (extent >= largestIcon)
            break;
    }
    return icon;
}

QIcon bundleIcon(const QString& bundle)
{
    const QString contents = bundle + QStringLiteral("/Contents/");
    const auto info = PropertyList::read((contents + QStringLiteral("Info.plist")).toStdString());
    const auto name = info ? info->stringForKey("CFBundleIconFile") : std::nullopt;
    if (!name)
        return {};
    QString file = QString::fromStdString(*name);
    if (!file.endsWith(QStringLiteral(".icns"), Qt::CaseInsensitive))
        file += QStringLiteral(".icns");
    return iconFromImageFile(contents + QStringLiteral("Resources/") + QFileInfo(file).fileName());
}

QIcon desktopIcon(const QFileInfo& file)
{
    // By name only: looking into the file could take as long as its disk wants.
    if (file.isFile() && file.isExecutable())
        return QIcon::fromTheme(QStringLiteral("application-x-executable"));
    const QMimeType type = QMimeDatabase().mimeTypeForFile(file, QMimeDatabase::MatchExtension);
    const QIcon icon = QIcon::fromTheme(type.iconName());
    return icon.isNull() ? QIcon::fromTheme(type.genericIconName()) : icon;
}

QIcon findIcon(const QString& path)
{
    const bool isBundle = path.endsWith(QStringLiteral(".app"));
    const QFileInfo file(path);
    QIcon icon;
    if (file.exists())
        icon = isBundle ? bundleIcon(path) : desktopIcon(file);
    if (!icon.isNull())
        return icon;
    return QIcon(isBundle ? QStringLiteral(":/images/application.svg") : QStringLiteral(":/images/tool.svg"));
}

} // namespace

QIcon Workspace::iconForFile(const std::string& path)
{
    auto known = m_icons.find(path);
    if (known == m_icons.end())
        known = m_icons.emplace(path, findIcon(QString::fromStdString(path))).first;
    return known->second;
}

} // namespace quorvane
