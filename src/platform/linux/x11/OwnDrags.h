#pragma once

#include "platform/DropTarget.h"

#include <QObject>

#include <functional>

class QDropEvent;
class QWidget;

/// Drags from other windows of this program onto one of its windows. The toolkit
/// brings these by direct call, past the window's messages. What the window itself
/// drags is refused: an entry is not dropped back onto its shelf.
class OwnDrags final : public QObject
{
public:
    void attach(QWidget &window);

    std::function<void(bool)> onTargeted;
    std::function<void(const ItemProviders &)> onDrop;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void enter(QDropEvent &event);
    void drop(QDropEvent &event);

    QWidget *m_window = nullptr;
};
