#include "windows/WindowLook.h"

#include "desktop/Compositor.h"
#include "windows/Shades.h"

#include <QApplication>
#include <QColor>
#include <QEvent>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolTip>
#include <QWidget>

// The images live in a static library: naming them makes the linker keep them. Must stand outside any
// namespace.
static void keepImages()
{
    Q_INIT_RESOURCE(images);
}

namespace quorvane::windows {

namespace {

constexpr platform::Appearance lightLook{};

class WindowStyle : public QProxyStyle {
public:
    WindowStyle()
        : QProxyStyle(QStringLiteral("Fusion"))
    {
    }

    // Buttons have icons of the desktop's theme or none: the style's own do not match any desktop.
    QIcon standardIcon(StandardPixmap image, const QStyleOption* option, const QWidget* widget) const override
    {
        const QIcon icon = QProxyStyle::standardIcon(image, option, widget);
        const bool isForButton = image >= SP_DialogOkButton && image <= SP_DialogNoButton;
        return isForButton && icon.name().isEmpty() ? QIcon() : icon;
    }

    // The style's outlines are slightly darker than the window, which is invisible on black.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool isOutlined = element == PE_FrameLineEdit || element == PE_PanelButtonCommand
            || element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
        if (!isOutlined || !Shade::presentLook().hasHighContrast)
            return;
        painter->save();
        painter->setPen(option->palette.color(QPalette::WindowText));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }

    // Disables animations.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* answer) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0
                                                    : QProxyStyle::styleHint(hint, option, widget, answer);
    }
};

// Keeps one colour of a widget in a shade, across changes of the look. Lives as long as the widget.
class ShadedRole : public QObject {
public:
    ShadedRole(QWidget& widget, QPalette::ColorRole role, const Shade& shade)
        : QObject(&widget)
        , m_widget(widget)
        , m_role(role)
        , m_shade(shade)
    {
        widget.installEventFilter(this);
        apply();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange)
            apply();
        return QObject::eventFilter(watched, event);
    }

private:
    void apply()
    {
        if (m_widget.palette().color(m_role) == m_shade)
            return;
        QPalette palette; // sets only this colour: the others keep following the application's palette
        palette.setColor(m_role, m_shade);
        m_widget.setPalette(palette);
    }

    QWidget& m_widget;
    const QPalette::ColorRole m_role;
    const Shade& m_shade;
};

QPalette paletteIn(platform::Appearance look)
{
    QPalette palette(shades::button.in(look), shades::window.in(look));
    palette.setColor(QPalette::Base, shades::table.in(look));
    palette.setColor(QPalette::AlternateBase, shades::band.in(look));
    for (const auto role :
        {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, shades::text.in(look));
    palette.setColor(QPalette::ToolTipBase, shades::table.in(look));
    palette.setColor(QPalette::PlaceholderText, shades::faintText.in(look));
    palette.setColor(QPalette::Highlight, shades::selection.in(look));
    palette.setColor(QPalette::HighlightedText, shades::text.in(look));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, shades::faintText.in(look));
    return palette;
}

} // namespace

void applyWindowLook(QApplication& application)
{
    keepImages();
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita")); // for desktops without an icon theme
    QApplication::setStyle(new WindowStyle);
    // Otherwise the contents of a sheet would use the application's palette instead of the sheet's.
    QCoreApplication::setAttribute(Qt::AA_UseStyleSheetPropagationInWidgetStyles);
    setAppearance(application, {});
}

void setAppearance(QApplication& application, platform::Appearance look)
{
    Shade::setPresentLook(look);
    application.setPalette(paletteIn(look));
    QToolTip::setPalette(paletteIn(look));
    application.setStyleSheet(QStringLiteral(
        "QHeaderView::section { background: %1; color: %2; border: 0; border-bottom: 1px solid %3;"
        " border-right: 1px solid %4; padding: 3px 8px; }"
        "QToolBar { background: %1; border: 0; border-bottom: 1px solid %3; padding: 5px;"
        " spacing: 6px; }"
        "QStatusBar { border-top: 1px solid %4; }")
                                  .arg(shades::window.in(look).name(), shades::faintText.in(look).name(),
                                      shades::line.in(look).name(), shades::faintLine.in(look).name()));
}

void setTextShade(QWidget& widget, const Shade& shade)
{
    new ShadedRole(widget, QPalette::WindowText, shade);
}

void setBackgroundShade(QWidget& widget, const Shade& shade)
{
    new ShadedRole(widget, QPalette::Window, shade);
}

void measureWithMnemonic(QLabel& label)
{
    QFont font = label.font();
    font.setKerning(false);
    label.setFont(font);
}

void bringToFront(QWidget& window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

void applySheetLook(QWidget& window)
{
    const bool translucent = desktop::isDesktopComposited() && !window.testAttribute(Qt::WA_WState_Created);
    QColor sheet = shades::sheet.in(lightLook);
    if (translucent) {
        window.setAttribute(Qt::WA_TranslucentBackground);
        window.setAttribute(Qt::WA_NoSystemBackground, false); // the colour of the sheet is still painted
        sheet.setAlphaF(0.94F); // with less, texts behind the sheet would impair those on it
    }
    QPalette palette = paletteIn(lightLook);
    palette.setColor(QPalette::Window, sheet);
    window.setPalette(palette);
}

} // namespace quorvane::windows
