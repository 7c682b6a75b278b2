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

}
