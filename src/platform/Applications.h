#pragma once

#include <QList>
#include <QUrl>

/// The applications of the desktop. Every call waits for other programs: worker
/// threads only.
class Applications
{
public:
    virtual ~Applications() = default;
    /// Opens each by itself in its default application, in order; the window that
    /// comes up is in front. What has no application, or fails, is passed over.
    virtual void open(const QList<QUrl> &urls) = 0;
};
