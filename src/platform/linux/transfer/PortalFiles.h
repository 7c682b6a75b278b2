#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <atomic>
#include <memory>
#include <optional>

/// Hands files over to programs that are confined to a sandbox, and takes files
/// from them: the desktop portal's file transfer, in which both sides speak of
/// the same files by a key.
class PortalFiles
{
public:
    /// Begins to find out whether the session has the portal; asks nobody who
    /// could keep the main thread waiting.
    PortalFiles();

    bool isAvailable() const { return *m_available; }

    /// The files that a key stands for; none where the portal does not know it.
    /// Both calls wait for the portal, a few seconds at most: worker threads only.
    static std::optional<QByteArrayList> retrieve(const QByteArray &key);
    /// A key for these files; none if one of them cannot be handed over.
    static std::optional<QByteArray> transfer(const QByteArrayList &paths);

private:
    std::shared_ptr<std::atomic<bool>> m_available = std::make_shared<std::atomic<bool>>(false);
};
