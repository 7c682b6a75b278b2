#include "app/settings/Region.h"

#include <QDateTime>

#include <optional>

namespace {

std::optional<QLocale> regionOf(const char *category)
{
    for (const char *variable : { "LC_ALL", category, "LANG" }) {
        const QByteArray value = qgetenv(variable);
        if (value.isEmpty())
            continue;
        const QLocale locale(QString::fromLatin1(value.split('.').first().split('@').first()));
        return locale.language() == QLocale::C ? std::nullopt : std::optional(locale);
    }
    return {};
}

}

QString Region::dateTime(const QDateTime &time, const QString &language)
{
    const QLocale words(language);
    return words.toString(time,
                          regionOf("LC_TIME").value_or(words).dateTimeFormat(QLocale::ShortFormat));
}

QString Region::withRegionsPoint(QString text, const QLocale &language)
{
    const QLocale region = regionOf("LC_NUMERIC").value_or(language);
    return text.replace(language.decimalPoint(), region.decimalPoint());
}
