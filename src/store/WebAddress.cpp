#include "store/WebAddress.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

/// Characters. Browsers show some 2,000, and a list of links must stay far from
/// the most that a state file may have.
constexpr qsizetype longest = 32768;

bool hasWebScheme(const QString &text)
{
    return text.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)
        || text.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

/// QUrl escapes every "%" of an address that has one without two digits behind it.
QUrl parsed(QString text)
{
    static const QRegularExpression stray(QStringLiteral("%(?![0-9A-Fa-f]{2})"));
    return QUrl(text.replace(stray, QStringLiteral("%25")));
}

}

std::optional<WebAddress> WebAddress::stored(const QString &text)
{
    const bool is = text.isValidUtf16() && (hasWebScheme(text) || QUrl(text).isValid());
    return is ? std::optional(WebAddress(text)) : std::nullopt;
}

std::optional<WebAddress> WebAddress::typed(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.size() > longest || !trimmed.isValidUtf16() || !hasWebScheme(trimmed)
        || std::any_of(trimmed.begin(), trimmed.end(), [](QChar c) { return c.isSpace(); }))
        return std::nullopt;
    const QUrl url = parsed(trimmed);
    if (url.host().isEmpty() || QUrl(QString::fromLatin1(url.toEncoded())) != url)
        return std::nullopt;
    static const QRegularExpression plain(QRegularExpression::anchoredPattern(
        QStringLiteral("(?:[A-Za-z0-9\\-._~:/?#\\[\\]@!$&'()*+,;=]|%[0-9A-Fa-f]{2})*")));
    return plain.match(trimmed).hasMatch() ? WebAddress(trimmed) : WebAddress(url);
}

Address WebAddress::url() const
{
    return { parsed(m_text), m_text.toUtf8() };
}
