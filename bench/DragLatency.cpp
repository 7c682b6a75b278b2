// Drags from a place again and again and watches, on its own connection, how long after the
// source's announcement the panel is shown and first painted.
//   bench_drag_latency PANEL_WINDOW FROM_X FROM_Y TO_X TO_Y COUNT
// One line a drag, in milliseconds from the announcement: panel shown, panel painted, painted by
// the X server's clock, and whether that first picture was the final one (1) or not (0).
#include "PanelWatch.h"

#include <cstdio>

namespace {

using Clock = PanelWatch::Clock;
using namespace std::chrono_literals;

struct Point
{
    int x;
    int y;
};

class Bench
{
public:
    Bench(xcb_connection_t *connection, xcb_window_t panel)
        : m_watch(connection, panel)
        , m_fixesEvent(xcb_get_extension_data(connection, &xcb_xfixes_id)->first_event)
    {
        Xcb::Atoms atoms(connection);
        xcb_xfixes_select_selection_input(connection, m_watch.root(), atoms("XdndSelection"),
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
        m_watch.onEvent = [this](const auto &event, auto now) { note(event, now); };
        xcb_flush(connection);
    }

    /// False if the drag did not bring the panel up, or it did not go afterwards.
    bool drag(Point from, Point to)
    {
        const auto &course = m_watch.course();
        m_watch.begin();
        m_announced.reset();
        move(from);
        m_watch.watch(200ms);
        m_watch.input(XCB_BUTTON_PRESS, 1);
        m_watch.watch(100ms);
        // A slow start of the way, until the panel is there; then the rest of it.
        Point at = from;
        for (int step = 0; step < 100 && !course.painted; ++step) {
            move(at = { at.x + 2, at.y + 1 });
            m_watch.watch(10ms);
        }
        m_watch.watch(200ms);
        const bool complete = course.painted && m_watch.picture() == course.picture;
        for (int step = 1; step <= 20; ++step) {
            move({ at.x + (to.x - at.x) * step / 20, at.y + (to.y - at.y) * step / 20 });
            m_watch.watch(5ms);
        }
        m_watch.input(XCB_BUTTON_RELEASE, 1);
        m_watch.watch(3s, [&course] { return course.gone.has_value(); });
        if (!m_announced || !course.shown || !course.painted || !course.gone)
            return false;
        std::printf("%.3f %.3f %u %d\n", since(*course.shown), since(*course.painted),
                    course.paintedTime - m_announcedTime, complete ? 1 : 0);
        return true;
    }

private:
    void move(Point to) { m_watch.input(XCB_MOTION_NOTIFY, 0, to.x, to.y); }

    void note(const xcb_generic_event_t &event, Clock::time_point now)
    {
        if ((event.response_type & 0x7f) != m_fixesEvent + XCB_XFIXES_SELECTION_NOTIFY)
            return;
        const auto &notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (notify.owner != Xcb::none && !m_announced) {
            m_announced = now;
            m_announcedTime = notify.timestamp;
        }
    }

    [[nodiscard]] double since(Clock::time_point time) const
    {
        return PanelWatch::Milliseconds(time - *m_announced).count();
    }

    PanelWatch m_watch;
    int m_fixesEvent;
    std::optional<Clock::time_point> m_announced;
    quint32 m_announcedTime = 0; // Of the X server, in milliseconds.
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
