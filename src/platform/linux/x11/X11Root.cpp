#include "platform/linux/x11/X11Root.h"

#include "platform/linux/x11/Xcb.h"

#include <cstdlib>
#include <vector>

xcb_window_t X11Root::ofToolkit(xcb_connection_t *connection)
{
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    return ofScreen(connection, screen);
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

xcb_window_t X11Root::lock(xcb_connection_t *connection, xcb_window_t root)
{
    constexpr size_t mostLooked = 16; // From the top; a lock keeps itself there.
    const auto sizeAsked = xcb_get_geometry(connection, root);
    const auto treeAsked = xcb_query_tree(connection, root);
    Xcb::Atoms atoms(connection);
    const xcb_window_t manager
        = Xcb::property32(connection, root, atoms("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 1)
              .value(0);
    const auto size = Xcb::owned(xcb_get_geometry_reply(connection, sizeAsked, nullptr));
    const auto tree = Xcb::owned(xcb_query_tree_reply(connection, treeAsked, nullptr));
    if (!size || !tree)
        return Xcb::none;
    const uint32_t mask = ~xcb_get_setup(connection)->resource_id_mask;
    struct Asked
    {
        xcb_window_t window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
    };
    std::vector<Asked> asked;
    const xcb_window_t *windows = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()); i > 0 && asked.size() < mostLooked;) {
        const xcb_window_t window = windows[--i];
        if (!Xcb::isOwn(connection, window) && (window & mask) != (manager & mask))
            asked.push_back({ window, xcb_get_window_attributes(connection, window),
                              xcb_get_geometry(connection, window) });
    }
    xcb_window_t found = Xcb::none;
    for (const Asked &each : asked) {
        const auto attributes
            = Xcb::owned(xcb_get_window_attributes_reply(connection, each.attributes, nullptr));
        const auto geometry
            = Xcb::owned(xcb_get_geometry_reply(connection, each.geometry, nullptr));
        // The lowest of several, for a lock may have one on top of another.
        if (attributes && geometry && attributes->override_redirect != 0
            && attributes->map_state == XCB_MAP_STATE_VIEWABLE
            && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT && geometry->x <= 0
            && geometry->y <= 0 && geometry->x + geometry->width >= size->width
            && geometry->y + geometry->height >= size->height)
            found = each.window;
    }
    return found;
}

void X11Root::send(xcb_connection_t *connection, xcb_window_t root, xcb_window_t about,
                   xcb_atom_t type, std::initializer_list<uint32_t> data)
{
    Xcb::sendMessage(connection, root, type, data, about,
                     XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
}
