#include "desktop/Workspace.h"

#include "platform/PropertyList.h"
#include "platform/PropertyListBounds.h"

#include <QDesktopServices>
#include <QFile>
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

#include <sys/stat.h>

namespace quorvane::desktop {

namespace {

// Larger images are meant for other uses than tables and editors, and are used only when there is no smaller
// one.
constexpr int largestIcon = 256;

// Limits the memory for reading an image during its lifetime: a few bytes can decode to a huge picture.
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

// All sizes in the image file that the reader can decode, smallest first; JPEG 2000 cannot be decoded.
std::vector<QImage> imagesInFile(const std::string& path, const platform::FileRoot& root)
{
    std::vector<QImage> images;
    const platform::FileDescriptor descriptor = root.openRegularFile(path);
    QFile file;
    if (!descriptor || !file.open(descriptor.get(), QIODevice::ReadOnly))
        return images;
    const ImageMemoryLimit limit;
    const int count = std::min(QImageReader(&file).imageCount(), 32);
    for (int number = 0; number < count && file.seek(0); ++number) {
        QImageReader reader(&file); // it does not know the size in advance
        reader.jumpToImage(number);
        if (QImage image = reader.read(); !image.isNull())
            images.push_back(std::move(image));
    }
    std::sort(images.begin(), images.end(),
        [](const QImage& a, const QImage& b) { return extentOf(a) < extentOf(b); });
    return images;
}

// An icon of the sizes up to the first that is large enough.
QIcon iconFromImageFile(const std::string& path, const platform::FileRoot& root)
{
    QIcon icon;
    for (const QImage& image : imagesInFile(path, root)) {
        const bool isTooLarge = extentOf(image) > largestIcon;
        icon.addPixmap(QPixmap::fromImage(isTooLarge
                ? image.scaled(largestIcon, largestIcon, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                : image));
        if (extentOf(image) >= largestIcon)
            break;
    }
    return icon;
}

QIcon bundleIcon(const std::string& bundle, const platform::FileRoot& root)
{
    const std::string contents = bundle + "/Contents/";
    const auto bytes = root.contents(contents + "Info.plist", platform::largestPropertyList);
    const auto info = bytes ? platform::PropertyList::parse(*bytes) : std::nullopt;
    const auto name = info ? info->stringForKey("CFBundleIconFile") : std::nullopt;
    if (!name)
        return {};
    QString file = QFileInfo(QString::fromStdString(*name)).fileName();
    if (!file.endsWith(QStringLiteral(".icns"), Qt::CaseInsensitive))
        file += QStringLiteral(".icns");
    return iconFromImageFile(contents + "Resources/" + file.toStdString(), root);
}

// By name only: reading the file could block on a slow disk.
QMimeType typeOf(const std::string& path, const struct stat& status)
{
    return S_ISDIR(status.st_mode)
        ? QMimeDatabase().mimeTypeForName(QStringLiteral("inode/directory"))
        : QMimeDatabase().mimeTypeForFile(QString::fromStdString(path), QMimeDatabase::MatchExtension);
}

QIcon desktopIcon(const std::string& path, const struct stat& status)
{
    constexpr mode_t executable = S_IXUSR | S_IXGRP | S_IXOTH;
    if (S_ISREG(status.st_mode) && (status.st_mode & executable) != 0)
        return QIcon::fromTheme(QStringLiteral("application-x-executable"));
    const QMimeType type = typeOf(path, status);
    const QIcon icon = QIcon::fromTheme(type.iconName());
    return icon.isNull() ? QIcon::fromTheme(type.genericIconName()) : icon;
}

QIcon findIcon(const std::string& path, const std::optional<platform::FileRoot>& root)
{
    const bool isBundle = path.ends_with(".app");
    QIcon icon;
    if (const auto status = root ? root->status(path) : std::nullopt)
        icon = isBundle ? bundleIcon(path, *root) : desktopIcon(path, *status);
    if (!icon.isNull())
        return icon;
    return QIcon(isBundle ? QStringLiteral(":/images/application.svg") : QStringLiteral(":/images/tool.svg"));
}

} // namespace

QIcon Workspace::iconForFile(const std::string& path, const std::optional<platform::FileRoot>& root)
{
    auto known = m_icons.find({root, path});
    if (known == m_icons.end())
        known = m_icons.emplace(std::pair(root, path), findIcon(path, root)).first;
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

} // namespace quorvane::desktop
