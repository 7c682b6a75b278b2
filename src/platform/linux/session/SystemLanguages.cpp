#include "platform/linux/session/SystemLanguages.h"

#include <QRegularExpression>

namespace {

QByteArray messagesLocale()
{
    for (const char *variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        if (QByteArray value = qgetenv(variable); !value.isEmpty())
            return value;
    }
    return {};
}

/// Of language[_TERRITORY][.codeset][@modifier]; empty for what is none. Modifiers tell of
/// scripts and variants that no language of ours has, or of currencies.
QString tag(const QByteArray &locale)
{
    // Some write the tag itself.
    static const QRegularExpression form(
        QStringLiteral("^([A-Za-z0-9]{2,8}(?:[_-][A-Za-z0-9]{2,8})*)(?:[.@].*)?$"));
    const QString name = form.match(QString::fromLatin1(locale)).captured(1);
    return name == QLatin1String("POSIX") ? QString() : QString(name).replace(u'_', u'-');
}

}

QStringList SystemLanguages::fromEnvironment()
{
    const QByteArray locale = messagesLocale();
    QStringList result;
    if (tag(locale).isEmpty())
        return result; // Where no language is chosen at all, gettext takes no notice of LANGUAGE.
    for (const QByteArray &entry : QByteArray(qgetenv("LANGUAGE") + ':' + locale).split(':')) {
        const QString language = tag(entry);
        if (!language.isEmpty() && !result.contains(language))
            result.append(language);
    }
    return result;
}
