#pragma once

#include <QByteArray>
#include <QHash>

/// The values of one group ("Desktop Entry") of a small file in the format of desktop
/// entries, which many settings have too; nothing where it cannot be read. The group "" is
/// what stands before the first one. Without translations, and without the mark "[$e]" that
/// KDE gives to keys whose values hold variables.
QHash<QByteArray, QByteArray> keyFileGroup(const QByteArray &path, const QByteArray &group);
