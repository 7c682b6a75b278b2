#include "app/settings/ShortcutText.h"

#include "app/settings/Localizer.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {

struct ModifierName
{
    QChar symbol;
    const char *key; // Of its text.
};

// In the order in which desktops write them.
constexpr std::array modifierNames {
    ModifierName { u'⌃', "key_super" },
    ModifierName { u'⌘', "key_control" },
    ModifierName { u'⌥', "key_alt" },
    ModifierName { u'⇧', "key_shift" },
};

/// The texts of keys that settings name by a symbol, or by their code where they type nothing.
const QHash<QString, QString> &keyNames()
{
    static const QHash<QString, QString> names {
        { QStringLiteral("↩"), QStringLiteral("key_return") },
        { QStringLiteral("⇥"), QStringLiteral("key_tab") },
        { QStringLiteral("⌫"), QStringLiteral("key_backspace") },
        { QStringLiteral("⎋"), QStringLiteral("key_escape") },
        { QStringLiteral("←"), QStringLiteral("key_left") },
        { QStringLiteral("→"), QStringLiteral("key_right") },
        { QStringLiteral("↓"), QStringLiteral("key_down") },
        { QStringLiteral("↑"), QStringLiteral("key_up") },
        { QStringLiteral("Space"), QStringLiteral("key_space") },
        { QStringLiteral("#71"), QStringLiteral("key_num_lock") },
        { QStringLiteral("#76"), QStringLiteral("key_enter") },
        { QStringLiteral("#110"), QStringLiteral("key_menu") },
        { QStringLiteral("#114"), QStringLiteral("key_insert") },
        { QStringLiteral("#115"), QStringLiteral("key_home") },
        { QStringLiteral("#116"), QStringLiteral("key_page_up") },
        { QStringLiteral("#117"), QStringLiteral("key_delete") },
        { QStringLiteral("#119"), QStringLiteral("key_end") },
        { QStringLiteral("#121"), QStringLiteral("key_page_down") },
    };
    return names;
}

}

QString shortcutText(const QString &label, const Localizer &texts)
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
            parts.append(texts.text(QLatin1String(modifier.key)));
    }
    const QString key = label.mid(end);
    const QString name = keyNames().value(key);
    parts.append(name.isEmpty() ? key : texts.text(name));
    return parts.join(u'+');
}
