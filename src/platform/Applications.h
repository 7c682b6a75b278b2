#pragma once

#include "platform/Address.h"
#include "platform/InstalledApplication.h"

#include <QList>
#include <QString>
#include <QUrl>

/// An application that can open a file.
struct OpenWithApp
{
    QString identifier;
    QString name; // As its user reads it.
    QString icon; // A name in the icon theme, or a picture's path; may be empty.

    bool operator==(const OpenWithApp &) const = default;
};

/// The applications of the desktop. Every call waits for other programs or for
/// files: worker threads only. What is started comes up in front. By itself it has none.
class Applications
{
public:
    virtual ~Applications() = default;
    /// Opens each by itself in its default application, in order. What has no
    /// application, or fails, is passed over.
    virtual void open(const QList<Address> &) { }
    /// Opens all of them together in that application, if it is still there.
    virtual void open(const QList<Address> &, const QString & /*application*/) { }
    /// Those that can open it, the default one first; at most that many.
    virtual QList<OpenWithApp> thatOpen(const QUrl &, int /*limit*/) { return {}; }
    /// All that have a desktop entry, in no order.
    virtual QList<InstalledApplication> all() { return {}; }
    /// Shows the files in the file manager, selected where it can do that.
    virtual void reveal(const QList<QUrl> &) { }
};
