#include "platform/linux/ScreenshotFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <QXmlStreamReader>

#include <libintl.h>

namespace {

/// A path, or a file URL, or one below "~" or "$HOME"; empty if it is none of these.
QByteArray pathFrom(QByteArray value, const QByteArray &home)
{
    value.replace("$HOME", home);
    if (value.startsWith("file:"))
        return FilePath::fromUrl(QUrl::fromEncoded(value));
    if (value == "~" || value.startsWith("~/"))
        return home + value.mid(1);
    return value.startsWith('/') ? FilePath::standardized(value) : QByteArray();
}

/// The value of a key in a group of an INI file; the group "" stands before the
/// first one. KDE marks a value that holds variables with "[$e]" after its key.
QByteArray iniValue(const QByteArray &file, const QByteArray &group, const QByteArray &key)
{
    QByteArray current;
    for (const QByteArray &raw : NativeFile::read(file).bytes.value_or(QByteArray()).split('\n')) {
        const QByteArray line = raw.trimmed();
        const auto equals = line.indexOf('=');
        if (line.startsWith('[') && line.endsWith(']'))
            current = line.mid(1, line.size() - 2);
        else if (current == group && line.left(equals).trimmed().replace("[$e]", "") == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}

/// The value of a property of an xfconf channel file.
QByteArray xfconfValue(const QByteArray &file, const QString &property)
{
    QXmlStreamReader reader(NativeFile::read(file).bytes.value_or(QByteArray()));
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto attributes = reader.attributes();
        if (attributes.value(QLatin1String("name")) == property)
            return attributes.value(QLatin1String("value")).toUtf8();
    }
    return {};
}

QByteArray firstOf(std::initializer_list<QByteArray> values, const QByteArray &home)
{
    for (const QByteArray &value : values) {
        const QByteArray path = pathFrom(value, home);
        if (!path.isEmpty())
            return path;
    }
    return {};
}

QByteArray told(const Directories &directories, const QStringList &desktops)
{
    const QByteArray &config = directories.config;
    if (desktops.contains(QLatin1String("KDE"))) {
        const QByteArray file = config + "/spectaclerc";
        return firstOf({ iniValue(file, "ImageSave", "imageSaveLocation"),
                         iniValue(file, "Save", "defaultSaveLocation"),
                         iniValue(file, "General", "screenshotLocation") },
                       directories.home);
    }
    if (desktops.contains(QLatin1String("XFCE"))) {
        const QByteArray channel
            = config + "/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml";
        return firstOf({ xfconfValue(channel, QStringLiteral("screenshot-dir")),
                         iniValue(config + "/xfce4/xfce4-screenshooter", "", "screenshot_dir") },
                       directories.home);
    }
    return {};
}

}

QByteArray screenshotFolder(const Directories &directories, const QStringList &desktops)
{
    QByteArray folder = told(directories, desktops);
    if (folder.isEmpty() && !desktops.contains(QLatin1String("GNOME")))
        folder = firstOf(
            { iniValue(directories.config + "/flameshot/flameshot.ini", "General", "savePath") },
            directories.home);
    if (!folder.isEmpty())
        return folder;
    const bool gnome = desktops.contains(QLatin1String("GNOME"));
    return directories.pictures + '/'
        + QByteArray(gnome ? ::dgettext("gnome-shell", "Screenshots") : "Screenshots");
}
