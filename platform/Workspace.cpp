#include "platform/Workspace.h"

#include "platform/PropertyList.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>
#include <QPixmap>
#include <QUrl>

#include <gio/gio.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

// Larger images are for other uses than a table's or an editor's, and serve only where no smaller one does.
constexpr int largestIcon = 256;

// While it lives no image that needs more memory is read: a few bytes can stand for a huge picture.
class ImageMemoryLimit {
public:
    ImageMemoryLimit() { QImageReader::setAllocationLimit(megabytes); }
    ~ImageMemoryLimit() { QImageReader::setAllocationLimit(m_before); }
    ImageMemoryLimit(const ImageMemoryLimit&) = delete;
    ImageMemoryLimit& operator=(const ImageMemoryLimit&) = delete;

private:
    static constexpr int megabytes = 16;
    const int m_before = QImageReader::allocationLimit();
};

int extentOf(const QImage& image)
{
    return std::max(image.width(), image.height());
}

// Every size that the image file holds and the reader understands, smallest first; sizes in JPEG 2000 are not
// understood.
std::vector<QImage> imagesInFile(const QString& file)
{
    std::vector<QImage> images;
    if (!QFileInfo(file).isFile()) // a pipe would hold up the window
        return images;
    const ImageMemoryLimit limit;
    const int count = std::min(QImageReader(file).imageCount(), 32);
    for (int number = 0; number < count; ++number) {
        QImageReader reader(file); // it tells no size beforehand
        reader.jumpToImage(number);
        if (QImage image = reader.read(); !image.isNull())
            images.push_back(std::move(image));
    }
    std::sort(images.begin(), images.end(),
        [](const QImage& a, const QImage& b) { return extentOf(a) < extentOf(b); });
    return images;
}

// The sizes up to the first that is large enough.
QIcon iconFromImageFile(const QString& file)
{
    QIcon icon;
    for (const QImage& image : imagesInFile(file)) {
        const bool isTooLarge = extentOf(image) > largestIcon;
        icon.addPixmap(QPixmap::fromImage(isTooLarge
                ? image.scaled(largestIcon, largestIcon, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                : image));
        if (extentOf(image) >= largestIcon)
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

bool Workspace::openFile(const std::string& path)
{
    const QString file = QString::fromStdString(path);
    return QFileInfo::exists(file) && QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

bool Workspace::hasProgramFor(const std::string& mimeType)
{
    const std::unique_ptr<GAppInfo, decltype(&g_object_unref)> program(
        g_app_info_get_default_for_type(mimeType.c_str(), FALSE), g_object_unref);
    return program != nullptr;
}

} // namespace quorvane
