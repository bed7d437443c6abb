#include "windows/WindowLook.h"

#include "platform/Compositor.h"
#include "windows/Shades.h"

#include <QApplication>
#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QProxyStyle>
#include <QWidget>

// The images live in a static library: naming them makes the linker keep them. Must stand outside any
// namespace.
static void keepImages()
{
    Q_INIT_RESOURCE(images);
}

namespace quorvane {

namespace {

class WindowStyle : public QProxyStyle {
public:
    WindowStyle()
        : QProxyStyle(QStringLiteral("Fusion"))
    {
    }

    // Buttons bear the icons of the desktop's theme or none: the style's own go with no desktop.
    QIcon standardIcon(StandardPixmap image, const QStyleOption* option, const QWidget* widget) const override
    {
        const QIcon icon = QProxyStyle::standardIcon(image, option, widget);
        const bool isForButton = image >= SP_DialogOkButton && image <= SP_DialogNoButton;
        return isForButton && icon.name().isEmpty() ? QIcon() : icon;
    }
};

} // namespace

void applyWindowLook(QApplication& application)
{
    keepImages();
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita")); // for desktops without icons of their own
    QApplication::setStyle(new WindowStyle);
    QPalette look(shades::button, shades::window);
    look.setColor(QPalette::Base, shades::table);
    look.setColor(QPalette::AlternateBase, shades::band);
    for (const auto role :
        {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::ToolTipText})
        look.setColor(role, shades::text);
    look.setColor(QPalette::ToolTipBase, shades::table);
    look.setColor(QPalette::PlaceholderText, shades::faintText);
    look.setColor(QPalette::Highlight, shades::selection);
    look.setColor(QPalette::HighlightedText, shades::text);
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        look.setColor(QPalette::Disabled, role, shades::faintText);
    application.setPalette(look);
    application.setStyleSheet(QStringLiteral(
        "QHeaderView::section { background: %1; color: %2; border: 0; border-bottom: 1px solid %3;"
        " border-right: 1px solid %4; padding: 3px 8px; }"
        "QToolBar { background: %1; border: 0; border-bottom: 1px solid %3; padding: 5px;"
        " spacing: 6px; }"
        "QStatusBar { border-top: 1px solid %4; }")
                                  .arg(shades::window.name(), shades::faintText.name(), shades::line.name(),
                                      shades::faintLine.name()));
}

void bringToFront(QWidget& window)
{
    window.show();
    window.raise();
    window.activateWindow();
}

void applySheetLook(QWidget& window)
{
    const bool translucent = isDesktopComposited() && !window.testAttribute(Qt::WA_WState_Created);
    QColor sheet = shades::sheet;
    if (translucent) {
        window.setAttribute(Qt::WA_TranslucentBackground);
        window.setAttribute(
            Qt::WA_NoSystemBackground, false); // the colour of the sheet is painted all the same
        sheet.setAlphaF(0.94F); // less would let the texts behind disturb those on the sheet
    }
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, sheet);
    window.setPalette(palette);
}

} // namespace quorvane
