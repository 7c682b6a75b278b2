#pragma once

#include "platform/FrontApplication.h"
#include "platform/linux/x11/Xcb.h"

class ApplicationResolver;
class WatchConnection;

/// The application of the active window; where that cannot be told, the one whose
/// drag is under way. Never this program. Waits for the X server only.
class X11FrontApplication final : public FrontApplication
{
public:
    X11FrontApplication(const WatchConnection &connection, ApplicationResolver &resolver);
    QString identifier() const override;

private:
    QString identifierOf(xcb_window_t window) const;
    xcb_window_t activeWindow() const;

    const WatchConnection &m_connection;
    ApplicationResolver &m_resolver;
    xcb_atom_t m_activeWindow;
    xcb_atom_t m_dragSelection;
};
