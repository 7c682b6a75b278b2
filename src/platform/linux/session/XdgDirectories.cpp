#include "platform/linux/session/XdgDirectories.h"

#include "platform/linux/session/KeyFile.h"

#include <pwd.h>
#include <unistd.h>

namespace {

QByteArray withoutSlash(QByteArray path)
{
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

/// Relative paths are invalid there and to be ignored.
QByteArray folder(const char *variable, const QByteArray &fallback)
{
    const QByteArray value = qgetenv(variable);
    return value.startsWith('/') ? withoutSlash(value) : fallback;
}

QByteArray homeFolder()
{
    const QByteArray value = qgetenv("HOME");
    if (value.startsWith('/'))
        return withoutSlash(value);
    const struct passwd *user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? withoutSlash(user->pw_dir)
                                                      : QByteArrayLiteral("/");
}

/// What stands between double quotes, with the shell's backslashes taken out.
QByteArray unquoted(const QByteArray &text)
{
    if (!text.startsWith('"'))
        return {};
    QByteArray result;
    for (qsizetype i = 1; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\' && i + 1 < text.size())
            ++i;
        result.append(text[i]);
    }
    return result;
}

/// The folders that the desktop's list names, by their keys. A line reads
/// XDG_DOWNLOAD_DIR="$HOME/Downloads" or has an absolute path. The home folder
/// itself means that there is none; the last line counts.
QHash<QByteArray, QByteArray> userFolders(const QByteArray &config, const QByteArray &home)
{
    auto result = keyFileGroup(config + "/user-dirs.dirs", "");
    for (QByteArray &path : result) {
        path = unquoted(path);
        if (path == "$HOME" || path.startsWith("$HOME/"))
            path.replace(0, 5, home);
        path = withoutSlash(path);
    }
    result.removeIf(
        [&](const auto &entry) { return !entry.value().startsWith('/') || entry.value() == home; });
    return result;
}

}

Directories XdgDirectories::fromEnvironment()
{
    Directories result;
    result.home = homeFolder();
    result.data = folder("XDG_DATA_HOME", result.home + "/.local/share");
    result.config = folder("XDG_CONFIG_HOME", result.home + "/.config");
    result.state = folder("XDG_STATE_HOME", result.home + "/.local/state");
    const auto named = userFolders(result.config, result.home);
    result.downloads = named.value("XDG_DOWNLOAD_DIR");
    result.pictures = named.value("XDG_PICTURES_DIR", result.home + "/Pictures");
    result.named = named.values();
    return result;
}
