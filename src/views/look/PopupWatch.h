#pragma once

#include <QObject>
#include <QSet>

#include <functional>

/// Tells when a menu or another popup of this program opens while none is open,
/// and when the last one has closed. Main thread.
class PopupWatch final : public QObject
{
public:
    PopupWatch();

    std::function<void()> onOpened;
    std::function<void()> onClosed;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    QSet<const QObject *> m_open;
};
