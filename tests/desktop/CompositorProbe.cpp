#include "desktop/Compositor.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <xcb/xcb.h>

namespace {

// Takes the selection that tells that the screen has a compositing manager.
void manage(xcb_connection_t* connection, const std::string& screen)
{
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const xcb_window_t manager = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, manager, root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const std::string name = "_NET_WM_CM_S" + screen;
    auto* atom = xcb_intern_atom_reply(connection,
        xcb_intern_atom(connection, false, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr);
    xcb_set_selection_owner(connection, manager, atom->atom, XCB_CURRENT_TIME);
    std::free(atom);
    std::free(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); // until it is done
}

} // namespace

// compositor-probe [SCREEN]: prints whether the desktop blends windows, "yes" or "no"; with a number while
// that screen of the display has a compositing manager.
int main(int argumentCount, char** arguments)
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (argumentCount == 2)
        manage(connection, arguments[1]);
    {
        const QApplication application(argumentCount, arguments);
        std::puts(quorvane::desktop::isDesktopComposited() ? "yes" : "no");
    }
    xcb_disconnect(connection);
    return 0;
}
