#include "windows/StateImages.h"

#include <QPainter>
#include <QPixmap>

#include <initializer_list>

namespace quorvane::windows {

namespace {

constexpr qreal stateImageOpacity = 0.8;
constexpr qreal placeholderOpacity = 0.5; // in a dark look, too, it must be seen
constexpr std::initializer_list<int> placeholderSizes{16, 32}; // in tables and below: logical pixels

QPixmap fadedImage(const QIcon& icon, QSize size, qreal scale, qreal opacity)
{
    QPixmap image(size * scale);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setOpacity(opacity);
    painter.drawPixmap(QRect(QPoint(), size), icon.pixmap(size, scale));
    painter.end();
    return image;
}

QIcon fadedIcon(const QString& file, std::initializer_list<int> sizes, qreal opacity)
{
    QIcon faded;
    for (const int size : sizes) {
        for (const qreal scale : {1.0, 2.0, 3.0})
            faded.addPixmap(fadedImage(QIcon(file), QSize(size, size), scale, opacity));
    }
    return faded;
}

} // namespace

const QIcon& systemRuleImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/system.png"), {stateImageSize}, stateImageOpacity);
    return image;
}

const QIcon& recentRuleImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/new.png"), {stateImageSize}, stateImageOpacity);
    return image;
}

const QIcon& missingProgramImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/tool.svg"), placeholderSizes, placeholderOpacity);
    return image;
}

} // namespace quorvane::windows
