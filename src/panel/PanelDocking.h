#pragma once

#include "base/MainQueue.h"
#include "platform/PointerMonitor.h"
#include "platform/Screens.h"
#include "platform/TabWindow.h"

#include <QRectF>

#include <functional>
#include <optional>

class DockTab;
class PanelMotion;
class PanelWindow;

/// Puts an untouched panel away to the nearest screen edge, where a tab stands
/// for it, and brings it back. It watches while the panel is up and undocked;
/// otherwise nothing runs. Main thread.
class PanelDocking
{
public:
    PanelDocking(PanelWindow &window, PanelMotion &motion, Screens &screens,
                 PointerMonitor &pointer, MainQueue &queue);
    ~PanelDocking();
    PanelDocking(const PanelDocking &) = delete;
    PanelDocking &operator=(const PanelDocking &) = delete;

    std::function<bool()> canDock; // Asked when the panel has been idle long enough.
    std::function<bool()> hasModal; // A question waits for the user.
    std::function<bool()> isPreviewVisible;
    std::function<void()> onWillShow;
    std::function<void()> onMoved; // The panel lies, or will come back, at its home.

    void attach(DockTab &tab);
    void setEnabled(bool enabled);

    bool isDocked() const { return m_docked; }
    /// Where a docked panel comes back to; none before the first time.
    const std::optional<QRectF> &home() const { return m_home; }

    /// Only a panel that is up, while docking is enabled.
    void dock();
    /// Brings it back, and keeps it for that many seconds at least.
    void undock(double seconds);
    /// Takes panel and tab away, and leaves the panel where it would have come back.
    void drop();

    /// Whatever happens, the panel stays for that many seconds from now.
    void hold(double seconds);
    /// Watches a panel that is up.
    void startTimer();
    void stopTimer();
    /// While a menu of ours is open the panel counts as used.
    void menuOpened() { m_menuOpen = true; }
    void menuClosed();

private:
    void check();
    void judge(const PointerMonitor::Look &pointer);
    bool isBusy(const PointerMonitor::Look &pointer) const;
    QRectF activeZone() const;
    std::optional<Screen> screen() const;
    QRectF homeOn(const Screen &screen, const QRectF &frame) const;
    QPointF slide() const;
    void relayout();
    void goHome();

    PanelWindow &m_window;
    PanelMotion &m_motion;
    Screens &m_screens;
    PointerMonitor &m_pointer;
    MainQueue &m_queue;
    DockTab *m_tab = nullptr;

    bool m_enabled = false;
    bool m_docked = false;
    DockEdge m_edge = DockEdge::Right;
    std::optional<QRectF> m_home;
    Ticket m_timer; // The idle watch.
    Ticket m_look; // What it asked.
    double m_lastActive = 0; // Uptime at which the panel last counted as used.
    double m_holdUntil = 0; // Uptime before which it does not dock by itself.
    bool m_menuOpen = false;
};
