#pragma once

#include "base/MainQueue.h"
#include "dragdrop/FileDrag.h"
#include "panel/PanelDocking.h"
#include "panel/PanelMotion.h"
#include "platform/PanelWindow.h"
#include "platform/Screens.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class DockTab;
class PointerMonitor;
class Preferences;
struct QuickLookController;

/// The one floating panel: where it appears, when it comes and goes, and who gets
/// its keys and presses. It reads no settings but its own frame. Main thread.
class ShelfPanel
{
public:
    /// Places the window at the top right, or where the user left it last.
    ShelfPanel(PanelWindow &window, Screens &screens, PointerMonitor &pointer,
               Preferences &preferences, DragSession &session, Icons &icons, MainQueue &queue,
               QuickLookController &ql);
    ~ShelfPanel();
    ShelfPanel(const ShelfPanel &) = delete;
    ShelfPanel &operator=(const ShelfPanel &) = delete;

    /// "cursor", "last"; any other word is the top right.
    QString positionMode = QStringLiteral("topRight");

    std::function<bool(const KeyEvent &)> onKey; // True means consumed.
    std::function<void()> onWillShow;
    std::function<void()> onWillHide; // A docked panel is hidden already.
    /// Shows or closes the preview of the chosen files; false where there is none.
    std::function<bool()> onPreview;
    // A press on a row that becomes a drag, as RowDrag tells them.
    std::function<void()> beginPress;
    std::function<std::optional<QList<Address>>()> dragURLs;
    std::function<void()> onDragBegan;
    std::function<void(const QList<Address> &)> onDraggedOut;
    // What the idle watch asks before it docks the panel, as PanelDocking tells them.
    std::function<bool()> canDock;
    std::function<bool()> hasModal;
    std::function<bool()> isPreviewVisible;

    /// Brings the panel up; the front application keeps the keyboard. One that is
    /// up already jumps to its place; a docked one comes back beside its tab, if the
    /// pointer is on that screen.
    void summon();
    /// The same, and gives it the keyboard.
    void summonWithFocus();
    void hide();

    /// Whether it is up and meant to stay. A panel that is fading out is not:
    /// whoever asks wants to know whether it must be summoned.
    bool isVisible() const { return m_motion.isShown(); }
    /// Whether only its tab is up.
    bool isDocked() const { return m_docking.isDocked(); }

    /// Its smallest size grows with the text, and so does its size until the user has chosen one.
    void setTextScale(double scale);
    void setMotion(Motion motion) { m_motion.setMotion(motion); }

    /// The tab outlives the panel. Without one the panel never docks.
    void attachDock(DockTab &tab) { m_docking.attach(tab); }
    /// Off until it is set. Turned off while docked, the panel comes back.
    void setDockEnabled(bool enabled) { m_docking.setEnabled(enabled); }
    /// Puts a panel that is up away to its tab, where docking is enabled.
    void dock() { m_docking.dock(); }
    // A menu of ours, in the tray too, is open: the panel counts as used meanwhile.
    void menuOpened() { m_docking.menuOpened(); }
    void menuClosed() { m_docking.menuClosed(); }

private:
    void connectWindow();
    void connectDocking();
    std::optional<Screen> activeScreen() const;
    QPointF topRightOrigin() const;
    QPointF cursorOrigin() const;
    QPointF lastOrigin() const;
    QPointF originFor(const QString &mode) const;

    void restoreFrame();
    void storeFrame();
    void storeFrameSoon();
    void moveTo(const QPointF &origin);
    bool routeKey(const KeyEvent &event);

    PanelWindow &m_window;
    Screens &m_screens;
    PointerMonitor &m_pointer;
    Preferences &m_preferences;
    MainQueue &m_queue;
    QuickLookController &m_ql;
    RowDrag m_rowDrag;

    double m_textScale = 1;
    PanelMotion m_motion;
    PanelDocking m_docking;
    Ticket m_pendingStore;
};
