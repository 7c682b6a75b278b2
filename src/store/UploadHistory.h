#pragma once

#include "base/Observable.h"
#include "store/AppPaths.h"

#include <QList>
#include <QString>

#include <optional>

class MainQueue;

/// One finished upload.
struct UploadRecord
{
    QString fileId; // At the destination; the record's identity.
    QString name;
    std::optional<QString> link; // If the destination gave one.
    double date = 0; // Seconds since 2001-01-01 UTC.

    bool operator==(const UploadRecord &) const = default;
};

/// What was uploaded lately, kept apart from the shelves, since a link may be
/// wanted long after its entry has left. Every change is written at once; a file
/// that cannot be read is an empty history and stays until the next change.
/// Main thread.
class UploadHistory
{
public:
    UploadHistory(const AppPaths &paths, MainQueue &queue);
    UploadHistory(const UploadHistory &) = delete;
    UploadHistory &operator=(const UploadHistory &) = delete;

    Observable<QList<UploadRecord>> records; // Newest first. Written by the operations below only.

    /// In front, in place of an earlier record of that file; the newest 30 stay.
    void add(const QString &fileId, const QString &name, const std::optional<QString> &link);
    void remove(const QString &fileId);
    void clear();
    std::optional<UploadRecord> record(const QString &fileId) const;

private:
    void write() const;

    QByteArray m_folder;
    MainQueue &m_queue;
};
