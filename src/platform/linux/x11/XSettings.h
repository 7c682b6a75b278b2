#pragma once

#include <QByteArray>
#include <QHash>
#include <QVariant>

/// The desktop's settings as its XSETTINGS manager publishes them: whole numbers
/// and UTF-8 texts by names such as "Net/IconThemeName".
namespace XSettings {

using Settings = QHash<QByteArray, QVariant>;

/// Asks the X server, over a connection of its own; empty where there is no
/// server or no manager. On any thread.
Settings read();

/// Reads the manager's property: what comes before the first fault in it.
Settings parse(const QByteArray &property);

}
