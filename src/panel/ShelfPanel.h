#pragma once

#include "base/MainQueue.h"
#include "dragdrop/FileDrag.h"
#include "panel/Animation.h"
#include "platform/PanelWindow.h"
#include "platform/Screens.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class PointerMonitor;
class Preferences;
struct QuickLookController;

/// The one floating panel: where it appears, how it comes and goes, and who gets
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
    /// Shows or closes the preview of the chosen files; false where there is none.
    std::function<bool()> onPreview;
    // A press on a row that becomes a drag, as RowDrag tells them.
    std::function<void()> beginPress;
    std::function<std::optional<QList<QUrl>>()> dragURLs;
    std::function<void(const QList<QUrl> &)> onDraggedOut;

    /// Brings the panel up; the front application keeps the keyboard. One that is
    /// up already jumps to its place.
    void summon();
    /// The same, and gives it the keyboard.
    void summonWithFocus();
    void hide();

    /// Whether it is up and meant to stay. A panel that is fading out is not:
    /// whoever asks wants to know whether it must be summoned.
    bool isVisible() const { return m_shown; }
    bool isDocked() const { return false; }

private:
    std::optional<Screen> activeScreen() const;
    std::optional<Screen> screenOf(const QRectF &frame) const;
    QPointF topRightOrigin() const;
    QPointF cursorOrigin() const;
    QPointF lastOrigin() const;
    QPointF originFor(const QString &mode) const;

    void restoreFrame();
    void storeFrame();
    void moveTo(const QPointF &origin);
    void setAppearance(double opacity, double slide);
    bool routeKey(const KeyEvent &event);

    PanelWindow &m_window;
    Screens &m_screens;
    PointerMonitor &m_pointer;
    Preferences &m_preferences;
    MainQueue &m_queue;
    QuickLookController &m_ql;
    RowDrag m_rowDrag;

    Animation m_animation;
    bool m_shown = false;
    double m_opacity = 1;
    double m_slide = 0; // Points by which the contents stand below their place; above, if negative.
    Ticket m_pendingStore;
};
