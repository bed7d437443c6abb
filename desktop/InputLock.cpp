#include "desktop/InputLock.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <QWindow>

namespace quorvane::desktop {

namespace {

constexpr const char* exemptProperty = "takesInputWhileLocked";

bool isInput(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

// The widget, or object belonging to one, that `target` acts for.
const QObject* ownerOf(const QObject* target)
{
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowHandle() == target)
            return window;
    }
    return target;
}

bool isExempt(const QObject* target)
{
    for (const QObject* owner = ownerOf(target); owner != nullptr; owner = owner->parent()) {
        if (owner->property(exemptProperty).toBool())
            return true;
    }
    return false;
}

} // namespace

InputLock::InputLock()
{
    QCoreApplication::instance()->installEventFilter(this);
}

void InputLock::exempt(QWidget& window)
{
    window.setProperty(exemptProperty, true);
}

bool InputLock::eventFilter(QObject* target, QEvent* event)
{
    if (!isInput(*event) || isExempt(target))
        return false;
    event->ignore(); // keeps a window from closing
    return true;
}

} // namespace quorvane::desktop
