#pragma once

#include "platform/Address.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

/// One dropped object with all the forms in which its source offers it. The
/// source is asked in the background, each form once at most; completions come
/// on any thread, always, and with nothing where the source refused, died,
/// stayed silent or sent more than a drop may hold. The drop ends for its
/// source when every provider is gone and every load has been answered.
class ItemProvider
{
public:
    virtual ~ItemProvider() = default;

    /// Names of its formats (MIME types as offered), the source's favourite first.
    virtual QStringList registeredTypes() const = 0;
    /// Whether it is an object of the file system: one file URL of a list.
    virtual bool hasFileUrl() const = 0;
    virtual bool hasText() const = 0;
    virtual bool hasUrl() const = 0;

    virtual void loadUrl(std::function<void(std::optional<Address>)> completion) = 0;
    virtual void loadText(std::function<void(std::optional<QString>)> completion) = 0;
    virtual void loadData(const QString &type,
                          std::function<void(std::optional<QByteArray>)> completion)
        = 0;
};

using ItemProviders = QList<std::shared_ptr<ItemProvider>>;

/// Where drags of other programs land: one window of ours. A source that offers
/// only to move is refused, so that no drop ever deletes anything. Main thread.
class DropTarget
{
public:
    virtual ~DropTarget() = default;
    /// Asked at each move of a drag, and at the drop; without it everything may come.
    std::function<bool()> mayTake;
    /// A drag that would be taken hovers over the window, or no longer does.
    std::function<void(bool)> onTargeted;
    /// A drop, once it is known what objects it holds.
    std::function<void(const ItemProviders &)> onDrop;
};
