#include "platform/linux/WindowScale.h"

#include <QApplication>
#include <QBackingStore>
#include <QPointer>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

using Frames = QList<std::pair<QPointer<QWidget>, QRect>>;

Frames framesOn(const QScreen &screen)
{
    Frames frames;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->windowHandle() && widget->screen() == &screen)
            frames.emplaceBack(widget, widget->geometry());
    }
    return frames;
}

/// The place stays the same in pixels where the larger window fits there.
QPoint placeFor(const QWidget &widget, const QRect &frame, const QScreen &screen, double growth)
{
    const QRect room = screen.availableGeometry() - widget.windowHandle()->frameMargins();
    const QPoint origin = screen.geometry().topLeft();
    const QPoint wanted = origin + (frame.topLeft() - origin) / growth;
    return { std::max(room.left(), std::min(wanted.x(), room.right() + 1 - frame.width())),
             std::max(room.top(), std::min(wanted.y(), room.bottom() + 1 - frame.height())) };
}

void fit(QWidget &widget, const QRect &frame)
{
    // What it already has in points, the toolkit would neither ask the X server for nor
    // make a picture of another size for.
    widget.windowHandle()->setGeometry(frame.adjusted(0, 0, 0, 1));
    widget.windowHandle()->setGeometry(frame);
    widget.setGeometry(frame);
    if (QBackingStore *store = widget.backingStore())
        store->resize(frame.size());
    for (QWidget *each : widget.findChildren<QWidget *>())
        each->update();
    widget.update();
}

void follow(QScreen &screen, QObject &context)
{
    const auto changed = [&screen, &context, ratio = screen.devicePixelRatio()]() mutable {
        // The toolkit takes the windows' pixels for their new size in a moment.
        QMetaObject::invokeMethod(
            &context,
            [screen = QPointer(&screen), &ratio, frames = framesOn(screen)] {
                if (!screen)
                    return; // And the ratio with it.
                const double growth = screen->devicePixelRatio() / ratio;
                ratio *= growth;
                for (const auto &[widget, frame] : frames) {
                    if (widget && growth != 1)
                        fit(*widget, { placeFor(*widget, frame, *screen, growth), frame.size() });
                }
            },
            Qt::QueuedConnection);
    };
    QObject::connect(&screen, &QScreen::logicalDotsPerInchChanged, &context, changed);
}

}

void keepWindowsAtScale(QObject &context)
{
    const auto screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        follow(*screen, context);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &context,
                     [&context](QScreen *screen) { follow(*screen, context); });
}
