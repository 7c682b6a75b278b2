#include "platform/linux/x11/X11FrontApplication.h"

#include "platform/linux/ApplicationResolver.h"
#include "platform/linux/x11/X11Watch.h"

X11FrontApplication::X11FrontApplication(const X11Watch &watch, ApplicationResolver &resolver)
    : m_watch(watch)
    , m_resolver(resolver)
{
}

QString X11FrontApplication::identifier() const
{
    for (const qint64 process : m_watch.frontProcesses()) {
        const QString identifier = m_resolver.identifier(process);
        if (!identifier.isEmpty())
            return identifier;
    }
    return {};
}
