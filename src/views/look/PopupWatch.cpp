#include "views/look/PopupWatch.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

PopupWatch::PopupWatch()
{
    QApplication::instance()->installEventFilter(this);
}

bool PopupWatch::eventFilter(QObject *object, QEvent *event)
{
    const bool shows = event->type() == QEvent::Show;
    if (!shows && event->type() != QEvent::Hide)
        return false;
    if (!object->isWidgetType() || static_cast<QWidget *>(object)->windowType() != Qt::Popup)
        return false;
    const bool wasOpen = !m_open.isEmpty();
    if (shows)
        m_open.insert(object);
    else
        m_open.remove(object);
    if (wasOpen == m_open.isEmpty()) {
        const auto &tell = wasOpen ? onClosed : onOpened;
        if (tell)
            tell();
    }
    return false;
}
