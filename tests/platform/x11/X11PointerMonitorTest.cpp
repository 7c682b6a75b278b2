#include "platform/linux/x11/X11PointerMonitor.h"

#include <gtest/gtest.h>

namespace {

TEST(X11PointerMonitorTest, APressIsTheLeftButtonsOrTheFirstFingersAndCountsOnce)
{
    constexpr uint32_t left = 3; // Of a mouse for the left hand.
    constexpr uint32_t emulated = XCB_INPUT_POINTER_EVENT_FLAGS_POINTER_EMULATED;
    constexpr uint32_t emulating = XCB_INPUT_TOUCH_EVENT_FLAGS_TOUCH_EMULATING_POINTER;
    const auto meaning = [](uint16_t type, uint32_t detail, uint32_t flags) {
        xcb_input_raw_button_press_event_t event {};
        event.event_type = type;
        event.detail = detail;
        event.flags = flags;
        return X11PointerMonitor::meaning(event, left);
    };
    EXPECT_EQ(meaning(XCB_INPUT_RAW_BUTTON_PRESS, left, 0), PointerEvent::LeftDown);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_BUTTON_RELEASE, left, 0), PointerEvent::LeftUp);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_BUTTON_PRESS, 1, 0), std::nullopt);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_BUTTON_PRESS, left, emulated), std::nullopt);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_TOUCH_BEGIN, 7, emulating), PointerEvent::LeftDown);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_TOUCH_UPDATE, 7, emulating), PointerEvent::Moved);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_TOUCH_END, 7, emulating), PointerEvent::LeftUp);
    EXPECT_EQ(meaning(XCB_INPUT_RAW_TOUCH_BEGIN, left, 0), std::nullopt); // A second finger's.
}

}
