#pragma once

#include "platform/Screens.h"

class FakeScreens final : public Screens
{
public:
    QList<Screen> all() const override { return screens; }
    std::optional<Screen> main() const override
    {
        return screens.isEmpty() ? std::nullopt : std::optional(screens.first());
    }
    QList<Screen> screens { { QRectF(0, 0, 1000, 800), QRectF(0, 30, 1000, 770) } };
};
