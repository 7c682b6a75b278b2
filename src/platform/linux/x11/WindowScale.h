#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QSize>
#include <QWidget>

#include <utility>

class QScreen;

/// Keeps every window at its size in points when the dots per inch change at run time,
/// which is how desktops on X11 tell their text size. The toolkit then only paints on
/// another scale; and from the change until it says so, it takes what windows report in
/// the old pixels for new sizes. So the X server is asked for the sizes, once a change.
/// Main thread.
class WindowScale final : private QAbstractNativeEventFilter
{
public:
    WindowScale();

private:
    struct Frame
    {
        QPoint place; // Pixels of the root window.
        QSize size; // Points.
    };
    /// What a window was last given, until the window manager has answered.
    struct Asked
    {
        QSize before; // Pixels.
        QSize size; // Points.
    };
    struct Scale
    {
        double ratio; // Pixels a point that the windows were made for.
        QList<std::pair<QPointer<QWidget>, Frame>> frames; // Noted at a change, still to be fitted.
    };

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void follow(QScreen *screen);
    void note(const QScreen &screen);
    void fitAll(const QScreen &screen);
    QSize sizeInPoints(const QWidget &widget, const QSize &native, const Scale &scale);

    QHash<const QScreen *, Scale> m_scales;
    QHash<const QWidget *, Asked> m_asked;
    QObject m_context; // Ends the connections to the toolkit with us.
};
