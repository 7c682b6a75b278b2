#pragma once

#include "platform/linux/session/WindowSystem.h"
#include "platform/linux/x11/X11ManagerSelection.h"

#include <optional>

/// The manager of embedded windows on the screen, heard of on the toolkit's connection.
class X11TrayManager final : public EmbeddingTray
{
public:
    X11TrayManager();

    bool isThere() const override { return m_manager && m_manager->isThere(); }

private:
    std::optional<X11ManagerSelection> m_manager; // None where the toolkit does not run on X11.
};
