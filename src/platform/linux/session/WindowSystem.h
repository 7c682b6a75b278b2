#pragma once

#include <QByteArray>
#include <QHash>
#include <QVariant>

#include <functional>

// What the services of the session ask of the window system, whichever it is.

/// The desktop's settings as a settings manager publishes them: whole numbers and UTF-8 texts
/// by names such as "Net/IconThemeName".
using ManagedSettings = QHash<QByteArray, QVariant>;

/// Asks for them at once; empty where there is no manager. Called on any thread.
using ReadSettings = std::function<ManagedSettings()>;

/// Follows the settings manager, whoever it is at the moment; nothing comes before start.
/// Main thread.
class SettingsManager
{
public:
    virtual ~SettingsManager() = default;
    virtual void start() = 0;

    /// All settings, at first and after each change; none where there is no manager.
    std::function<void(const ManagedSettings &)> onSettings;
};

/// Watches for a tray that takes windows in. Main thread.
class EmbeddingTray
{
public:
    virtual ~EmbeddingTray() = default;
    virtual bool isThere() const = 0;

    std::function<void()> onChange;
};
