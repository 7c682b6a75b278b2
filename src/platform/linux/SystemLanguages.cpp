#include "platform/linux/SystemLanguages.h"

#include <QByteArrayList>

#include <algorithm>

namespace {

QByteArray messagesLocale()
{
    for (const char *variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        if (QByteArray value = qgetenv(variable); !value.isEmpty())
            return value;
    }
    return QByteArrayLiteral("C");
}

bool isPlain(const QByteArray &name)
{
    const QByteArray base = name.split('.').first();
    return base == "C" || base == "POSIX";
}

bool isWord(const QByteArray &part, qsizetype shortest, qsizetype longest)
{
    const auto isAlphanumeric = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return part.size() >= shortest && part.size() <= longest
        && std::all_of(part.begin(), part.end(), isAlphanumeric);
}

/// A locale's modifier tells a script, or a variant of five letters or more, or a
/// currency, which is no matter of language.
void addModifier(QStringList &parts, const QByteArray &modifier)
{
    if (modifier == "latin")
        parts.insert(1, QStringLiteral("Latn"));
    else if (modifier == "cyrillic")
        parts.insert(1, QStringLiteral("Cyrl"));
    else if (modifier == "devanagari")
        parts.insert(1, QStringLiteral("Deva"));
    else if (modifier != "euro" && isWord(modifier, 5, 8))
        parts.append(QString::fromLatin1(modifier));
}

/// language[_TERRITORY][.codeset][@modifier]; empty for what is none.
QString tag(const QByteArray &locale)
{
    const auto at = locale.indexOf('@');
    const QByteArray modifier = at < 0 ? QByteArray() : locale.mid(at + 1);
    QByteArray name = locale.split('@').first().split('.').first();
    name.replace('-', '_'); // Some write the tag itself.

    QStringList parts;
    for (const QByteArray &part : name.split('_')) {
        if (!isWord(part, 2, 8))
            return {};
        parts.append(QString::fromLatin1(part));
    }
    addModifier(parts, modifier);
    return parts.join(QLatin1Char('-'));
}

}

QStringList SystemLanguages::fromEnvironment()
{
    const QByteArray locale = messagesLocale();
    QStringList result;
    // Where no language is chosen at all, gettext takes no notice of LANGUAGE.
    if (!isPlain(locale)) {
        QByteArrayList entries = qgetenv("LANGUAGE").split(':');
        entries.append(locale);
        for (const QByteArray &entry : entries) {
            const QString language = isPlain(entry) ? QString() : tag(entry);
            if (!language.isEmpty() && !result.contains(language))
                result.append(language);
        }
    }
    return result;
}
