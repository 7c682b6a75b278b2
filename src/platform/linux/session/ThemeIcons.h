#pragma once

#include "platform/DesktopLook.h"
#include "platform/Icons.h"
#include "platform/linux/session/WindowSystem.h"

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
    ThemeIcons(QString folder, ReadSettings readSettings);

    /// The variant of the theme that suits it, where there is one.
    void setScheme(DesktopLook::Scheme scheme);

    QIcon forFile(const QUrl &url) override;
    QIcon forWebLocation() override;

private:
    QIcon find(const QStringList &names, const QString &fallback);

    QString m_folder;
    const ReadSettings m_readSettings;
    DesktopLook::Scheme m_scheme = DesktopLook::Scheme::NoPreference;
    bool m_themeChosen = false;
    QMimeDatabase m_types;
    QHash<QString, QIcon> m_icons; // By MIME type.
};
