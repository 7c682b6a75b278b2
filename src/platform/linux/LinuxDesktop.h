#pragma once

#include "base/Ticket.h"
#include "platform/Desktop.h"

#include <memory>

/// Everything that a Linux desktop does for the program, by the window system of this session:
/// the one place that chooses between window systems and names them. Main thread.
class LinuxDesktop
{
public:
    /// Leads the toolkit to a window system that the program can work with. Before the
    /// application object is made; that one's constructor ends the process where there is no
    /// such system, so false means: do not make it.
    static bool chooseWindowSystem();

    /// resources: the folder with icons, sounds and texts. textFolder: where texts that users
    /// put on a shelf are kept.
    LinuxDesktop(const Directories &directories, const QString &resources,
                 const QByteArray &textFolder);
    ~LinuxDesktop();

    /// Valid as long as this object is.
    Desktop interfaces();

private:
    struct Parts;

    std::unique_ptr<Parts> m_parts;
    Ticket m_scheme;
};
