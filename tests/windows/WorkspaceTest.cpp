#include "desktop/Workspace.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/windows/FileOpener.h"

#include <QBuffer>
#include <QDataStream>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

#include <sys/stat.h>

namespace quorvane::windows {

namespace {

QRgb middleOf(const QIcon& icon)
{
    const QImage image = icon.pixmap(16, 16).toImage();
    return image.pixel(image.width() / 2, image.height() / 2);
}

// A bundle whose icon file is all of one colour.
std::string bundleWithIcon(const test::TemporaryFolder& folder, const std::string& listedName)
{
    folder.write("Paint.app/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIconFile</key><string>" + listedName
            + "</string></dict></plist>");
    std::filesystem::create_directories(folder.path("Paint.app/Contents/Resources"));
    QImage image(128, 128, QImage::Format_ARGB32);
    image.fill(Qt::magenta);
    QImageWriter writer(
        QString::fromStdString(folder.path("Paint.app/Contents/Resources/paint.icns")), "icns");
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return folder.path("Paint.app");
}

// A bundle whose icon file holds these images, each under its four-letter type.
std::string bundleWithImages(
    const test::TemporaryFolder& folder, const QList<std::pair<QByteArray, QByteArray>>& images)
{
    QByteArray body;
    QDataStream out(&body, QIODevice::WriteOnly); // big-endian, as the format is
    for (const auto& [type, data] : images) {
        out.writeRawData(type.constData(), 4);
        out << static_cast<quint32>(data.size() + 8);
        out.writeRawData(data.constData(), static_cast<int>(data.size()));
    }
    QByteArray file;
    QDataStream(&file, QIODevice::WriteOnly) << quint32(0x69636e73) << static_cast<quint32>(body.size() + 8);
    folder.write("Paint.app/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIconFile</key><string>paint</string></dict></plist>");
    folder.write("Paint.app/Contents/Resources/paint.icns", (file + body).toStdString());
    return folder.path("Paint.app");
}

QByteArray png(QColor color, int size)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

// A theme of the desktop's, in force while it exists: icons of one colour each.
class IconTheme {
public:
    explicit IconTheme(std::initializer_list<std::pair<const char*, QColor>> icons)
    {
        m_folder.write(
            "theme/index.theme", "[Icon Theme]\nName=theme\nDirectories=16\n\n[16]\nSize=16\nType=Fixed\n");
        for (const auto& [name, color] : icons)
            m_folder.write(std::string("theme/16/") + name + ".png", png(color, 16).toStdString());
        QIcon::setThemeSearchPaths({QString::fromStdString(m_folder.path())});
        QIcon::setThemeName(QStringLiteral("theme"));
    }
    ~IconTheme()
    {
        QIcon::setThemeName(m_nameBefore);
        QIcon::setThemeSearchPaths(m_pathsBefore);
    }
    IconTheme(const IconTheme&) = delete;
    IconTheme& operator=(const IconTheme&) = delete;

private:
    const test::TemporaryFolder m_folder;
    const QString m_nameBefore = QIcon::themeName();
    const QStringList m_pathsBefore = QIcon::themeSearchPaths();
};

// The beginning of a JPEG 2000 image.
const QByteArray jpeg2000 = QByteArray::fromHex("0000000c6a5020200d0a870a00000014667479706a703220");

} // namespace

TEST(Workspace, ShowsABundlesOwnIconWhateverWayItsNameIsListed)
{
    for (const char* listed : {"paint", "paint.icns"}) {
        const test::TemporaryFolder folder;
        const std::string bundle = bundleWithIcon(folder, listed);
        EXPECT_EQ(middleOf(desktop::Workspace().iconForFile(bundle)), QColor(Qt::magenta).rgb()) << listed;
    }
}

TEST(Workspace, TakesTheSmallestImageThatIsLargeEnough)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithImages(folder,
        {{"ic10", png(Qt::red, 1024)}, {"ic08", png(Qt::magenta, 256)}, {"ic07", png(Qt::green, 128)}});
    const QIcon icon = desktop::Workspace().iconForFile(bundle);
    EXPECT_EQ(middleOf(icon), QColor(Qt::green).rgb());
    EXPECT_EQ(icon.pixmap(200, 200).toImage().pixel(9, 9), QColor(Qt::magenta).rgb());
    EXPECT_EQ(icon.actualSize(QSize(1000, 1000)), QSize(256, 256)) << "larger ones are not kept";
}

TEST(Workspace, TakesALargeImageWhenThereIsNoOther)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithImages(
        folder, {{"ic08", jpeg2000}, {"ic07", jpeg2000}, {"ic10", png(Qt::magenta, 1024)}});
    const QIcon icon = desktop::Workspace().iconForFile(bundle);
    EXPECT_EQ(icon.pixmap(96, 96).toImage().pixel(48, 48), QColor(Qt::magenta).rgb());
    EXPECT_EQ(icon.actualSize(QSize(1000, 1000)), QSize(256, 256));
}

TEST(Workspace, ShowsTheGenericIconForADamagedOne)
{
    const qint64 generic
        = desktop::Workspace().iconForFile("/gone/Paint.app").pixmap(96, 96).toImage().pixel(48, 48);
    const QByteArray whole = png(Qt::magenta, 128);
    for (const QByteArray& damaged :
        {QByteArray(), whole.first(40), QByteArray(whole.size(), 'x'), jpeg2000}) {
        const test::TemporaryFolder folder;
        const QIcon icon = desktop::Workspace().iconForFile(bundleWithImages(folder, {{"ic07", damaged}}));
        EXPECT_EQ(icon.pixmap(96, 96).toImage().pixel(48, 48), generic);
    }
}

TEST(Workspace, AnIconNameMustStayInsideTheBundle)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithIcon(folder, "../../../outside");
    QImage image(128, 128, QImage::Format_ARGB32);
    image.fill(Qt::green);
    QImageWriter(QString::fromStdString(folder.path("outside.icns")), "icns").write(image);
    EXPECT_NE(middleOf(desktop::Workspace().iconForFile(bundle)), QColor(Qt::green).rgb());
}

TEST(Workspace, LooksBelowTheRootThatItIsGiven)
{
    // given a bundle on a volume, whose Info.plist is a link as that machine has it, and another here
    const test::TemporaryFolder volume;
    const std::string bundle = bundleWithIcon(volume, "paint");
    std::filesystem::create_directories(volume.path("Library"));
    std::filesystem::rename(bundle + "/Contents/Info.plist", volume.path("Library/Info.plist"));
    std::filesystem::create_symlink("/Library/Info.plist", bundle + "/Contents/Info.plist");
    std::error_code error;
    const auto root = platform::FileRoot::at(volume.path(), error);
    desktop::Workspace workspace;

    // then its icon is found there alone, whatever was asked before
    const QRgb generic = middleOf(workspace.iconForFile("/Paint.app"));
    EXPECT_EQ(middleOf(workspace.iconForFile("/Paint.app", root)), QColor(Qt::magenta).rgb());
    EXPECT_EQ(middleOf(workspace.iconForFile("/Paint.app")), generic);
    EXPECT_EQ(middleOf(workspace.iconForFile("/Paint.app", std::nullopt)), generic);
    EXPECT_EQ(middleOf(workspace.iconForFile(bundle, std::nullopt)), generic);
}

TEST(Workspace, WaitsForNoPipe)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithIcon(folder, "pipe");
    ASSERT_EQ(mkfifo((bundle + "/Contents/Resources/pipe.icns").c_str(), 0600), 0);
    EXPECT_FALSE(desktop::Workspace().iconForFile(bundle).isNull());
}

TEST(Workspace, HasAnIconForEverything)
{
    const test::TemporaryFolder folder;
    folder.write("Broken.app/Contents/Info.plist", "no property list");
    folder.write("Bare.app/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIconFile</key><string>x</string></dict></plist>");
    folder.write("Bare.app/Contents/Resources/x.icns", "no image");
    desktop::Workspace workspace;
    for (const std::string& path :
        {folder.path("Broken.app"), folder.path("Bare.app"), folder.path("Gone.app"),
            std::string("/usr/bin/gone"), std::string("/etc/passwd"), std::string("any"), std::string()})
        EXPECT_FALSE(workspace.iconForFile(path).pixmap(16, 16).isNull()) << path;
}

TEST(Workspace, ShowsAFileAsTheDesktopDoes)
{
    const IconTheme theme({{"text-css", Qt::red}, {"text-x-generic", Qt::green},
        {"inode-directory", Qt::blue}, {"application-x-executable", Qt::magenta}});
    const test::TemporaryFolder folder;
    folder.write("style.css", "");
    folder.write("notes.txt", "");
    std::filesystem::create_directory(folder.path("folder.css"));
    desktop::Workspace workspace;
    const auto color
        = [&](const char* name) { return QColor(middleOf(workspace.iconForFile(folder.path(name)))); };
    EXPECT_EQ(color("style.css"), QColor(Qt::red)) << "that of its type";
    EXPECT_EQ(color("notes.txt"), QColor(Qt::green)) << "that of all such types, where its type has none";
    EXPECT_EQ(color("folder.css"), QColor(Qt::blue));
    for (const auto whose : {std::filesystem::perms::owner_exec, std::filesystem::perms::group_exec,
             std::filesystem::perms::others_exec}) {
        const std::string name = "tool-" + std::to_string(static_cast<int>(whose)) + ".txt";
        folder.write(name, "");
        std::filesystem::permissions(folder.path(name), whose, std::filesystem::perm_options::add);
        EXPECT_EQ(color(name.c_str()), QColor(Qt::magenta)) << "a program, whatever its name";
    }
}

TEST(Workspace, KeepsAnIconThatItHasShown)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithIcon(folder, "paint");
    desktop::Workspace workspace;
    workspace.iconForFile(bundle);
    std::filesystem::remove_all(bundle);
    EXPECT_EQ(middleOf(workspace.iconForFile(bundle)), QColor(Qt::magenta).rgb());
}

TEST(Workspace, TakesNoPictureThatWouldFillTheMemory)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithImages(folder, {{"ic10", png(Qt::magenta, 2100)}}); // above 16 MiB
    const int before = QImageReader::allocationLimit();
    EXPECT_NE(middleOf(desktop::Workspace().iconForFile(bundle)), QColor(Qt::magenta).rgb());
    EXPECT_EQ(QImageReader::allocationLimit(), before) << "the limit is that of one image alone";
}

TEST(Workspace, TakesALargePictureThatFits)
{
    const test::TemporaryFolder folder;
    const std::string bundle = bundleWithImages(folder, {{"ic10", png(Qt::magenta, 2000)}}); // above 15 MiB
    EXPECT_EQ(middleOf(desktop::Workspace().iconForFile(bundle)), QColor(Qt::magenta).rgb());
}

TEST(Workspace, LooksAtThirtyTwoPicturesAtMost)
{
    for (const int before : {31, 32}) {
        const test::TemporaryFolder folder;
        QList<std::pair<QByteArray, QByteArray>> images(before, {"ic08", jpeg2000});
        images.append({"ic07", png(Qt::magenta, 128)});
        const QIcon icon = desktop::Workspace().iconForFile(bundleWithImages(folder, images));
        EXPECT_EQ(middleOf(icon) == QColor(Qt::magenta).rgb(), before < 32) << before;
    }
}

TEST(Workspace, OpensFilesThatAreThere)
{
    const test::FileOpener desktop;
    const test::TemporaryFolder folder;
    const std::string file = folder.write("guide 1#.pdf", "");
    desktop::Workspace workspace;
    EXPECT_TRUE(workspace.openFile(file));
    EXPECT_FALSE(workspace.openFile(folder.path("gone.pdf")));
    EXPECT_EQ(desktop.opened, QList{QUrl::fromLocalFile(QString::fromStdString(file))});
}

} // namespace quorvane::windows
