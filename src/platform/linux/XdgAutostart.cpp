#include "platform/linux/XdgAutostart.h"

#include "base/AtomicFile.h"
#include "base/NativeFile.h"

#include <QList>

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <system_error>
#include <utility>

namespace {

/// A string value of a desktop entry.
QByteArray escapedValue(QByteArray text)
{
    return text.replace('\\', "\\\\")
        .replace('\n', "\\n")
        .replace('\t', "\\t")
        .replace('\r', "\\r");
}

/// One argument of an Exec line: quoted, its percent signs doubled, and all that
/// written as a string value.
QByteArray execArgument(const QByteArray &path)
{
    QByteArray quoted = "\"";
    for (const char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            quoted += '\\';
        if (c == '%')
            quoted += '%';
        quoted += c;
    }
    return escapedValue(quoted + '"');
}

/// The value of a key in the entry's own group; empty where it is missing.
QByteArray valueOf(const QByteArray &entry, const QByteArray &key)
{
    bool ownGroup = false;
    for (const QByteArray &line : entry.split('\n')) {
        if (line.startsWith('['))
            ownGroup = line.trimmed() == "[Desktop Entry]";
        const auto equals = line.indexOf('=');
        if (ownGroup && equals > 0 && line.left(equals).trimmed() == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}

QString lastError()
{
    return QString::fromStdString(std::system_category().message(errno));
}

}

XdgAutostart::XdgAutostart(const QByteArray &configFolder, QByteArray executable)
    : m_folder(configFolder + "/autostart")
    , m_path(m_folder + "/app.vantleapp.Vantle.desktop")
    , m_executable(std::move(executable))
{
}

bool XdgAutostart::enabled() const
{
    const auto content = NativeFile::read(m_path);
    return content.bytes && valueOf(*content.bytes, "Hidden") != "true"
        && valueOf(*content.bytes, "X-GNOME-Autostart-enabled") != "false";
}

std::optional<QString> XdgAutostart::setEnabled(bool enabled)
{
    if (!enabled) {
        if (::unlink(m_path.constData()) == 0 || errno == ENOENT)
            return {};
        return lastError();
    }
    if (NativeFile::makeFolder(m_folder) && AtomicFile::write(m_path, entry()))
        return {};
    return lastError();
}

QByteArray XdgAutostart::entry() const
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Vantle\n"
           "Icon=app.vantleapp.Vantle\n"
           "Exec="
        + execArgument(m_executable)
        + "\n"
          "TryExec="
        + escapedValue(m_executable)
        + "\n"
          "Terminal=false\n"
          "StartupNotify=false\n";
}

QByteArray XdgAutostart::runningExecutable()
{
    std::array<char, PATH_MAX> buffer {};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    return length > 0 ? QByteArray(buffer.data(), length) : QByteArray();
}
