#pragma once

#include "platform/DesktopLook.h"

#include <QFont>
#include <QPalette>

#include <optional>

/// Brings palette and font of the application in line with the desktop's look;
/// every window follows at once. Touches nothing that the look does not ask for.
class DesktopStyle
{
public:
    void apply(const DesktopLook &look);

    /// Without a preference, that for light.
    static QPalette palette(DesktopLook::Scheme scheme, DesktopLook::Contrast contrast);

private:
    DesktopLook m_applied;
    std::optional<QFont> m_font; // The desktop's own, once it was scaled.
};
