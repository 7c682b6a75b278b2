#include "platform/linux/session/LateApplications.h"

#include <QLibrary>

#include <cstdio>
#include <utility>

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
            m_applications = std::make_unique<Applications>();
        }
    });
    return *m_applications;
}
