#include "app/settings/ToolkitTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>

ToolkitTexts::~ToolkitTexts()
{
    QCoreApplication::removeTranslator(&m_translator);
}

void ToolkitTexts::setLanguage(const QString &code)
{
    QCoreApplication::removeTranslator(&m_translator);
    // The toolkit names the Chinese ones by country.
    const QString name = code == QLatin1String("zh-Hans") ? QStringLiteral("zh_CN")
        : code == QLatin1String("zh-Hant")                ? QStringLiteral("zh_TW")
                                                          : code;
    if (m_translator.load(QStringLiteral("qtbase_") + name,
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_translator);
}
