#pragma once

#include "base/Observable.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

class Autostart;
class Localizer;
class Preferences;

/// The user's preferences. Each property is kept under a key of its own name:
/// read once here, written back whenever it is set, before anybody else hears of
/// it. No value is checked: readers treat a word that they do not know as their
/// default. Main thread.
class AppSettings
{
public:
    /// Gives the texts their language. `downloads` is a native path, empty if
    /// the desktop names none. Writes nothing.
    AppSettings(Preferences &preferences, Autostart &autostart, Localizer &texts,
                const QByteArray &downloads);
    AppSettings(const AppSettings &) = delete;
    AppSettings &operator=(const AppSettings &) = delete;

    Observable<bool> shakeToSummon;
    Observable<bool> cornerToSummon;
    Observable<QString> saveFolderPath;
    Observable<QString> language; // "system" or a language's code.
    /// Kept by the session, not here: what was set stands until the next start,
    /// even if the session refused.
    Observable<bool> launchAtLogin;
    Observable<QString> summonPosition; // "topRight", "cursor", "last"
    Observable<bool> dockToEdge;
    Observable<QString> autoCleanup; // "off", "1h", "1d", "1w"
    Observable<bool> removeAfterDragOut;
    Observable<QString> dragModifier; // "none", "command", "option", "control", "shift"
    Observable<QStringList> ignoredApps; // Desktop entries' ids.
    Observable<QStringList> watchedFolders; // Paths.
    Observable<QString> doubleClickAction; // "quicklook", "open", "reveal"
    Observable<bool> publicLinks;
    Observable<bool> deleteCloudOnRemove;
    // Set by setHotKey() and resetHotKey() only; a plain set() is not kept.
    Observable<int> hotKeyCode; // Virtual key code.
    Observable<int> hotKeyModifiers; // HotKeyModifier bits.
    Observable<QString> hotKeyLabel;
    Observable<bool> onboarded;

    bool isDefaultHotKey() const;
    /// The label is announced last, when code and modifiers are stored already.
    void setHotKey(int code, int modifiers, const QString &label);
    void resetHotKey();

private:
    template<typename T>
    void writeThrough(Observable<T> &property, const QString &key);

    Preferences &m_preferences;
    std::vector<Ticket> m_tickets;
};
