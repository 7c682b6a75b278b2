#pragma once

#include "platform/Autostart.h"

/// A session that never refuses.
class FakeAutostart final : public Autostart
{
public:
    bool enabled() const override { return isEnabled; }
    std::optional<QString> setEnabled(bool enabled) override
    {
        isEnabled = enabled;
        return std::nullopt;
    }

    bool isEnabled = false;
};
