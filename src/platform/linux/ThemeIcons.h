#pragma once

#include "platform/Icons.h"

#include <QHash>
#include <QMimeDatabase>
#include <QString>

/// Icons from the user's theme by MIME type, and the type by the name alone. What
/// the theme lacks comes from Breeze or Adwaita, and without these from two
/// pictures of our own. Main thread.
class ThemeIcons final : public Icons
{
public:
    /// The folder holds "document.svg" and "web-page.svg". The first icon that is
    /// asked for sets the icon theme of the application, where the desktop names one.
    explicit ThemeIcons(QString folder);

    QIcon forFile(const QUrl &url) override;
    QIcon forWebLocation() override;

private:
    QIcon find(const QStringList &names, const QString &fallback);

    QString m_folder;
    bool m_themeChosen = false;
    QMimeDatabase m_types;
    QHash<QString, QIcon> m_icons; // By MIME type.
};
