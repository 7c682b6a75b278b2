#pragma once

#include <QByteArray>

#include <cstdint>

#include <sys/types.h>

/// One file's identity on its file system. The birth time belongs to it: ext4
/// gives the number of a deleted file out again at once.
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
    std::int64_t birthSeconds = 0; // Since 1970.
    std::uint32_t birthNanoseconds = 0;
    bool hasBirth = false; // Not every file system keeps it.

    bool operator==(const FileIdentity &) const = default;
};

size_t qHash(const FileIdentity &identity, size_t seed = 0) noexcept;

/// What one look at a name told.
struct FileLook
{
    enum class State {
        Present,
        Missing, // The name is free.
        Unknown, // May be there: no permission to look, a failing disk.
    };
    State state = State::Unknown;
    FileIdentity identity;
    bool directory = false;
};

/// Follows no link at the end of the path, mounts nothing, and takes what the
/// kernel knows without asking a server again.
FileLook lookAt(const QByteArray &path);
/// The same for a name relative to an open folder.
FileLook lookAt(int folder, const char *name);
