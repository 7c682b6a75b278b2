#include "platform/linux/session/ScreenshotFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/linux/session/KeyFile.h"

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
        if (QByteArray path = pathFrom(value, home); !path.isEmpty())
            return path;
    }
    return {};
}

QByteArray told(const Directories &directories, const QStringList &desktops)
{
    const QByteArray &config = directories.config;
    if (desktops.contains(QLatin1String("KDE"))) {
        const QByteArray file = config + "/spectaclerc";
        return firstOf({ keyFileGroup(file, "ImageSave").value("imageSaveLocation"),
                         keyFileGroup(file, "Save").value("defaultSaveLocation"),
                         keyFileGroup(file, "General").value("screenshotLocation") },
                       directories.home);
    }
    if (desktops.contains(QLatin1String("XFCE"))) {
        const QByteArray channel
            = config + "/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml";
        return firstOf(
            { xfconfValue(channel, QStringLiteral("screenshot-dir")),
              keyFileGroup(config + "/xfce4/xfce4-screenshooter", "").value("screenshot_dir") },
            directories.home);
    }
    return {};
}

}

QByteArray screenshotFolder(const Directories &directories, const QStringList &desktops)
{
    const bool gnome = desktops.contains(QLatin1String("GNOME"));
    QByteArray folder = told(directories, desktops);
    if (folder.isEmpty() && !gnome)
        folder = firstOf({ keyFileGroup(directories.config + "/flameshot/flameshot.ini", "General")
                               .value("savePath") },
                         directories.home);
    if (!folder.isEmpty())
        return folder;
    return directories.pictures + '/'
        + QByteArray(gnome ? ::dgettext("gnome-shell", "Screenshots") : "Screenshots");
}
