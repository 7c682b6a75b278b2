#pragma once

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "platform/linux/files/LinuxBookmarks.h"
#include "store/ShelfStore.h"

#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

inline double seconds(clockid_t clock)
{
    timespec time {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The value that this share of the values does not exceed.
inline double quantile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<size_t>(share * static_cast<double>(values.size() - 1) + 0.5));
}

/// A home on the disk of /var/tmp with real files, and what a store needs there.
class StoreHome
{
public:
    /// Files as people have them: some hundred in a folder, names with spaces and letters.
    QList<QUrl> makeFiles(int count) const
    {
        QList<QUrl> urls;
        QByteArray folder;
        for (int i = 0; i < count; ++i) {
            if (i % 500 == 0) {
                folder
                    = path() + "/Documents/Projekte 2024/Übergabe " + QByteArray::number(i / 500);
                NativeFile::makeFolder(folder);
            }
            const QByteArray name = folder + "/quarterly report " + QByteArray::number(i) + ".pdf";
            ::close(::open(name.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
            urls.append(FilePath::toUrl(name));
        }
        return urls;
    }

    QByteArray path() const { return m_folder.path().toUtf8(); }
    QByteArray stateFile() const { return paths().dataDir + "/shelves.json"; }

    std::unique_ptr<ShelfStore> newStore()
    {
        return std::make_unique<ShelfStore>(paths(), m_queue, m_workers, bookmarks, m_sounds,
                                            m_pictures, m_texts);
    }

private:
    Directories directories() const
    {
        Directories result;
        result.home = path();
        result.data = path() + "/data";
        return result;
    }
    AppPaths paths() const { return AppPaths(directories()); }

    QTemporaryDir m_folder { QStringLiteral("/var/tmp/vantle-bench-XXXXXX") };
    VirtualQueue m_queue;
    VirtualWorkers m_workers { m_queue };
    FakeSounds m_sounds;
    FakePictureDecoder m_pictures;
    Localizer m_texts { QString(), {} };

public:
    LinuxBookmarks bookmarks { LinuxBookmarks::placesOf(directories()) }; // Looks into the folder.
};
