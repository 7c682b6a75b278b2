#pragma once

#include <QString>

/// Where a tray's menu is drawn: by the program that shows the tray, over the
/// bus, or by ours.
enum class TrayKind { Notifier, Embedded };

/// A title such that the tray's menu shows it as it is.
QString trayLabel(const QString &title, TrayKind kind);
