#pragma once

#include "store/Shelf.h"

/// The JSON form of the records. Reading is all or nothing: a key that is
/// missing or a value of the wrong type spoils the whole file; only unknown keys
/// are passed over, and null counts as absent where a field may be absent. An id
/// that came before is replaced by a new one.
///
/// Written compactly: "\/" for a slash, UUIDs in upper case, dates as seconds
/// since 2001-01-01 UTC, bytes as Base64, and absent fields left out.
namespace StateCoding {

/// The address of a file that this text of the state file is; none for what would
/// spoil the file. The encoder asks it too, so that nothing is written that cannot be
/// read.
std::optional<QUrl> address(const QString &text);

QByteArray encode(const ShelfState &state);
std::optional<ShelfState> decodeState(const QByteArray &json);

/// The format of the time before there were several shelves: a bare list.
std::optional<QList<ShelfItem>> decodeItems(const QByteArray &json);

}
