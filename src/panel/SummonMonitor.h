#pragma once

#include "base/Ticket.h"
#include "platform/Modifiers.h"
#include "platform/PointerMonitor.h"

#include <QPointF>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class DragSelection;
class FrontApplication;
class MainQueue;
class Screens;

/// Tells when a drag with files begins somewhere in the session and when it
/// ends. A press counts as one once the drag selection has changed since it and
/// holds files; then either gesture, each with its own switch, makes it known:
/// the pointer has moved four points (drag), or it has entered the top-right
/// corner of a screen (corner). Main thread.
class SummonMonitor
{
public:
    SummonMonitor(PointerMonitor &pointer, DragSelection &selection, FrontApplication &front,
                  const Screens &screens, MainQueue &queue);
    ~SummonMonitor();
    SummonMonitor(const SummonMonitor &) = delete;
    SummonMonitor &operator=(const SummonMonitor &) = delete;

    /// Both are called from the main queue, never while an event is being judged.
    std::function<void()> onDragStart;
    std::function<void()> onDragEnd;

    bool dragEnabled = true;
    bool cornerEnabled = true;
    Modifiers requiredModifier = 0; // EventModifier bits that the drag gesture demands.
    QSet<QString> ignoredBundleIDs; // In front of these the drag gesture stays silent.

    /// Begins to watch, anew if it did already. Stays silent where the desktop
    /// lets nobody watch.
    void start();
    void stop();

private:
    enum class Front { Unknown, Asked, Told }; // Which application is in front.

    void handle(PointerEvent event);
    void press(const std::optional<QPointF> &at);
    void endDrag();
    void judge(const QPointF &at);
    bool judgeCorner(const QPointF &at);
    void judgeDrag(const QPointF &at);
    bool inCorner(const QPointF &at) const;
    bool isNewFileDrag() const;
    bool mayBeIgnored();
    void begin();
    void emit(std::function<void()> SummonMonitor::*callback);

    PointerMonitor &m_pointer;
    DragSelection &m_selection;
    FrontApplication &m_front;
    const Screens &m_screens;
    MainQueue &m_queue;
    Ticket m_monitor;

    double m_lastFire = 0; // Uptime at which the corner gesture last fired.
    bool m_dragActive = false; // A recognised drag goes on, and onDragEnd is owed.
    bool m_dragIgnored = false; // The drag gesture gave this press up.
    Front m_frontState = Front::Unknown;
    Ticket m_identifying;
    std::optional<QPointF> m_downLocation; // None while no press is open.
    int m_dragBaselineChange; // The selection's change count at the last press.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // What is still in the queue asks.
};
