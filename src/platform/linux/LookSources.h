#pragma once

#include "platform/DesktopLook.h"
#include "platform/linux/x11/XSettings.h"

#include <QHash>
#include <QString>
#include <QVariant>

/// What the several places say in which a Linux desktop keeps its look.
struct LookSources
{
    /// Of the Settings portal, by namespace and key with a space between.
    QHash<QString, QVariant> portal;
    XSettings::Settings xsettings;

    /// The portal's word, where it has one, before the settings manager's. What
    /// makes a screen easier to use counts whoever asks for it.
    DesktopLook look() const;
};
