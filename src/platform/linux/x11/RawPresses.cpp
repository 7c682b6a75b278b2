#include "platform/linux/x11/RawPresses.h"

void RawPresses::learn(const xcb_input_xi_query_device_reply_t &devices)
{
    for (auto each = xcb_input_xi_query_device_infos_iterator(&devices); each.rem > 0;
         xcb_input_xi_device_info_next(&each)) {
        m_known.insert(each.data->deviceid);
        for (auto part = xcb_input_xi_device_info_classes_iterator(each.data); part.rem > 0;
             xcb_input_device_class_next(&part)) {
            if (part.data->type == XCB_INPUT_DEVICE_CLASS_TYPE_TOUCH
                && reinterpret_cast<const xcb_input_touch_class_t *>(part.data)->mode
                    == XCB_INPUT_TOUCH_MODE_DIRECT)
                m_screens.insert(each.data->deviceid);
        }
    }
}

std::optional<PointerEvent> RawPresses::meaning(const xcb_input_raw_button_press_event_t &event)
{
    // A button's event that the server made of a touch is left to the touch.
    const bool isButton = event.detail == m_leftButton
        && !(event.flags & XCB_INPUT_POINTER_EVENT_FLAGS_POINTER_EMULATED);
    const bool isFinger = m_finger == event.detail;
    const auto when = [](bool counts, PointerEvent meant) {
        return counts ? std::optional(meant) : std::nullopt;
    };
    switch (event.event_type) {
    case XCB_INPUT_RAW_MOTION:
        return PointerEvent::Moved;
    case XCB_INPUT_RAW_BUTTON_PRESS:
        return when(isButton, PointerEvent::LeftDown);
    case XCB_INPUT_RAW_BUTTON_RELEASE:
        return when(isButton, PointerEvent::LeftUp);
    case XCB_INPUT_RAW_TOUCH_BEGIN:
        if (m_finger || !m_screens.contains(event.sourceid))
            return std::nullopt;
        m_finger = event.detail;
        return PointerEvent::LeftDown;
    case XCB_INPUT_RAW_TOUCH_UPDATE:
        return when(isFinger, PointerEvent::Moved);
    case XCB_INPUT_RAW_TOUCH_END:
        if (isFinger)
            m_finger.reset();
        return when(isFinger, PointerEvent::LeftUp);
    default:
        return std::nullopt;
    }
}
