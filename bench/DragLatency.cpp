// Drags from a place again and again and watches, on its own connection, how long after the
// source's announcement the panel is mapped and first painted.
//   bench_drag_latency PANEL_WINDOW FROM_X FROM_Y TO_X TO_Y COUNT
// One line a drag, in milliseconds from the announcement: panel mapped, panel painted, painted by
// the X server's clock, and whether that first picture was the final one (1) or not (0).
#include "platform/linux/x11/Xcb.h"

#include <poll.h>
#include <xcb/damage.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

struct Point
{
    int x;
    int y;
};

/// What one drag brought about, in the order of the X server's notices.
struct Course
{
    std::optional<Clock::time_point> announced;
    std::optional<Clock::time_point> mapped;
    std::optional<Clock::time_point> painted;
    quint32 announcedTime = 0; // Of the X server, in milliseconds.
    quint32 paintedTime = 0;
    std::vector<uint8_t> picture; // What the first painting left in the panel.
    bool gone = false;
};

class Bench
{
public:
    Bench(xcb_connection_t *connection, xcb_window_t panel)
        : m_connection(connection)
        , m_atoms(connection)
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
        , m_panel(panel)
        , m_damage(xcb_generate_id(connection))
    {
        xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 5, 0).sequence);
        xcb_discard_reply(connection, xcb_damage_query_version(connection, 1, 1).sequence);
        m_fixesEvent = xcb_get_extension_data(connection, &xcb_xfixes_id)->first_event;
        m_damageEvent = xcb_get_extension_data(connection, &xcb_damage_id)->first_event;
        xcb_xfixes_select_selection_input(connection, m_root, m_atoms("XdndSelection"),
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
        const quint32 mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, panel, XCB_CW_EVENT_MASK, &mask);
        xcb_damage_create(connection, m_damage, panel, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        xcb_flush(connection);
    }

    /// False if the drag did not bring the panel up, or it did not go afterwards.
    bool drag(Point from, Point to)
    {
        m_course = {};
        move(from);
        watch(200ms);
        button(XCB_BUTTON_PRESS);
        watch(100ms);
        // A slow start of the way, until the panel is there; then the rest of it.
        Point at = from;
        for (int step = 0; step < 100 && !m_course.painted; ++step) {
            move(at = { at.x + 2, at.y + 1 });
            watch(10ms);
        }
        watch(200ms);
        const bool complete = m_course.painted && picture() == m_course.picture;
        for (int step = 1; step <= 20; ++step) {
            move({ at.x + (to.x - at.x) * step / 20, at.y + (to.y - at.y) * step / 20 });
            watch(5ms);
        }
        button(XCB_BUTTON_RELEASE);
        watch(3s, [this] { return m_course.gone; });
        if (!m_course.announced || !m_course.mapped || !m_course.painted || !m_course.gone)
            return false;
        std::printf("%.3f %.3f %u %d\n", since(*m_course.mapped), since(*m_course.painted),
                    m_course.paintedTime - m_course.announcedTime, complete ? 1 : 0);
        return true;
    }

private:
    void move(Point to)
    {
        xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root,
                            static_cast<int16_t>(to.x), static_cast<int16_t>(to.y), 0);
        xcb_flush(m_connection);
    }

    void button(uint8_t kind)
    {
        xcb_test_fake_input(m_connection, kind, 1, XCB_CURRENT_TIME, Xcb::none, 0, 0, 0);
        xcb_flush(m_connection);
    }

    /// Reads notices for that long, or until it is enough.
    void watch(
        Clock::duration time, const std::function<bool()> &enough = [] { return false; })
    {
        const auto end = Clock::now() + time;
        while (!enough()) {
            const auto left
                = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            if (left <= 0)
                return;
            pollfd wait { xcb_get_file_descriptor(m_connection), POLLIN, 0 };
            poll(&wait, 1, static_cast<int>(left));
            const auto now = Clock::now();
            while (const Xcb::Owned<xcb_generic_event_t> event { xcb_poll_for_event(m_connection) })
                note(*event, now);
        }
    }

    void note(const xcb_generic_event_t &event, Clock::time_point now)
    {
        const int type = event.response_type & 0x7f;
        if (type == m_fixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
            const auto &notify
                = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
            if (notify.owner != Xcb::none && !m_course.announced) {
                m_course.announced = now;
                m_course.announcedTime = notify.timestamp;
            }
        } else if (type == XCB_MAP_NOTIFY && !m_course.mapped) {
            m_course.mapped = now;
        } else if (type == XCB_UNMAP_NOTIFY && m_course.mapped) {
            m_course.gone = true;
        } else if (type == m_damageEvent + XCB_DAMAGE_NOTIFY) {
            const auto &notify = reinterpret_cast<const xcb_damage_notify_event_t &>(event);
            xcb_damage_subtract(m_connection, m_damage, Xcb::none, Xcb::none);
            xcb_flush(m_connection);
            if (m_course.mapped && !m_course.painted) {
                m_course.painted = now;
                m_course.paintedTime = notify.timestamp;
                m_course.picture = picture();
            }
        }
    }

    std::vector<uint8_t> picture()
    {
        const Xcb::Owned<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_panel), nullptr));
        if (!size)
            return {};
        const Xcb::Owned<xcb_get_image_reply_t> image(
            xcb_get_image_reply(m_connection,
                                xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_panel, 0,
                                              0, size->width, size->height, ~0u),
                                nullptr));
        if (!image)
            return {};
        const uint8_t *data = xcb_get_image_data(image.get());
        return { data, data + xcb_get_image_data_length(image.get()) };
    }

    [[nodiscard]] double since(Clock::time_point time) const
    {
        return Milliseconds(time - *m_course.announced).count();
    }

    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    xcb_window_t m_root;
    xcb_window_t m_panel;
    xcb_damage_damage_t m_damage;
    int m_fixesEvent = 0;
    int m_damageEvent = 0;
    Course m_course;
};

}

int main(int argc, char **argv)
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (argc != 7 || xcb_connection_has_error(connection) != 0)
        return 2;
    Bench bench(connection, static_cast<xcb_window_t>(std::atol(argv[1])));
    const Point from { std::atoi(argv[2]), std::atoi(argv[3]) };
    const Point to { std::atoi(argv[4]), std::atoi(argv[5]) };
    for (int count = std::atoi(argv[6]); count > 0; --count) {
        if (!bench.drag(from, to)) {
            std::fputs("A drag did not bring the panel up, or it stayed.\n", stderr);
            return 1;
        }
    }
    xcb_disconnect(connection);
}
