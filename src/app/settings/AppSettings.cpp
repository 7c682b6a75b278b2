#include "app/settings/AppSettings.h"

#include "app/settings/HotKeyNames.h"
#include "app/settings/Localizer.h"
#include "app/settings/LoginItem.h"
#include "platform/Autostart.h"
#include "platform/Modifiers.h"
#include "platform/Preferences.h"

#include <QJsonArray>
#include <QJsonValue>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

constexpr int defaultCode = 1; // The S key.
constexpr int defaultModifiers = HotKeyModifier::Command | HotKeyModifier::Option;

constexpr QLatin1String codeKey("hotKeyCode");
constexpr QLatin1String modifiersKey("hotKeyModifiers");
constexpr QLatin1String labelKey("hotKeyLabel");

/// Reads typed values; one of another type counts as absent.
struct Reader
{
    bool flag(const char *key, bool fallback) const { return value(key).toBool(fallback); }

    QString string(const char *key, const QString &fallback) const
    {
        return value(key).toString(fallback);
    }

    int integer(QLatin1String key, int fallback) const
    {
        const QJsonValue stored = preferences.value(key);
        // 64 bits first: a whole number that no int holds counts as absent too.
        constexpr auto absent = std::numeric_limits<qint64>::max();
        const qint64 number = stored.isDouble() ? stored.toInteger(absent) : absent;
        const bool fits = number >= std::numeric_limits<int>::min()
            && number <= std::numeric_limits<int>::max();
        return fits ? static_cast<int>(number) : fallback;
    }

    QStringList strings(const char *key) const
    {
        const QJsonArray array = value(key).toArray();
        const auto isString = [](const QJsonValue &element) { return element.isString(); };
        if (!std::all_of(array.begin(), array.end(), isString))
            return {};
        QStringList result;
        for (const auto &element : array)
            result.append(element.toString());
        return result;
    }

    QJsonValue value(const char *key) const { return preferences.value(QLatin1String(key)); }

    const Preferences &preferences;
};

/// A path that is no text cannot be a setting: better none than another folder's.
QString asText(const QByteArray &path)
{
    const QString text = QString::fromUtf8(path);
    return text.toUtf8() == path ? text : QString();
}

QString defaultLabel(int code, int modifiers)
{
    return HotKeyNames::label(code, modifiers, {});
}

}

AppSettings::AppSettings(Preferences &preferences, Autostart &autostart, Localizer &texts,
                         const QByteArray &downloads)
    : shakeToSummon(Reader { preferences }.flag("shakeToSummon", true))
    , cornerToSummon(Reader { preferences }.flag("cornerToSummon", true))
    , saveFolderPath(Reader { preferences }.string("saveFolderPath", asText(downloads)))
    , language(Reader { preferences }.string("language", QStringLiteral("system")))
    , launchAtLogin(autostart.enabled())
    , summonPosition(Reader { preferences }.string("summonPosition", QStringLiteral("topRight")))
    , dockToEdge(Reader { preferences }.flag("dockToEdge", true))
    , autoCleanup(Reader { preferences }.string("autoCleanup", QStringLiteral("off")))
    , removeAfterDragOut(Reader { preferences }.flag("removeAfterDragOut", false))
    , dragModifier(Reader { preferences }.string("dragModifier", QStringLiteral("none")))
    , ignoredApps(Reader { preferences }.strings("ignoredApps"))
    , watchedFolders(Reader { preferences }.strings("watchedFolders"))
    , doubleClickAction(
          Reader { preferences }.string("doubleClickAction", QStringLiteral("quicklook")))
    , publicLinks(Reader { preferences }.flag("publicLinks", true))
    , deleteCloudOnRemove(Reader { preferences }.flag("deleteCloudOnRemove", false))
    , hotKeyCode(Reader { preferences }.integer(codeKey, defaultCode))
    , hotKeyModifiers(Reader { preferences }.integer(modifiersKey, defaultModifiers))
    , hotKeyLabel(Reader { preferences }.string(
          labelKey.data(), defaultLabel(hotKeyCode.value(), hotKeyModifiers.value())))
    , onboarded(Reader { preferences }.flag("onboarded", false))
    , m_preferences(preferences)
{
    texts.setOverride(language.value());

    writeThrough(shakeToSummon, QStringLiteral("shakeToSummon"));
    writeThrough(cornerToSummon, QStringLiteral("cornerToSummon"));
    writeThrough(saveFolderPath, QStringLiteral("saveFolderPath"));
    writeThrough(language, QStringLiteral("language"));
    writeThrough(summonPosition, QStringLiteral("summonPosition"));
    writeThrough(dockToEdge, QStringLiteral("dockToEdge"));
    writeThrough(autoCleanup, QStringLiteral("autoCleanup"));
    writeThrough(removeAfterDragOut, QStringLiteral("removeAfterDragOut"));
    writeThrough(dragModifier, QStringLiteral("dragModifier"));
    writeThrough(ignoredApps, QStringLiteral("ignoredApps"));
    writeThrough(watchedFolders, QStringLiteral("watchedFolders"));
    writeThrough(doubleClickAction, QStringLiteral("doubleClickAction"));
    writeThrough(publicLinks, QStringLiteral("publicLinks"));
    writeThrough(deleteCloudOnRemove, QStringLiteral("deleteCloudOnRemove"));
    writeThrough(onboarded, QStringLiteral("onboarded"));

    m_tickets.push_back(language.subscribe(
        [&texts](const QString &code) { texts.setOverride(code); }, Deliver::ChangesOnly));
    m_tickets.push_back(launchAtLogin.subscribe(
        [&autostart](bool enabled) { LoginItem::set(autostart, enabled); }, Deliver::ChangesOnly));
}

/// Subscribed before anybody else, and with the delivered value: the property
/// itself still holds the old one then.
template<typename T>
void AppSettings::writeThrough(Observable<T> &property, const QString &key)
{
    m_tickets.push_back(property.subscribe(
        [this, key](const T &value) {
            if constexpr (std::is_same_v<T, QStringList>)
                m_preferences.setValue(key, QJsonArray::fromStringList(value));
            else
                m_preferences.setValue(key, value);
        },
        Deliver::ChangesOnly));
}

bool AppSettings::isDefaultHotKey() const
{
    return hotKeyCode.value() == defaultCode && hotKeyModifiers.value() == defaultModifiers;
}

void AppSettings::setHotKey(int code, int modifiers, const QString &label)
{
    hotKeyCode.set(code);
    hotKeyModifiers.set(modifiers);
    m_preferences.setValue(codeKey, code);
    m_preferences.setValue(modifiersKey, modifiers);
    m_preferences.setValue(labelKey, label);
    hotKeyLabel.set(label);
}

void AppSettings::resetHotKey()
{
    setHotKey(defaultCode, defaultModifiers, defaultLabel(defaultCode, defaultModifiers));
}
