#pragma once

#include "platform/linux/x11/Xcb.h"

#include <poll.h>
#include <xcb/damage.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

/// Watches the window of the panel, which is always mapped but has no shape while it is hidden,
/// or another from a connection of its own, and presses keys and
/// buttons on it. Times are those at which the X server's notices came.
class PanelWatch
{
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::duration<double, std::milli>;

    /// What an input brought about.
    struct Course
    {
        std::optional<Clock::time_point> shown; // Mapped, or given its shape back.
        std::optional<Clock::time_point> painted;
        std::optional<Clock::time_point> gone;
        quint32 paintedTime = 0; // Of the X server, in milliseconds.
        std::vector<uint8_t> picture; // What the first painting left in the panel.
    };

    PanelWatch(xcb_connection_t *connection, xcb_window_t panel)
        : m_connection(connection)
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
        , m_panel(panel)
        , m_damage(xcb_generate_id(connection))
    {
        xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 5, 0).sequence);
        xcb_discard_reply(connection, xcb_damage_query_version(connection, 1, 1).sequence);
        m_damageEvent = xcb_get_extension_data(connection, &xcb_damage_id)->first_event;
        const quint32 mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, panel, XCB_CW_EVENT_MASK, &mask);
        m_shapeEvent = xcb_get_extension_data(connection, &xcb_shape_id)->first_event;
        xcb_shape_select_input(connection, panel, 1);
        xcb_damage_create(connection, m_damage, panel, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        xcb_flush(connection);
    }

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    const Course &course() const { return m_course; }
    void begin() { m_course = {}; }

    /// Of other events.
    std::function<void(const xcb_generic_event_t &, Clock::time_point)> onEvent;

    void input(uint8_t kind, uint8_t detail, int x = 0, int y = 0)
    {
        xcb_test_fake_input(m_connection, kind, detail, XCB_CURRENT_TIME,
                            kind == XCB_MOTION_NOTIFY ? m_root : Xcb::none, static_cast<int16_t>(x),
                            static_cast<int16_t>(y), 0);
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

private:
    void note(const xcb_generic_event_t &event, Clock::time_point now)
    {
        const int type = event.response_type & 0x7f;
        if (type == XCB_MAP_NOTIFY && !m_course.shown) {
            m_course.shown = now;
        } else if (type == XCB_UNMAP_NOTIFY) {
            m_course.gone = now;
        } else if (type == m_shapeEvent + XCB_SHAPE_NOTIFY) {
            noteShape(reinterpret_cast<const xcb_shape_notify_event_t &>(event), now);
        } else if (type == m_damageEvent + XCB_DAMAGE_NOTIFY) {
            const auto &notify = reinterpret_cast<const xcb_damage_notify_event_t &>(event);
            xcb_damage_subtract(m_connection, m_damage, Xcb::none, Xcb::none);
            xcb_flush(m_connection);
            if (m_course.shown && !m_course.painted) {
                m_course.painted = now;
                m_course.paintedTime = notify.timestamp;
                m_course.picture = picture();
            }
        } else if (onEvent) {
            onEvent(event, now);
        }
    }

    void noteShape(const xcb_shape_notify_event_t &event, Clock::time_point now)
    {
        if (event.shape_kind != XCB_SHAPE_SK_BOUNDING)
            return;
        if (event.shaped && event.extents_width == 0)
            m_course.gone = now;
        else if (!m_course.shown)
            m_course.shown = now;
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    xcb_window_t m_panel;
    xcb_damage_damage_t m_damage;
    int m_damageEvent = 0;
    int m_shapeEvent = 0;
    Course m_course;
};
