#include "platform/linux/x11/X11Root.h"

#include "platform/linux/x11/Xcb.h"

xcb_window_t X11Root::of(xcb_connection_t *connection, xcb_window_t window)
{
    const Xcb::Owned<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    return reply ? reply->root : xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_window_t X11Root::ofScreen(xcb_connection_t *connection, int number)
{
    auto roots = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && roots.rem > 1; --number)
        xcb_screen_next(&roots);
    return roots.data->root;
}

int X11Root::screenNumber(xcb_connection_t *connection, xcb_window_t root)
{
    int number = 0;
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem > 0;
         xcb_screen_next(&it), ++number) {
        if (it.data->root == root)
            return number;
    }
    return 0;
}

void X11Root::send(xcb_connection_t *connection, xcb_window_t root, xcb_window_t about,
                   xcb_atom_t type, std::initializer_list<uint32_t> data)
{
    const auto message = Xcb::clientMessage(about, type, data);
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
}
