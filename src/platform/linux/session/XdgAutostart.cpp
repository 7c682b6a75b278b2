#include "platform/linux/session/XdgAutostart.h"

#include "base/AtomicFile.h"
#include "base/NativeFile.h"
#include "platform/linux/session/KeyFile.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
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

}

XdgAutostart::XdgAutostart(const QByteArray &configFolder, QByteArray executable)
    : m_folder(configFolder + "/autostart")
    , m_path(m_folder + "/app.vantleapp.Vantle.desktop")
    , m_executable(std::move(executable))
{
}

bool XdgAutostart::enabled() const
{
    const auto entry = keyFileGroup(m_path, "Desktop Entry");
    return !entry.isEmpty() && entry.value("Hidden") != "true"
        && entry.value("X-GNOME-Autostart-enabled") != "false";
}

std::optional<QString> XdgAutostart::setEnabled(bool enabled)
{
    const bool done = enabled
        ? NativeFile::makeFolder(m_folder) && AtomicFile::write(m_path, entry())
        : ::unlink(m_path.constData()) == 0 || errno == ENOENT;
    if (done)
        return {};
    return QString::fromStdString(std::system_category().message(errno));
}

QByteArray XdgAutostart::entry() const
{
    return R"([Desktop Entry]
Type=Application
Name=Vantle
Icon=app.vantleapp.Vantle
Terminal=false
StartupNotify=false
Exec=)" + execArgument(m_executable)
        + "\nTryExec=" + escapedValue(m_executable) + '\n';
}

QByteArray XdgAutostart::runningExecutable()
{
    std::error_code unreadable;
    return QByteArray::fromStdString(
        std::filesystem::read_symlink("/proc/self/exe", unreadable).native());
}
