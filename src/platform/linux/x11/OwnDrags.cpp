#include "platform/linux/x11/OwnDrags.h"

#include "platform/OwnFile.h"

#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

void OwnDrags::attach(QWidget &window)
{
    if (m_window == &window)
        return;
    m_window = &window;
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool OwnDrags::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
        enter(static_cast<QDropEvent &>(*event));
        return true;
    case QEvent::DragLeave:
        onTargeted(false);
        return true;
    case QEvent::Drop:
        drop(static_cast<QDropEvent &>(*event));
        return true;
    default:
        return false;
    }
}

void OwnDrags::enter(QDropEvent &event)
{
    const auto *source = qobject_cast<QWidget *>(event.source());
    if (!source || source->window() == m_window)
        return event.ignore();
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() == QEvent::DragEnter)
        onTargeted(true);
}

void OwnDrags::drop(QDropEvent &event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
    onTargeted(false);
    ItemProviders objects;
    const auto urls = event.mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            objects.append(std::make_shared<OwnFile>(url));
    }
    onDrop(objects);
}
