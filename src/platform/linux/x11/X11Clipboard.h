#pragma once

#include "platform/Clipboard.h"
#include "platform/linux/x11/DropReading.h"
#include "platform/linux/x11/SelectionOffer.h"

#include <QAbstractNativeEventFilter>

#include <memory>

class MainQueue;
class Workers;

/// The selection CLIPBOARD. The toolkit's own clipboard waits for owners that
/// hang, and offers files in forms of its own making, so this one reads on a
/// thread and answers by itself.
class X11Clipboard final : public Clipboard, private QAbstractNativeEventFilter
{
public:
    /// textFolder: where the program keeps texts that users put on a shelf.
    X11Clipboard(MainQueue &queue, Workers &workers, QByteArray textFolder);
    ~X11Clipboard() override;

    bool read(std::function<void(const ItemProviders &)> completion) override;
    void write(const QList<Address> &urls) override;
    void writeText(const QList<Address> &urls) override;

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void prepare();
    void offer(const QList<DragFormats::Format> &formats);
    void takeOver(xcb_timestamp_t time);

    MainQueue &m_queue;
    const QByteArray m_textFolder;
    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    SelectionOffer m_offer;
    // Owns the selection, and is what the manager answers; made at first use.
    xcb_window_t m_window = Xcb::none;

    std::shared_ptr<DropReading> m_reading; // While it is under way.
    xcb_window_t m_readFrom = Xcb::none;

    xcb_timestamp_t m_time = XCB_CURRENT_TIME; // Since when the selection is ours.
    bool m_wantsTime = false;
};
