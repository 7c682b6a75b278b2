#pragma once

#include "store/UploadHistory.h"

/// The JSON form of the upload history, by the same rules as the shelves' file.
namespace UploadCoding {

QByteArray encode(const QList<UploadRecord> &records);
/// All or nothing: one bad record spoils the list.
std::optional<QList<UploadRecord>> decode(const QByteArray &json);

}
