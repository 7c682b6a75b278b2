#pragma once

#include "store/ShelfItem.h"

#include <QList>
#include <QSet>

/// When two addresses are one and the same.
namespace Addresses {

/// Equal for equal addresses: a folder's with and without its slash, a file's in
/// whatever spelling. Of a web address the address itself.
QByteArray key(const QUrl &url);
QSet<QByteArray> keys(const QList<ShelfItem> &items);

/// Whether it was new.
bool insertNew(QSet<QByteArray> &known, const QUrl &url);

/// How an entry keeps the address of a file: one spelling, a folder's with a
/// slash at the end. Invalid for what is not a file of this machine. Asks the
/// disk what kind of thing it is, but opens nothing.
QUrl stored(const QUrl &url);

}
