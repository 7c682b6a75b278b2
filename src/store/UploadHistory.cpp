#include "store/UploadHistory.h"

#include "base/AtomicFile.h"
#include "base/MainQueue.h"
#include "base/NativeFile.h"
#include "store/UploadCoding.h"

#include <algorithm>

namespace {

constexpr qsizetype mostRecords = 30;

bool removeRecords(QList<UploadRecord> &list, const QString &fileId)
{
    return list.removeIf([&](const UploadRecord &each) { return each.fileId == fileId; }) > 0;
}

}

UploadHistory::UploadHistory(const AppPaths &paths, MainQueue &queue)
    : m_folder(paths.dataDir)
    , m_queue(queue)
{
    NativeFile::makePrivateFolder(m_folder);
    if (auto read = UploadCoding::decode(
            NativeFile::read(m_folder + "/uploads.json").bytes.value_or(QByteArray())))
        records.set(std::move(*read));
}

void UploadHistory::add(const QString &fileId, const QString &name,
                        const std::optional<QString> &link)
{
    auto next = records.value();
    removeRecords(next, fileId);
    next.prepend({ fileId, name, link, m_queue.now() });
    next.resize(std::min(next.size(), mostRecords));
    records.set(std::move(next));
    write();
}

void UploadHistory::remove(const QString &fileId)
{
    auto next = records.value();
    if (!removeRecords(next, fileId))
        return;
    records.set(std::move(next));
    write();
}

void UploadHistory::clear()
{
    records.set({});
    write();
}

std::optional<UploadRecord> UploadHistory::record(const QString &fileId) const
{
    const auto &list = records.value();
    const auto found = std::find_if(
        list.begin(), list.end(), [&](const UploadRecord &each) { return each.fileId == fileId; });
    return found == list.end() ? std::nullopt : std::optional(*found);
}

void UploadHistory::write() const
{
    NativeFile::makeFolder(m_folder); // It may have been removed, or not been there to make.
    AtomicFile::write(m_folder + "/uploads.json", UploadCoding::encode(records.value()));
}
