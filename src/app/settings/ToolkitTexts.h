#pragma once

#include <QTranslator>

/// The toolkit's own texts, of field menus, dialogs and buttons, in a language of ours. Where
/// its translations are not installed they stay English. Main thread; needs a QCoreApplication.
class ToolkitTexts
{
public:
    ToolkitTexts() = default;
    ~ToolkitTexts();
    ToolkitTexts(const ToolkitTexts &) = delete;
    ToolkitTexts &operator=(const ToolkitTexts &) = delete;

    /// A code of the string tables ("de", "zh-Hant").
    void setLanguage(const QString &code);

private:
    QTranslator m_translator;
};
