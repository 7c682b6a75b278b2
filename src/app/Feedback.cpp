#include "app/Feedback.h"

#include <QUrlQuery>

#include <array>

namespace {

/// The site's folders. English lies at its root.
QString pathFor(const QString &code)
{
    static const std::array<const char *, 8> codes { "zh-Hans", "zh-Hant", "fr", "es",
                                                     "de",      "it",      "ja", "ko" };
    for (const char *each : codes) {
        if (code == QLatin1String(each))
            return code.toLower() + u'/';
    }
    return {};
}

}

QUrl feedbackAddress(const QString &site, const QString &languageCode, const QString &version)
{
    QUrl address(site + pathFor(languageCode), QUrl::StrictMode);
    if (!address.isValid() || address.host().isEmpty())
        return {};
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("app"), version);
    address.setQuery(query);
    address.setFragment(QStringLiteral("feedback"));
    return address;
}
