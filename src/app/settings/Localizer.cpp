#include "app/settings/Localizer.h"

#include "app/settings/StringTable.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <utility>

namespace {

const auto systemWord = QLatin1String("system");
const auto fallbackCode = QLatin1String("en");

QString tablePath(const QString &bundle, const QString &code)
{
    return bundle + QLatin1Char('/') + code + QStringLiteral(".lproj/Localizable.strings");
}

QStringList codesIn(const QString &bundle)
{
    QStringList codes;
    const auto ending = QLatin1String(".lproj");
    // Without a name filter: that would load the toolkit's regular expressions at every start.
    for (const QString &folder : QDir(bundle).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString code = folder.chopped(std::min(folder.size(), ending.size()));
        if (folder.endsWith(ending) && QFile::exists(tablePath(bundle, code)))
            codes.append(code);
    }
    return codes;
}

/// Chinese is told apart by script, which most desktops leave out: Taiwan, Hong
/// Kong and Macau write the traditional one, all others the simplified.
QString withChineseScript(const QStringList &subtags)
{
    const auto holds = [&](const char *subtag) {
        return subtags.contains(QLatin1String(subtag), Qt::CaseInsensitive);
    };
    const bool regionWritesTraditional = holds("TW") || holds("HK") || holds("MO");
    const bool traditional = holds("Hant") || (regionWritesTraditional && !holds("Hans"));
    return traditional ? QStringLiteral("zh-Hant") : QStringLiteral("zh-Hans");
}

/// From the tag itself to its bare language.
QStringList candidates(const QString &tag)
{
    QStringList subtags = tag.split(QLatin1Char('-'));
    if (subtags.first().compare(QLatin1String("zh"), Qt::CaseInsensitive) == 0)
        return { tag, withChineseScript(subtags) };
    QStringList result;
    for (; !subtags.isEmpty(); subtags.removeLast())
        result.append(subtags.join(QLatin1Char('-')));
    return result;
}

QString bestMatch(const QStringList &codes, const QStringList &languages)
{
    for (const QString &language : languages) {
        for (const QString &candidate : candidates(language)) {
            const auto found = std::find_if(codes.begin(), codes.end(), [&](const QString &code) {
                return code.compare(candidate, Qt::CaseInsensitive) == 0;
            });
            if (found != codes.end())
                return *found;
        }
    }
    return fallbackCode;
}

}

Localizer::Localizer(QString bundle, const QStringList &languages)
    : m_bundle(std::move(bundle))
    , m_codes(codesIn(m_bundle))
    , m_systemCode(bestMatch(m_codes, languages))
{
}

std::optional<QString> Localizer::findBundle(const QStringList &places)
{
    for (const QString &place : places) {
        const QString path = place + QStringLiteral("/Vantle_Vantle.bundle");
        if (QDir(path).exists())
            return path;
    }
    return std::nullopt;
}

void Localizer::setOverride(const QString &code)
{
    m_override = code == systemWord ? std::nullopt : std::optional(code);
}

QString Localizer::currentCode() const
{
    return m_override.value_or(m_systemCode);
}

const QString &Localizer::resolvedCode() const
{
    return m_override && m_codes.contains(*m_override) ? *m_override : m_systemCode;
}

QString Localizer::text(const QString &key) const
{
    return table(resolvedCode()).value(key, key);
}

QString Localizer::text(const QString &key, const QVariantList &arguments) const
{
    return arguments.isEmpty() ? text(key) : StringTable::format(text(key), arguments);
}

const Localizer::Table &Localizer::table(const QString &code) const
{
    const auto known = m_tables.constFind(code);
    if (known != m_tables.constEnd())
        return *known;
    QFile file(tablePath(m_bundle, code));
    QString content;
    if (file.open(QIODevice::ReadOnly))
        content = QString::fromUtf8(file.readAll());
    return *m_tables.insert(code, StringTable::parse(content));
}
