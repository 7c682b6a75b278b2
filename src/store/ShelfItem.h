#pragma once

#include "store/WebAddress.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

/// One entry on a shelf. What it is follows from what is filled in: a web link
/// when `link` is set, a text snippet when `preview` is set without `link`,
/// otherwise a file. Copied freely, compared field by field.
struct ShelfItem
{
    QUuid id;
    QUrl url; // Always a file URL in the form that FilePath makes.
    double addedAt = 0; // Seconds since 2001-01-01 UTC.
    std::optional<QString> driveFileId;
    std::optional<QString> driveLink;
    std::optional<QString> preview; // The short text shown for a snippet or a link.
    std::optional<QByteArray> bookmark; // Opaque: kept as it was read.
    std::optional<WebAddress> link;

    /// What opening, copying and dragging it are about: its web address, or its file.
    Address target() const
    {
        const Address web = link ? link->url() : Address();
        return web.isValid() ? web : Address(url);
    }

    bool operator==(const ShelfItem &) const = default;
};
