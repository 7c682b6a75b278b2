#include "platform/linux/session/LateApplications.h"

#include <QLibrary>

#include <cstdio>
#include <utility>

namespace {

class NoApplications final : public Applications
{
    void open(const QList<QUrl> &) override { }
    void open(const QList<QUrl> &, const QString &) override { }
    QList<OpenWithApp> thatOpen(const QUrl &, int) override { return {}; }
    QList<InstalledApplication> all() override { return {}; }
    void reveal(const QList<QUrl> &) override { }
};

}

LateApplications::LateApplications(QString module, std::function<quint32()> userTime)
    : m_module(std::move(module))
    , m_userTime(std::move(userTime))
{
}

Applications &LateApplications::loaded()
{
    std::call_once(m_once, [this] {
        QLibrary module(m_module);
        using Make = Applications *(*)(const std::function<quint32()> &);
        if (const auto make = reinterpret_cast<Make>(module.resolve("vantleApplications"))) {
            m_applications.reset(make(m_userTime));
        } else {
            std::fprintf(stderr, "Vantle: %s\n", qPrintable(module.errorString()));
            m_applications = std::make_unique<NoApplications>();
        }
    });
    return *m_applications;
}

void LateApplications::open(const QList<QUrl> &urls)
{
    loaded().open(urls);
}

void LateApplications::open(const QList<QUrl> &urls, const QString &application)
{
    loaded().open(urls, application);
}

QList<OpenWithApp> LateApplications::thatOpen(const QUrl &url, int limit)
{
    return loaded().thatOpen(url, limit);
}

QList<InstalledApplication> LateApplications::all()
{
    return loaded().all();
}

void LateApplications::reveal(const QList<QUrl> &urls)
{
    loaded().reveal(urls);
}
