#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <functional>

class QDBusPendingCallWatcher;
class QWidget;

/// A question for a folder by the desktop's own dialog (org.freedesktop.portal.FileChooser,
/// with "directory" since version 3). Main thread; nothing waits.
class PortalFolder final : public QObject
{
    Q_OBJECT

public:
    /// Asks, in front of that window and no longer than it lives. While one question is open
    /// there, another is none. chosen: not called where the user chose nothing. unavailable:
    /// where no portal asks, or the question ended without the user.
    /// handle: the window as portals name it, after its window system.
    static void ask(const QDBusConnection &bus, QWidget &window, const QString &handle,
                    const QString &title, std::function<void(const QUrl &)> chosen,
                    std::function<void()> unavailable);

private:
    PortalFolder(QDBusConnection bus, QWidget &window, const QString &handle, const QString &title,
                 std::function<void(const QUrl &)> chosen, std::function<void()> unavailable);
    void answered(QDBusPendingCallWatcher *call);
    void listenAt(const QString &path);
    Q_SLOT void respond(uint response, const QVariantMap &results);
    void end(const std::function<void()> &then);

    QDBusConnection m_bus;
    std::function<void(const QUrl &)> m_chosen;
    std::function<void()> m_unavailable;
    QString m_path; // Of the portal's object for this question.
};
