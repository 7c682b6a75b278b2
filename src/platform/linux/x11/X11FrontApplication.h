#pragma once

#include "platform/FrontApplication.h"

#include <QtGlobal>

class ApplicationResolver;
class X11Watch;

/// The application of the active window; where that cannot be told, the one that
/// announced the drag. Waits for the X server only.
class X11FrontApplication final : public FrontApplication
{
public:
    X11FrontApplication(const X11Watch &watch, ApplicationResolver &resolver);
    QString identifier() const override;

private:
    const X11Watch &m_watch;
    ApplicationResolver &m_resolver;
};
