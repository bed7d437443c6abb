#include "desktop/Compositor.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string>

#include <xcb/xcb.h>

namespace quorvane::desktop {

namespace {

template <class Reply> std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply)
{
    return {reply, &std::free};
}

// A compositing manager of X11 owns a selection that is named after its screen.
bool hasCompositingManager(xcb_connection_t* connection)
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    const std::string name = "_NET_WM_CM_S" + std::to_string(screen);
    const auto atom = owned(xcb_intern_atom_reply(connection,
        xcb_intern_atom(connection, false, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
    if (!atom)
        return false;
    const auto owner = owned(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

} // namespace

bool isDesktopComposited()
{
    // Platforms without a display offer the interface too, but no connection.
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 != nullptr && x11->connection() != nullptr)
        return hasCompositingManager(x11->connection());
    return QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

} // namespace quorvane::desktop
