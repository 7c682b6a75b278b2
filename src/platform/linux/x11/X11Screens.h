#pragma once

#include "platform/Screens.h"
#include "platform/linux/x11/NativeGeometry.h"

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <optional>

class QScreen;

/// What a panel or dock keeps for itself along one edge of the whole root window.
struct Strut
{
    enum class Edge { Left, Right, Top, Bottom };
    Edge edge;
    int size; // Pixels from that edge of the root window.
    int from, to; // The stretch of the edge that it takes, both included.
};

/// The part of a monitor that struts leave, in native pixels. A strut counts for
/// the monitor in which its inner side lies: one at the edge between two
/// monitors reaches through all of the outer one, which it does not mean.
QRect withoutStruts(const QRect &monitor, const QSize &root, const QList<Strut> &struts);

/// The work area that lies on that monitor, if there is one.
std::optional<QRect> workArea(const QRect &monitor, const QList<QRect> &areas);

/// The toolkit's screens. On several, its available geometry is of no use: it
/// is what one rectangle for the whole desktop, _NET_WORKAREA, leaves of each. So
/// there the work areas are read that some shells tell of each monitor, else the struts of all
/// windows, and those that have some are watched.
class X11Screens final : public Screens, private QAbstractNativeEventFilter
{
public:
    X11Screens();
    QList<Screen> all() const override { return current(); }
    std::optional<Screen> main() const override;

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void watch(const QScreen *screen);
    const QList<Screen> &current() const;
    void forget();
    void tellChange();

    mutable std::optional<QList<Screen>> m_current; // Until the desktop changes.
    QList<Screen> m_told; // As whoever listens knows it.
    bool m_telling = false;
    QList<quint32> m_followed; // Properties, by their atoms.
    QObject m_context; // Ends the connections to the toolkit with us.
};
