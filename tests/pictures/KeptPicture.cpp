#include "tests/pictures/KeptPicture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace quorvane::test {

namespace {

constexpr int mostOfChannel = 4; // of 255
constexpr int gap = 8; // dots between pictures
constexpr QRgb gapColor = 0xff808080;

bool isRenewing = false;

QString fileIn(const char* folder, const std::string& name)
{
    return QString::fromLocal8Bit(folder) + QLatin1Char('/') + QString::fromStdString(name)
        + QStringLiteral(".png");
}

QString keptFile(const std::string& name)
{
    return fileIn(QUORVANE_PICTURES_FOLDER "/kept", name);
}

bool areAlike(QRgb one, QRgb other)
{
    const auto distance
        = [one, other](int (*channel)(QRgb)) { return std::abs(channel(one) - channel(other)); };
    return std::max({distance(qRed), distance(qGreen), distance(qBlue)}) <= mostOfChannel;
}

// The pictures next to each other, from the left.
QImage sideBySide(const std::vector<QImage>& pictures)
{
    QSize size(-gap, 0);
    for (const QImage& each : pictures)
        size = {size.width() + gap + each.width(), std::max(size.height(), each.height())};
    QImage all(size, QImage::Format_RGB32);
    all.fill(gapColor);
    QPainter painter(&all);
    int left = 0;
    for (const QImage& each : pictures) {
        painter.drawImage(left, 0, each);
        left += each.width() + gap;
    }
    return all;
}

QImage loaded(const QString& file)
{
    return QImage(file).convertToFormat(QImage::Format_RGB32);
}

// The button that clears a field fades in and out.
bool isAtRest(const QLineEdit* field)
{
    const double inTheEnd = field->text().isEmpty() ? 0 : 1;
    return !field->isClearButtonEnabled()
        || field->findChild<QToolButton*>()->property("opacity").toDouble() == inTheEnd;
}

QImage painted(QWidget& widget)
{
    const qreal scale = widget.devicePixelRatioF();
    QImage picture((QSizeF(widget.size()) * scale).toSize(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(scale);
    picture.fill(gapColor);
    widget.render(&picture);
    picture.setDevicePixelRatio(1);
    return picture;
}

bool saveSmall(const QImage& picture, const QString& file)
{
    constexpr int smallest = 0; // of what Qt calls quality: nothing is lost, whatever it is
    return QDir().mkpath(QFileInfo(file).path()) && picture.save(file, "PNG", smallest);
}

} // namespace

void useTwoDots(QWidget& window)
{
    window.move(QGuiApplication::screens().last()->geometry().topLeft());
    QCoreApplication::processEvents();
}

QImage pictureOf(QWidget& widget)
{
    const auto fields = widget.findChildren<QLineEdit*>();
    EXPECT_TRUE(QTest::qWaitFor([&fields] { return std::all_of(fields.begin(), fields.end(), isAtRest); }));
    // One layout can ask for another.
    constexpr int mostRounds = 100;
    constexpr int quietRounds = 5;
    QImage picture;
    int quiet = 0;
    for (int round = 0; round < mostRounds && quiet < quietRounds; ++round) {
        QCoreApplication::processEvents();
        const QImage before = std::exchange(picture, painted(widget));
        quiet = picture == before ? quiet + 1 : 0;
    }
    EXPECT_EQ(quiet, quietRounds) << "it does not come to rest";
    return picture;
}

QImage stacked(const std::vector<QImage>& pictures)
{
    QSize size(0, -gap);
    for (const QImage& each : pictures)
        size = {std::max(size.width(), each.width()), size.height() + gap + each.height()};
    QImage all(size, QImage::Format_RGB32);
    all.fill(gapColor);
    QPainter painter(&all);
    int top = 0;
    for (const QImage& each : pictures) {
        painter.drawImage(0, top, each);
        top += each.height() + gap;
    }
    return all;
}

std::optional<QImage> differenceOf(const QImage& kept, const QImage& seen)
{
    constexpr QRgb differs = 0xffff0000;
    QImage difference(seen.size(), QImage::Format_RGB32);
    difference.fill(differs);
    if (kept.size() != seen.size())
        return difference;
    bool isDifferent = false;
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < seen.width(); ++x) {
            if (areAlike(kept.pixel(x, y), seen.pixel(x, y)))
                difference.setPixel(x, y, QColor(kept.pixel(x, y)).lighter(130).rgb());
            else
                isDifferent = true;
        }
    }
    return isDifferent ? std::optional(difference) : std::nullopt;
}

testing::AssertionResult looksAsKept(const std::string& name, const QImage& seen)
{
    if (isRenewing)
        return saveSmall(seen, keptFile(name)) ? testing::AssertionSuccess()
                                               : testing::AssertionFailure() << "cannot be kept";
    const QImage kept = loaded(keptFile(name));
    const QString file = fileIn(QUORVANE_DIFFERENCES_FOLDER, name);
    QFile::remove(file); // of an earlier run
    const auto difference = differenceOf(kept, seen);
    if (!difference)
        return testing::AssertionSuccess();
    saveSmall(sideBySide({kept, seen, *difference}), file);
    return testing::AssertionFailure()
        << "kept, seen and difference: " << file.toStdString() << "\nwhen it is meant: tools/renew_pictures";
}

void renewPictures()
{
    isRenewing = true;
}

bool areRenewed()
{
    return isRenewing;
}

} // namespace quorvane::test
