// Plays a file for the program, in a process of its own that alone links Qt Multimedia and its
// codecs; whatever a hostile file makes of them stays in here.
#include "confined/Confinement.h"
#include "player/Player.h"

#include <QDir>
#include <QGuiApplication>
#include <QLibraryInfo>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Codecs keep many large pictures, and drivers map much.
constexpr Confined::Limits limits { .memory = 4096UL << 20,
                                    .files = 256,
                                    .fileSize = PlayerProtocol::mostBytes };

/// The file itself, and what tells how to reach the sound server.
std::vector<Confined::Opening> openings(int file)
{
    using enum Confined::Opening::For;
    const QByteArray home = qgetenv("HOME");
    const QByteArray config = qEnvironmentVariableIsSet("XDG_CONFIG_HOME")
        ? qgetenv("XDG_CONFIG_HOME")
        : home + "/.config";
    std::vector<Confined::Opening> all;
    for (const QByteArray &path :
         { "/proc/self/fd/" + QByteArray::number(file), qgetenv("XDG_RUNTIME_DIR") + "/pulse",
           QByteArray("/etc/pulse"), QByteArray("/etc/machine-id"), config + "/pulse",
           home + "/.pulse-cookie" })
        all.push_back({ path.toStdString(), Reading });
    return all;
}

int cannot()
{
    std::fputs("vantle-player: cannot be confined, plays nothing\n", stderr);
    return Confined::unableStatus;
}

}

int main(int argc, char **argv)
{
    using DecoderProtocol::socketDescriptor;
    // Of the program's own files and sockets nothing is to be in reach.
    Confined::closeOthers(socketDescriptor);
    const auto received = DecoderProtocol::receive(socketDescriptor);
    const auto command = received
        ? DecoderProtocol::decode<PlayerProtocol::Command>(received->message)
        : std::nullopt;
    if (!command || command->kind != PlayerProtocol::Command::Kind::Open)
        return EXIT_SUCCESS; // The program is gone.
    const auto [file, memory] = received->files;
    if (!Confined::limit(limits)
        || !Confined::shutFileTree(openings(file), Confined::Opening::For::Reading))
        return cannot();
    ::fcntl(socketDescriptor, F_SETFL, O_NONBLOCK);
    qputenv("QT_QPA_PLATFORM", "offscreen"); // No window is its.
    // Decodes in this process; the other back end would start programs to find its parts.
    const QDir backends(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/multimedia"_s);
    if (backends.exists(QStringLiteral("libffmpegmediaplugin.so")))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    // The codecs tell about every file.
    if (const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    const QGuiApplication application(argc, argv);
    Player player(socketDescriptor, memory, *command);
    if (!Confined::allowOnly(Confined::Calls::Playing))
        return cannot();
    player.open(file);
    return QGuiApplication::exec();
}
