#pragma once

#include "platform/Address.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

/// What the formats of a drag hold. Everything here takes bytes that another
/// program made, and believes nothing of them.
namespace DropFormats {

/// Both name one thing: the older name is still the only one of some programs.
inline constexpr char portalTransfer[] = "application/vnd.portal.filetransfer";
inline constexpr char portalFiles[] = "application/vnd.portal.files";
inline constexpr char uriList[] = "text/uri-list";
/// A line that says "copy" or "cut", then addresses: how file managers tell the two apart.
/// Each takes its own name for it alone.
inline constexpr const char *copiedFiles[]
    = { "x-special/gnome-copied-files", "x-special/mate-copied-files" };
/// Promised files: the source writes them where it is told to, or waits to be told by the bus
/// where to unpack them.
inline constexpr const char *promisedFiles[]
    = { "XdndDirectSave0", "application/x-kde-ark-dndextract-service",
        "application/x-kde-ark-dndextract-path" };

/// Whether a drop that offers these types can hold anything for a shelf. Promised
/// files are none: asking for them has effects.
bool canHold(const QStringList &types);
bool promisesFiles(const QStringList &types);

/// The addresses of a text/uri-list in their order. Files of this machine come as
/// FilePath spells them, with every byte of their names; those of other machines
/// and what is no address are left out.
QList<Address> urls(const QByteArray &list);

/// The types among these that hold text or an address, the best first.
QStringList textTypes(const QStringList &types);
QStringList urlTypes(const QStringList &types);

/// None where the data holds no text, or no address.
std::optional<QString> text(const QString &type, const QByteArray &data);
std::optional<Address> url(const QString &type, const QByteArray &data);

}
