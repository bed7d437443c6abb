#include "windows/StateImages.h"

#include <QPainter>
#include <QPixmap>

namespace quorvane {

namespace {

constexpr qreal stateImageOpacity = 0.8;

QIcon fadedIcon(const QString& file)
{
    QIcon faded;
    for (const qreal scale : {1.0, 2.0, 3.0}) {
        QPixmap image(QSize(stateImageSize, stateImageSize) * scale);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setOpacity(stateImageOpacity);
        painter.drawPixmap(QRect(0, 0, stateImageSize, stateImageSize),
            QIcon(file).pixmap(QSize(stateImageSize, stateImageSize), scale));
        painter.end();
        faded.addPixmap(image);
    }
    return faded;
}

} // namespace

const QIcon& systemRuleImage()
{
    static const QIcon image = fadedIcon(QStringLiteral(":/images/system.png"));
    return image;
}

const QIcon& recentRuleImage()
{
    static const QIcon image = fadedIcon(QStringLiteral(":/images/new.png"));
    return image;
}

} // namespace quorvane
