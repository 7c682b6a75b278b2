#pragma once

#include <QString>

#include <optional>

/// Starting the program together with the session.
class Autostart
{
public:
    virtual ~Autostart() = default;
    virtual bool enabled() const = 0;
    /// The reason, where it could not be done.
    virtual std::optional<QString> setEnabled(bool enabled) = 0;
};
