#include "platform/linux/session/JsonPreferences.h"

#include "base/AtomicFile.h"
#include "base/NativeFile.h"

#include <QJsonDocument>

#include <fcntl.h>

#include <cerrno>
#include <cstdio> // renameat2

namespace {

constexpr int mostBroken = 100; // Set aside; beyond that something else is wrong.

std::optional<QJsonObject> parsed(const QByteArray &bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject())
        return {};
    return document.object();
}

}

JsonPreferences::JsonPreferences(const QByteArray &configFolder)
    : m_folder(configFolder + "/Vantle")
    , m_path(m_folder + "/preferences.json")
{
    const auto content = NativeFile::read(m_path);
    const auto object = content.bytes ? parsed(*content.bytes) : std::nullopt;
    m_broken = !object && (content.bytes || content.failure == NativeFile::Failure::Unreadable);
    m_object = object.value_or(QJsonObject());
}

std::optional<QJsonObject> JsonPreferences::predecessor(const QByteArray &configFolder)
{
    const auto content = NativeFile::read(configFolder + "/me.ondra.app.json");
    return content.bytes ? parsed(*content.bytes) : std::nullopt;
}

QJsonValue JsonPreferences::value(const QString &key) const
{
    return m_object.value(key);
}

void JsonPreferences::setValue(const QString &key, const QJsonValue &value)
{
    if (m_stored && m_object.value(key) == value)
        return;
    m_object.insert(key, value);
    m_stored = store();
}

/// Renames what a link points to, not the link: the user's link stays good.
bool JsonPreferences::setAside()
{
    const QByteArray target = AtomicFile::linkTarget(m_path);
    const QByteArray stem = AtomicFile::besideTarget(m_path, "preferences-broken");
    for (int number = 1; number <= mostBroken; ++number) {
        const QByteArray suffix = number == 1 ? QByteArray() : ' ' + QByteArray::number(number);
        const QByteArray name = stem + suffix + ".json";
        if (::renameat2(AT_FDCWD, target.constData(), AT_FDCWD, name.constData(), RENAME_NOREPLACE)
            == 0)
            return true;
        if (errno != EEXIST)
            return errno == ENOENT; // Somebody took it away meanwhile.
    }
    return false;
}

bool JsonPreferences::store()
{
    if (m_broken && !setAside())
        return false;
    m_broken = false;
    return NativeFile::makeFolder(m_folder)
        && AtomicFile::write(m_path, QJsonDocument(m_object).toJson());
}
