#include "platform/ShortcutText.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {

struct ModifierName
{
    QChar symbol;
    QLatin1String name;
};

// In the order in which desktops write them.
constexpr std::array modifierNames {
    ModifierName { u'⌃', QLatin1String("Super") },
    ModifierName { u'⌘', QLatin1String("Ctrl") },
    ModifierName { u'⌥', QLatin1String("Alt") },
    ModifierName { u'⇧', QLatin1String("Shift") },
};

/// Keys that settings name by a symbol, or by their code where they type nothing.
const QHash<QString, QString> &keyNames()
{
    static const QHash<QString, QString> names {
        { QStringLiteral("↩"), QStringLiteral("Return") },
        { QStringLiteral("⇥"), QStringLiteral("Tab") },
        { QStringLiteral("⌫"), QStringLiteral("Backspace") },
        { QStringLiteral("⎋"), QStringLiteral("Esc") },
        { QStringLiteral("←"), QStringLiteral("Left") },
        { QStringLiteral("→"), QStringLiteral("Right") },
        { QStringLiteral("↓"), QStringLiteral("Down") },
        { QStringLiteral("↑"), QStringLiteral("Up") },
        { QStringLiteral("#71"), QStringLiteral("Num Lock") },
        { QStringLiteral("#76"), QStringLiteral("Enter") },
        { QStringLiteral("#110"), QStringLiteral("Menu") },
        { QStringLiteral("#114"), QStringLiteral("Insert") },
        { QStringLiteral("#115"), QStringLiteral("Home") },
        { QStringLiteral("#116"), QStringLiteral("Page Up") },
        { QStringLiteral("#117"), QStringLiteral("Delete") },
        { QStringLiteral("#119"), QStringLiteral("End") },
        { QStringLiteral("#121"), QStringLiteral("Page Down") },
    };
    return names;
}

}

QString shortcutText(const QString &label)
{
    qsizetype end = 0;
    const auto isModifier = [](QChar symbol) {
        return std::any_of(modifierNames.begin(), modifierNames.end(),
                           [symbol](const auto &modifier) { return modifier.symbol == symbol; });
    };
    // The last symbol is the key, whatever it is.
    while (end + 1 < label.size() && isModifier(label.at(end)))
        ++end;
    QStringList parts;
    for (const ModifierName &modifier : modifierNames) {
        if (label.left(end).contains(modifier.symbol))
            parts.append(modifier.name);
    }
    const QString key = label.mid(end);
    parts.append(keyNames().value(key, key));
    return parts.join(u'+');
}
