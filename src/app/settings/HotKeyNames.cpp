#include "app/settings/HotKeyNames.h"

#include "platform/Modifiers.h"

#include <QHash>

namespace {

constexpr int keyS = 1; // The default combination's key, which may come without its characters.

const QHash<int, QString> &namedKeys()
{
    static const QHash<int, QString> names {
        { 49, QStringLiteral("Space") }, { 36, QStringLiteral("↩") },
        { 48, QStringLiteral("⇥") },     { 51, QStringLiteral("⌫") },
        { 53, QStringLiteral("⎋") },     { 123, QStringLiteral("←") },
        { 124, QStringLiteral("→") },    { 125, QStringLiteral("↓") },
        { 126, QStringLiteral("↑") },    { 122, QStringLiteral("F1") },
        { 120, QStringLiteral("F2") },   { 99, QStringLiteral("F3") },
        { 118, QStringLiteral("F4") },   { 96, QStringLiteral("F5") },
        { 97, QStringLiteral("F6") },    { 98, QStringLiteral("F7") },
        { 100, QStringLiteral("F8") },   { 101, QStringLiteral("F9") },
        { 109, QStringLiteral("F10") },  { 103, QStringLiteral("F11") },
        { 111, QStringLiteral("F12") },
    };
    return names;
}

}

namespace HotKeyNames {

QString label(int code, int modifiers, const QString &characters)
{
    QString text;
    if ((modifiers & HotKeyModifier::Control) != 0)
        text += QStringLiteral("⌃");
    if ((modifiers & HotKeyModifier::Option) != 0)
        text += QStringLiteral("⌥");
    if ((modifiers & HotKeyModifier::Shift) != 0)
        text += QStringLiteral("⇧");
    if ((modifiers & HotKeyModifier::Command) != 0)
        text += QStringLiteral("⌘");
    return text + keyName(code, characters);
}

QString keyName(int code, const QString &characters)
{
    const auto named = namedKeys().constFind(code);
    if (named != namedKeys().constEnd())
        return *named;
    if (!characters.isEmpty())
        return characters.toUpper();
    return code == keyS ? QStringLiteral("S") : QStringLiteral("#%1").arg(code);
}

}
