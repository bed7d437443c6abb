#include "windows/WindowLook.h"

#include "platform/Compositor.h"

#include <QApplication>
#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QStyleFactory>
#include <QWidget>

// The images live in a static library: naming them makes the linker keep them. Must stand outside any
// namespace.
static void keepImages()
{
    Q_INIT_RESOURCE(images);
}

namespace quorvane {

void applyWindowLook(QApplication& application)
{
    keepImages();
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita")); // for desktops without icons of their own
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QColor text(0x20, 0x20, 0x24);
    const QColor grey(0x8a, 0x8a, 0x90);
    QPalette look(QColor(0xf2, 0xf2, 0xf4), QColor(0xf7, 0xf7, 0xf8));
    look.setColor(QPalette::Base, Qt::white);
    look.setColor(QPalette::AlternateBase, QColor(0xf5, 0xf5, 0xf5));
    for (const auto role :
        {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::ToolTipText})
        look.setColor(role, text);
    look.setColor(QPalette::ToolTipBase, Qt::white);
    look.setColor(QPalette::PlaceholderText, grey);
    look.setColor(QPalette::Highlight, QColor(0xcf, 0xe1, 0xf7));
    look.setColor(QPalette::HighlightedText, text);
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        look.setColor(QPalette::Disabled, role, grey);
    application.setPalette(look);
    application.setStyleSheet(QStringLiteral("QHeaderView::section { background: #f7f7f8; color: #5c5c64; "
                                             "border: 0; border-bottom: 1px solid #d8d8dc;"
                                             " border-right: 1px solid #e6e6ea; padding: 3px 8px; }"
                                             "QToolBar { background: #f7f7f8; border: 0; border-bottom: 1px "
                                             "solid #d8d8dc; padding: 5px; spacing: 6px; }"
                                             "QStatusBar { border-top: 1px solid #e6e6ea; }"));
}

void applySheetLook(QWidget& window)
{
    const bool translucent = isDesktopComposited() && !window.testAttribute(Qt::WA_WState_Created);
    QColor sheet(0xf6, 0xf6, 0xf8);
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
