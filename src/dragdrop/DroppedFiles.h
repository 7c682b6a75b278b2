#pragma once

#include "base/Ticket.h"
#include "platform/DropTarget.h"

#include <QList>
#include <QMimeType>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

class MainQueue;
class ShelfStore;

/// The files of one drop. Their addresses come in any order and on any thread,
/// and leave in the order in which they were dragged.
class DroppedFiles
{
public:
    void add(const QUrl &url, int index);
    bool isEmpty() const;
    QList<QUrl> inOrder() const;

private:
    mutable std::mutex m_lock;
    std::vector<std::pair<int, QUrl>> m_found;
};

/// The name under which an object offers a type: the type database knows most
/// types by several names.
QString offeredName(const QStringList &offered, const QMimeType &type);

/// Turns each dropped object into one addition to the current shelf: a file, else
/// image data, else text, else an address as text. The files are added together,
/// in drag order, once each of them has answered; everything else is added as
/// soon as it has loaded. Where nothing came of all of them, onNothing is called. None
/// of that happens once the ticket has been dropped. Main thread.
void handleDrop(const ItemProviders &providers, ShelfStore &store, MainQueue &queue,
                const std::weak_ptr<const void> &whileAlive, std::function<void()> onNothing);
