#include "platform/Workspace.h"
#include "tests/support/TemporaryFolder.h"

#include <QImage>
#include <QImageWriter>

#include <gtest/gtest.h>

namespace quorvane {

namespace {

QRgb middleOf(const QIcon& icon)
{
    const QImage image = icon.pixmap(16, 16).toImage();
    return image.pixel(image.width() / 2, image.height() / 2);
}

// A bundle whose icon file is all of one colour.
std::string bundleWithIcon(const TemporaryFolder& folder, const std::string& listedName)
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

} // namespace

TEST(Workspace, ShowsABundlesOwnIconWhateverWayItsNameIsListed)
{
    for (const char* listed : {"paint", "paint.icns"}) {
        const TemporaryFolder folder;
        const std::string bundle = bundleWithIcon(folder, listed);
        EXPECT_EQ(middleOf(Workspace().iconForFile(bundle)), QColor(Qt::magenta).rgb()) << listed;
    }
}

TEST(Workspace, AnIconNameMustStayInsideTheBundle)
{
    const TemporaryFolder folder;
    const std::string bundle = bundleWithIcon(folder, "../../../outside");
    QImage image(128, 128, QImage::Format_ARGB32);
    image.fill(Qt::green);
    QImageWriter(QString::fromStdString(folder.path("outside.icns")), "icns").write(image);
    EXPECT_NE(middleOf(Workspace().iconForFile(bundle)), QColor(Qt::green).rgb());
}

TEST(Workspace, HasAnIconForEverything)
{
    const TemporaryFolder folder;
    folder.write("Broken.app/Contents/Info.plist", "no property list");
    folder.write("Bare.app/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIconFile</key><string>x</string></dict></plist>");
    folder.write("Bare.app/Contents/Resources/x.icns", "no image");
    Workspace workspace;
    for (const std::string& path :
        {folder.path("Broken.app"), folder.path("Bare.app"), folder.path("Gone.app"),
            std::string("/usr/bin/gone"), std::string("/etc/passwd"), std::string("any"), std::string()})
        EXPECT_FALSE(workspace.iconForFile(path).pixmap(16, 16).isNull()) << path;
}

} // namespace quorvane
