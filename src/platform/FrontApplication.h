#pragma once

#include "base/Ticket.h"

#include <QString>

#include <functional>

/// The application that the user is working in.
class FrontApplication
{
public:
    virtual ~FrontApplication() = default;
    /// Tells, later and once, the id of the desktop entry without ".desktop"
    /// ("org.gnome.Nautilus") of what is in front now; empty where none can be told,
    /// or not in a moment: that is a look at another program.
    [[nodiscard]] virtual Ticket identify(std::function<void(const QString &)> answer) = 0;
};
