#pragma once

#include "platform/linux/MountTable.h"

#include <QByteArray>
#include <QList>

#include <optional>

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
    LocalFolder(const QByteArray &path, const Mounts &mounts);
    ~LocalFolder();
    LocalFolder(const LocalFolder &) = delete;
    LocalFolder &operator=(const LocalFolder &) = delete;

    State state() const { return m_state; }
    int descriptor() const { return m_descriptor; }
    /// The names of folders in an open one, links not followed; at most that many.
    QList<QByteArray> folders(qsizetype limit) const;
    /// Without links; where the state is Remote, as far as it was followed and the
    /// rest of it. The mount it lies on is the one that may not answer.
    const QByteArray &realPath() const { return m_path; }

private:
    State followLinks(const Mounts &mounts);
    State open(quint64 resolve);

    QByteArray m_path;
    int m_descriptor = -1;
    State m_state = State::Unknown;
};
