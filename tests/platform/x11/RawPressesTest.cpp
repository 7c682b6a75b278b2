#include "platform/linux/x11/RawPresses.h"

#include <gtest/gtest.h>

TEST(RawPressesTest, APressIsTheLeftButtonsOrTheFirstFingersOnAScreenAndCountsOnce)
{
    constexpr uint16_t mouse = 2, screen = 6, touchpad = 7;
    constexpr uint32_t left = 3; // Of a mouse for the left hand.
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
    const auto means = [&](uint16_t type, uint16_t source, uint32_t detail, uint32_t flags = 0) {
        return presses.meaning({ 0, 0, 0, 0, type, 2, 0, detail, source, 0, flags, {}, 0 });
    };
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, mouse, left), PointerEvent::LeftDown);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_RELEASE, mouse, left), PointerEvent::LeftUp);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, mouse, 1), std::nullopt);
    EXPECT_EQ(means(XCB_INPUT_RAW_BUTTON_PRESS, screen, left,
                    XCB_INPUT_POINTER_EVENT_FLAGS_POINTER_EMULATED),
              std::nullopt);
    EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, touchpad, 70), std::nullopt);
    for (const uint32_t first : { 71U, 81U }) {
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, screen, first), PointerEvent::LeftDown);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_BEGIN, screen, first + 1), std::nullopt);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_UPDATE, screen, first), PointerEvent::Moved);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_END, screen, first + 1), std::nullopt);
        EXPECT_EQ(means(XCB_INPUT_RAW_TOUCH_END, screen, first), PointerEvent::LeftUp);
    }
}
