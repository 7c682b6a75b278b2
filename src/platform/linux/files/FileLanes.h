#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

/// Threads for looking at files, some for each mount, so that one which never
/// answers holds nothing up but itself: not the other mounts, however a path leads
/// to it. Work that hangs at the end of the program is left behind. Any thread.
class FileLanes
{
public:
    explicit FileLanes(const QByteArray &mountTable = "/proc/self/mountinfo");
    ~FileLanes();
    FileLanes(const FileLanes &) = delete;
    FileLanes &operator=(const FileLanes &) = delete;

    /// By the path alone, links in it not followed.
    bool isRemote(const QByteArray &path);
    /// Begins nothing any more; false where work hangs. It goes on using what it has.
    bool end();
    void run(const QByteArray &path, std::function<void()> work);

private:
    class Lanes;

    std::shared_ptr<Lanes> m_lanes; // Work that looks for its lane has it too.
};
