#include "platform/linux/session/ThemeIcons.h"

#include "base/FilePath.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace {

bool isInstalled(const QString &theme)
{
    const QStringList places = QIcon::themeSearchPaths();
    return !theme.isEmpty() && std::ranges::any_of(places, [&](const auto &place) {
        return QFileInfo::exists(place + u'/' + theme + QStringLiteral("/index.theme"));
    });
}

/// The toolkit knows the icon theme of some desktops only; most others have a
/// settings manager that tells it.
void chooseTheme(const ManagedSettings &settings)
{
    const QString named = settings.value("Net/IconThemeName").toString();
    if (isInstalled(named))
        QIcon::setThemeName(named);
    for (const auto &theme : { QStringLiteral("breeze"), QStringLiteral("Adwaita") }) {
        if (!isInstalled(theme))
            continue;
        // "hicolor" is what the toolkit takes for want of anything better; it
        // has no icons of file types.
        const QString current = QIcon::themeName();
        if (current == QLatin1String("hicolor") || !isInstalled(current))
            QIcon::setThemeName(theme);
        QIcon::setFallbackThemeName(theme);
        return;
    }
}

/// "breeze" and "breeze-dark", "Papirus" and "Papirus-Dark".
void chooseVariant(DesktopLook::Scheme scheme)
{
    if (scheme == DesktopLook::Scheme::NoPreference)
        return;
    QString plain = QIcon::themeName();
    if (plain.endsWith(QLatin1String("-dark"), Qt::CaseInsensitive))
        plain.chop(5);
    const QStringList names = scheme == DesktopLook::Scheme::Light
        ? QStringList { plain }
        : QStringList { plain + QStringLiteral("-dark"), plain + QStringLiteral("-Dark") };
    const auto found = std::ranges::find_if(names, isInstalled);
    if (found != names.end())
        QIcon::setThemeName(*found);
}

}

ThemeIcons::ThemeIcons(QString folder, ReadSettings readSettings)
    : m_folder(std::move(folder))
    , m_readSettings(std::move(readSettings))
{
}

void ThemeIcons::setScheme(DesktopLook::Scheme scheme)
{
    if (std::exchange(m_scheme, scheme) == scheme)
        return;
    m_icons.clear();
    if (m_themeChosen)
        chooseVariant(scheme);
}

QIcon ThemeIcons::forFile(const QUrl &url)
{
    const bool isFolder = url.path(QUrl::FullyEncoded).endsWith(u'/');
    const QMimeType type = isFolder ? m_types.mimeTypeForName(QStringLiteral("inode/directory"))
                                    : FilePath::typeByName(FilePath::fromUrl(url));
    QIcon &icon = m_icons[type.name()];
    if (icon.isNull()) {
        const QStringList names = isFolder
            ? QStringList { QStringLiteral("folder"), QStringLiteral("inode-directory") }
            : QStringList { type.iconName(), type.genericIconName(), QStringLiteral("unknown"),
                            QStringLiteral("text-x-generic") };
        icon = find(names, QStringLiteral("/document.svg"));
    }
    return icon;
}

QIcon ThemeIcons::forWebLocation()
{
    QIcon &icon = m_icons[QString()];
    if (icon.isNull())
        icon = find({ QStringLiteral("text-html") }, QStringLiteral("/web-page.svg"));
    return icon;
}

QIcon ThemeIcons::find(const QStringList &names, const QString &fallback)
{
    if (!std::exchange(m_themeChosen, true)) {
        chooseTheme(m_readSettings());
        chooseVariant(m_scheme);
    }
    for (const QString &name : names) {
        if (QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    }
    return QIcon(m_folder + fallback);
}
