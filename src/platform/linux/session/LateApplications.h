#pragma once

#include "platform/Applications.h"

#include <functional>
#include <memory>
#include <mutex>

/// The applications of the desktop by a module that is loaded when somebody first asks:
/// with GIO it is libraries that every start of the program would wait for. Where the
/// module is missing there are no applications.
class LateApplications final : public Applications
{
public:
    /// module: the path of vantle-gio.so. userTime: the moment of the user's act in the
    /// window system's time, told to what is started, because window managers keep behind
    /// what does not know it. Called on any thread.
    LateApplications(QString module, std::function<quint32()> userTime);
    void open(const QList<Address> &urls) override { loaded().open(urls); }
    void open(const QList<Address> &urls, const QString &application) override
    {
        loaded().open(urls, application);
    }
    QList<OpenWithApp> thatOpen(const QUrl &url, int limit) override
    {
        return loaded().thatOpen(url, limit);
    }
    QList<InstalledApplication> all() override { return loaded().all(); }
    void reveal(const QList<QUrl> &urls) override { loaded().reveal(urls); }

private:
    Applications &loaded();

    QString m_module;
    std::function<quint32()> m_userTime;
    std::once_flag m_once;
    std::unique_ptr<Applications> m_applications;
};
