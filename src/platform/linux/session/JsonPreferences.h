#pragma once

#include "platform/Preferences.h"

#include <QByteArray>
#include <QJsonObject>

#include <optional>

/// "Vantle/preferences.json" in the configuration folder: one JSON object, read
/// once and replaced atomically. Keys of other versions stay. A file that cannot
/// be read as such an object counts as empty and is set aside, as
/// "preferences-broken.json", before it would be overwritten.
class JsonPreferences final : public Preferences
{
public:
    explicit JsonPreferences(const QByteArray &configFolder);

    QJsonValue value(const QString &key) const override;
    void setValue(const QString &key, const QJsonValue &value) override;

    /// What the program that this one succeeds left behind, if anything.
    static std::optional<QJsonObject> predecessor(const QByteArray &configFolder);

private:
    bool setAside();
    bool store();

    QByteArray m_folder;
    QByteArray m_path;
    QJsonObject m_object;
    bool m_broken = false; // The file holds something that must not be overwritten.
    bool m_stored = true; // The file holds m_object.
};
