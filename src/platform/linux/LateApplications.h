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
    /// userTime: as GioApplications takes it.
    explicit LateApplications(std::function<quint32()> userTime);
    void open(const QList<QUrl> &urls) override;
    void open(const QList<QUrl> &urls, const QString &application) override;
    QList<OpenWithApp> thatOpen(const QUrl &url, int limit) override;
    QList<InstalledApplication> all() override;
    void reveal(const QList<QUrl> &urls) override;

private:
    Applications &loaded();

    std::function<quint32()> m_userTime;
    std::once_flag m_once;
    std::unique_ptr<Applications> m_applications;
};
