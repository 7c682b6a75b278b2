// Moves the pointer at a steady rate along an ellipse within a rectangle.
//   bench_pointer_motion SECONDS A_SECOND X Y WIDTH HEIGHT
// Prints the movements a second that the X server took.
#include "platform/linux/x11/Xcb.h"

#include <xcb/xtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <thread>

int main(int argc, char **argv)
{
    using Clock = std::chrono::steady_clock;
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (argc != 7 || xcb_connection_has_error(connection) != 0)
        return 2;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const double rate = std::atof(argv[2]);
    const int count = static_cast<int>(std::atof(argv[1]) * rate);
    const double radiusX = std::atof(argv[5]) / 2;
    const double radiusY = std::atof(argv[6]) / 2;
    const double centreX = std::atof(argv[3]) + radiusX;
    const double centreY = std::atof(argv[4]) + radiusY;

    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * std::numbers::pi * i / rate; // Once around in a second.
        xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root,
                            static_cast<int16_t>(centreX + radiusX * std::cos(angle)),
                            static_cast<int16_t>(centreY + radiusY * std::sin(angle)), 0);
        xcb_flush(connection);
        std::this_thread::sleep_until(start + (i + 1) * std::chrono::duration<double>(1 / rate));
    }
    const Xcb::Owned<xcb_get_input_focus_reply_t> served(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    std::printf("%.0f\n", count / std::chrono::duration<double>(Clock::now() - start).count());
    xcb_disconnect(connection);
}
