#pragma once

#include "platform/Preferences.h"

#include <QJsonObject>

class FakePreferences final : public Preferences
{
public:
    QJsonValue value(const QString &key) const override { return object.value(key); }
    void setValue(const QString &key, const QJsonValue &value) override
    {
        object.insert(key, value);
        ++writes;
    }
    QJsonObject object;
    int writes = 0;
};
