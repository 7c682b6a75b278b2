#pragma once

#include <QtGlobal>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/types.h>

/// Closes an open file or folder.
class Descriptor
{
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

/// A folder to read, or that was read. It knows its parent, so that a tree of
/// any depth costs no more memory than its names.
struct Folder
{
    const Folder *parent; // None: the name is a whole path.
    std::string_view name;
    ino_t number; // As the entry in its parent says; 0 where no entry led to it.
    qint64 changed = 0; // Nanoseconds since 1970, when it was read.
    bool changedSince = false;
};

void writePath(const Folder &folder, std::string &path);

struct OpenedFolder
{
    Descriptor descriptor;
    bool refused = false; // It cannot be read and yet may hold files of the user's.
};
/// For reading, not through a link at the end, and of any length.
OpenedFolder openFolder(const std::string &path);

/// Where other file systems, or other parts of this one, are mounted below a
/// folder, sorted. The root is named by an empty path.
std::vector<std::string> mountPointsBelow(const std::string &root);

/// Whether the numbers that stand in a file system's folders are those of the
/// files, and stay with the files. FAT and most of FUSE make them up as they
/// go. Of overlays only some kinds lie, and these do so about a folder's own
/// number as well, which the walk sees.
bool hasLastingNumbers(int folder);
