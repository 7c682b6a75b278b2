#pragma once

#include <QJsonValue>
#include <QString>

/// A persistent key-value store for one user. Main thread.
class Preferences
{
public:
    virtual ~Preferences() = default;
    /// Undefined when the key is absent, which is not the same as false or 0.
    virtual QJsonValue value(const QString &key) const = 0;
    /// Stored before it returns. A failure to write is silent: the value holds
    /// for this run, and the next change tries again.
    virtual void setValue(const QString &key, const QJsonValue &value) = 0;
};
