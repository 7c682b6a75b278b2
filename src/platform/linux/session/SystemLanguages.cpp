#include "platform/linux/session/SystemLanguages.h"

#include <algorithm>

namespace {

QByteArray messagesLocale()
{
    for (const char *variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        if (QByteArray value = qgetenv(variable); !value.isEmpty())
            return value;
    }
    return {};
}

bool isLetterOrDigit(char each)
{
    return (each >= '0' && each <= '9') || (each >= 'A' && each <= 'Z')
        || (each >= 'a' && each <= 'z');
}

/// Of language[_TERRITORY][.codeset][@modifier]; empty for what is none. Modifiers tell of
/// scripts and variants that no language of ours has, or of currencies.
QString tag(const QByteArray &locale)
{
    const auto end = std::find_if(locale.begin(), locale.end(),
                                  [](char letter) { return letter == '.' || letter == '@'; });
    // Some write the tag itself.
    const QByteArray name = QByteArray(locale.begin(), end - locale.begin()).replace('_', '-');
    const auto isWord = [](const QByteArray &word) {
        return word.size() >= 2 && word.size() <= 8
            && std::all_of(word.begin(), word.end(), isLetterOrDigit);
    };
    const auto words = name.split('-');
    const bool isTag = name != "POSIX" && std::all_of(words.begin(), words.end(), isWord);
    return isTag ? QString::fromLatin1(name) : QString();
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
