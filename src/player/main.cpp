// Plays a file for the program, in a process of its own that alone links Qt Multimedia and its
// codecs; whatever a hostile file makes of them stays in here.
#include "platform/linux/DecoderProtocol.h"
#include "player/Limits.h"
#include "player/Player.h"

#include <QDir>
#include <QGuiApplication>
#include <QLibraryInfo>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

int main(int argc, char **argv)
{
    using DecoderProtocol::socketDescriptor;
    // Of the program's own files and sockets nothing is to be in reach.
    ::close_range(STDERR_FILENO + 1, socketDescriptor - 1, 0);
    ::close_range(socketDescriptor + 1, ~0U, 0);
    if (!limitPlayer()) {
        std::fputs("vantle-player: cannot be confined, plays nothing\n", stderr);
        return DecoderProtocol::unableStatus;
    }
    ::fcntl(socketDescriptor, F_SETFL, O_NONBLOCK);
    qputenv("QT_QPA_PLATFORM", "offscreen"); // No window is its.
    // Decodes in this process; the other back end would start programs to find its parts.
    const QDir backends(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/multimedia"_qs);
    if (backends.exists(QStringLiteral("libffmpegmediaplugin.so")))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    // The codecs tell about every file.
    if (const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    const QGuiApplication application(argc, argv);
    const Player player(socketDescriptor);
    return QGuiApplication::exec();
}
