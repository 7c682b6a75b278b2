#pragma once

#include <QByteArray>

#include <optional>

/// Small files at native paths.
namespace NativeFile {

enum class Failure { Missing, Unreadable };

struct Content
{
    std::optional<QByteArray> bytes;
    Failure failure = Failure::Missing; // Where there are no bytes.
};

/// Reads a regular file of at most 16 MB. Never waits: a pipe or a device at
/// that path is unreadable.
Content read(const QByteArray &path);

/// Makes the folder and those above it, for the user alone; whether it is there.
bool makeFolder(const QByteArray &path);

}
