#pragma once

#include <QIcon>

/// The program's icon for title bars and window lists: the theme's, else our own.
inline QIcon programIcon(const QString &resources)
{
    const QString name = QStringLiteral("app.vantleapp.Vantle");
    return QIcon::fromTheme(
        name, QIcon(resources + QStringLiteral("/icons/") + name + QStringLiteral(".svg")));
}
