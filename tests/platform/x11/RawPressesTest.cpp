#include "platform/linux/x11/RawPresses.h"

#include <gtest/gtest.h>

TEST(RawPressesTest, APressIsTheLeftButtonsOrTheFirstFingersOnAScreenAndCountsOnce)
{
    constexpr uint16_t screen = 6;
    constexpr uint16_t touchpad = 7;
    constexpr uint32_t left = 3; // Of a mouse for the left hand.
    constexpr uint32_t emulated = XCB_INPUT_POINTER_EVENT_FLAGS_POINTER_EMULATED;
    struct
    {
        xcb_input_xi_query_device_reply_t head {};
        struct
        {
            xcb_input_xi_device_info_t info;
            xcb_input_touch_class_t touch;
        } devices[2] { { { screen, 0, 0, 1, 0, 1, 0 }, { 8, 2, screen, 1, 5 } },
                       { { touchpad, 0, 0, 1, 0, 1, 0 }, { 8, 2, touchpad, 2, 5 } } };
    } reply;
    reply.head.num_infos = 2;
    RawPresses presses;
    presses.setLeftButton(left);
    presses.learn(reply.head);
    EXPECT_TRUE(presses.knows(touchpad) && !presses.knows(8));
    const auto means = [&](uint16_t type, uint16_t source, uint32_t detail, uint32_t flags = 0) {
        xcb_input_raw_button_press_event_t event {};
        event.event_type = type;
        event.sourceid = source;
        event.detail = detail;
        event.flags = flags;
        return presses.meaning(event);
    };
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, 2, left), PointerEvent::LeftDown);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_RELEASE, 2, left), PointerEvent::LeftUp);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, 2, 1), std::nullopt);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, screen, left, emulated), std::nullopt);
    EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, touchpad, 70), std::nullopt);
    for (const uint32_t first : { 71U, 81U }) {
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, screen, first), PointerEvent::LeftDown);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, screen, first + 1), std::nullopt);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_UPDATE, screen, first + 1), std::nullopt);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_UPDATE, screen, first), PointerEvent::Moved);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_END, screen, first), PointerEvent::LeftUp);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_END, screen, first + 1), std::nullopt);
    }
}
