#pragma once

#include <QString>

/// The application that the user is working in.
class FrontApplication
{
public:
    virtual ~FrontApplication() = default;
    /// Its desktop entry's id without ".desktop" ("org.gnome.Nautilus"); empty
    /// where none can be told.
    virtual QString identifier() const = 0;
};
