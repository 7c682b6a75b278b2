#pragma once

#include "platform/Applications.h"

#include <QtGlobal>

#include <functional>

/// GIO's knowledge of types and applications, and the file manager by its bus name.
/// In a module of its own, which LateApplications loads.
class GioApplications final : public Applications
{
public:
    /// userTime: the moment of the user's act in the window system's time, told to
    /// what is started, because window managers keep behind what does not know it.
    /// Called on any thread.
    explicit GioApplications(std::function<quint32()> userTime);
    void open(const QList<QUrl> &urls) override;
    void open(const QList<QUrl> &urls, const QString &application) override;
    QList<OpenWithApp> thatOpen(const QUrl &url, int limit) override;
    QList<InstalledApplication> all() override;
    void reveal(const QList<QUrl> &urls) override;

private:
    std::function<quint32()> m_userTime;
};
