// Presses the hot key again and again and watches, on its own connection, how long after the
// press the panel is shown and first painted, or gone.
//   bench_hot_key_latency PANEL_WINDOW COUNT KEYCODE…
// The last of the key codes is the key, the others are the modifiers that are held. One line for
// each two presses, in milliseconds: panel shown, panel painted, whether that first picture was
// the final one (1) or not (0); panel gone after the second press.
#include "PanelWatch.h"

#include <cstdio>

namespace {

using Clock = PanelWatch::Clock;
using namespace std::chrono_literals;

class Bench
{
public:
    Bench(xcb_connection_t *connection, xcb_window_t panel, std::vector<uint8_t> keys)
        : m_watch(connection, panel)
        , m_keys(std::move(keys))
    {
    }

    /// False if the key did not bring the panel up and put it away again.
    bool showAndHide()
    {
        const auto &course = m_watch.course();
        const auto shown = press([&course] { return course.painted.has_value(); });
        if (!course.shown || !course.painted)
            return false;
        m_watch.watch(300ms);
        const bool complete = m_watch.picture() == course.picture;
        const double shownAt = PanelWatch::Milliseconds(*course.shown - shown).count();
        const double painted = PanelWatch::Milliseconds(*course.painted - shown).count();
        const auto hidden = press([&course] { return course.gone.has_value(); });
        if (!course.gone)
            return false;
        std::printf("%.3f %.3f %d %.3f\n", shownAt, painted, complete ? 1 : 0,
                    PanelWatch::Milliseconds(*course.gone - hidden).count());
        return true;
    }

private:
    /// The moment before the key went down.
    Clock::time_point press(const std::function<bool()> &enough)
    {
        for (size_t i = 0; i + 1 < m_keys.size(); ++i)
            m_watch.input(XCB_KEY_PRESS, m_keys[i]);
        m_watch.watch(30ms); // Somebody's fingers.
        m_watch.begin();
        const auto start = Clock::now();
        m_watch.input(XCB_KEY_PRESS, m_keys.back());
        m_watch.watch(2s, enough);
        for (const uint8_t key : m_keys)
            m_watch.input(XCB_KEY_RELEASE, key);
        m_watch.watch(100ms);
        return start;
    }

    PanelWatch m_watch;
    std::vector<uint8_t> m_keys;
};

}

int main(int argc, char **argv)
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (argc < 4 || xcb_connection_has_error(connection) != 0)
        return 2;
    std::vector<uint8_t> keys;
    for (int i = 3; i < argc; ++i)
        keys.push_back(static_cast<uint8_t>(std::atoi(argv[i])));
    Bench bench(connection, static_cast<xcb_window_t>(std::atol(argv[1])), std::move(keys));
    for (int count = std::atoi(argv[2]); count > 0; count -= 2) {
        if (!bench.showAndHide()) {
            std::fputs("The key did not bring the panel up, or did not put it away.\n", stderr);
            return 1;
        }
    }
    xcb_disconnect(connection);
}
