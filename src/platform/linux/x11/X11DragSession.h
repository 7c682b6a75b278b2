#pragma once

#include "platform/DragSession.h"
#include "platform/linux/transfer/PortalFiles.h"
#include "platform/linux/x11/SelectionOffer.h"
#include "platform/linux/x11/X11ManagerSelection.h"
#include "platform/linux/x11/XdndSource.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

#include <memory>

class DragPicture;
class MainQueue;
class QMouseEvent;
class Workers;

/// Drags from windows of ours, in place of the toolkit's: that one gives a drag up when
/// the button is released before the target has answered, and announces forms of its own
/// making.
class X11DragSession final : public QObject, public DragSession, private QAbstractNativeEventFilter
{
public:
    /// textFolder: where the program keeps texts that users put on a shelf.
    X11DragSession(QWidget &window, MainQueue &queue, Workers &workers, QByteArray textFolder);
    ~X11DragSession() override;

    void begin(const QList<DraggingItem> &items, const QPointF &at,
               std::function<void(bool accepted)> onEnd) override;
    void beginFrom(QWidget &source, const QList<DraggingItem> &items, const QPointF &at,
                   std::function<void(bool accepted)> onEnd) override;

private:
    bool eventFilter(QObject *object, QEvent *event) override;
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    bool pointerReleased(QObject *receiver, const QMouseEvent &event);
    void letPointerGo();
    void showAction(xcb_atom_t action);

    QPointer<QWidget> m_window;
    MainQueue &m_queue;
    const QByteArray m_textFolder;
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    Xcb::Atoms m_atoms;
    SelectionOffer m_offer; // Stays after the drag: targets read on.
    X11ManagerSelection m_compositor;
    PortalFiles m_portal;

    std::unique_ptr<XdndSource> m_drag; // Until the next one.
    std::unique_ptr<DragPicture> m_picture; // While the button is down.
    QPointer<QWidget> m_source;
};
