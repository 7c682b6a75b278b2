#include "platform/linux/TrayLabel.h"

QString trayLabel(const QString &title, TrayKind kind)
{
    QString label = title;
    // The toolkit's menus take what follows a tab for a shortcut.
    label.replace(u'\t', u' ').replace(u'\n', u' ');
    if (kind == TrayKind::Embedded)
        return label.replace(u'&', QStringLiteral("&&"));
    // Over the bus an underscore marks the mnemonic and two are one. The toolkit
    // turns the first ampersand into such a mark and leaves the others alone, so
    // it is given one of its own to turn, before the first character.
    label.replace(u'_', QStringLiteral("__"));
    return label.contains(u'&') ? u'&' + label : label;
}
