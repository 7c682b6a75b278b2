#pragma once

#include "base/Descriptor.h"
#include "platform/linux/files/MountTable.h"

#include <QByteArray>

/// A folder held open to look at names in it, reached without touching a file
/// system that may not answer, also where links lead to one.
class LocalFolder
{
public:
    enum class State {
        Open,
        Missing,
        Unknown, // It may be there: no permission, too many links.
        Remote,
    };
    /// `above` may be the folder that it lies in, which spares the way to there.
    LocalFolder(const QByteArray &path, const Mounts &mounts, const LocalFolder *above = nullptr);

    State state() const { return m_state; }
    int descriptor() const { return m_descriptor.number(); }
    /// Nothing can be seen in it, as in a mount point without its mount.
    bool isBare() const;
    /// Without links; where the state is Remote, as far as it was followed and the
    /// rest of it. The mount it lies on is the one that may not answer.
    const QByteArray &realPath() const { return m_path; }

    /// The path of whatever, which becomes that one without links, or with the rest of it from
    /// where it cannot be followed.
    static State followLinks(QByteArray &path, const Mounts &mounts);

private:
    QByteArray m_path;
    Descriptor m_descriptor;
    State m_state = State::Unknown;
};
