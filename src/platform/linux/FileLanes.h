#pragma once

#include "platform/linux/MountTable.h"

#include <QByteArray>

#include <functional>

class QThreadPool;

/// Threads for looking at files: some for local ones, others for what a server or
/// another program answers for, so that a mount which never answers holds nothing
/// up but its own kind. Work that hangs at the end of the program is left behind.
class FileLanes
{
public:
    FileLanes();
    ~FileLanes();
    FileLanes(const FileLanes &) = delete;
    FileLanes &operator=(const FileLanes &) = delete;

    bool isRemote(const QByteArray &path);
    void run(const QByteArray &path, std::function<void()> work);

private:
    MountTable m_mounts;
    QThreadPool *m_local;
    QThreadPool *m_remote;
};
