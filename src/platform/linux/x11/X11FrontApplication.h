#pragma once

#include "platform/FrontApplication.h"
#include "platform/linux/x11/Xcb.h"

#include <memory>

class ApplicationResolver;
class MainQueue;
class WatchConnection;
class Workers;

/// The application of the active window; where that cannot be told, the one whose
/// drag is under way. Never this program. Waits for the X server only.
class X11FrontApplication final : public FrontApplication
{
public:
    X11FrontApplication(const WatchConnection &connection,
                        std::shared_ptr<ApplicationResolver> resolver, MainQueue &queue,
                        Workers &workers);
    Ticket identify(std::function<void(const QString &)> answer) override;

private:
    const WatchConnection &m_connection;
    const std::shared_ptr<ApplicationResolver> m_resolver; // Work that hangs has it too.
    MainQueue &m_queue;
    Workers &m_workers;
    Xcb::Atoms m_atoms;
};
