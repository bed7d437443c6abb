#include "windows/StateImages.h"

#include <QPainter>
#include <QPixmap>

namespace quorvane::windows {

namespace {

constexpr qreal stateImageOpacity = 0.8;
constexpr qreal placeholderOpacity = 0.3;
constexpr int placeholderSize = 16; // logical pixels

QIcon fadedIcon(const QString& file, int size, qreal opacity)
{
    QIcon faded;
    for (const qreal scale : {1.0, 2.0, 3.0}) {
        QPixmap image(QSize(size, size) * scale);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setOpacity(opacity);
        painter.drawPixmap(QRect(0, 0, size, size), QIcon(file).pixmap(QSize(size, size), scale));
        painter.end();
        faded.addPixmap(image);
    }
    return faded;
}

} // namespace

const QIcon& systemRuleImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/system.png"), stateImageSize, stateImageOpacity);
    return image;
}

const QIcon& recentRuleImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/new.png"), stateImageSize, stateImageOpacity);
    return image;
}

const QIcon& missingProgramImage()
{
    static const QIcon image
        = fadedIcon(QStringLiteral(":/images/tool.svg"), placeholderSize, placeholderOpacity);
    return image;
}

} // namespace quorvane::windows
