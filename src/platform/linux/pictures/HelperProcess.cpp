#include "platform/linux/pictures/HelperProcess.h"

#include "confined/Confinement.h"
#include "decoder/DecoderProtocol.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSet>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int notLinkedStatus = 127; // The dynamic linker's, where a library is missing.
constexpr size_t mostErrors = 16384; // Bytes that are told of what it says of its end.

}

HelperProcess::HelperProcess(const QString &program)
    : m_process(std::make_unique<QProcess>())
{
    int sockets[2] = { -1, -1 };
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0)
        return;
    m_socket = Descriptor(sockets[0]);
    const Descriptor its(sockets[1]);
    ::fcntl(sockets[0], F_SETFL, O_NONBLOCK);
    // Full, it takes no more, and nobody waits.
    int errors[2] = { -1, -1 };
    if (::pipe2(errors, O_CLOEXEC | O_NONBLOCK) == 0)
        m_errors = Descriptor(errors[0]);
    const Descriptor itsErrors(errors[1]);
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice());
    m_process->setChildProcessModifier([other = sockets[1], to = errors[1]] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::setsid(); // The user's terminal is not its.
        if (to >= 0)
            ::dup2(to, STDERR_FILENO);
        if (other == DecoderProtocol::socketDescriptor)
            ::fcntl(other, F_SETFD, 0);
        else
            ::dup2(other, DecoderProtocol::socketDescriptor); // Without close-on-exec.
    });
    QObject::connect(m_process.get(), &QProcess::finished, m_process.get(),
                     [this](int status, QProcess::ExitStatus how) {
                         const bool unable = how == QProcess::NormalExit
                             && (status == Confined::unableStatus || status == notLinkedStatus);
                         end(unable ? End::Missing : End::Crashed);
                     });
    QObject::connect(m_process.get(), &QProcess::errorOccurred, m_process.get(),
                     [this](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart)
                             end(End::Missing);
                     });
    m_notifier = std::make_unique<QSocketNotifier>(sockets[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { receive(); });
    m_process->start(program, {});
}

HelperProcess::~HelperProcess()
{
    endSoon(std::move(m_process));
}

QString HelperProcess::installedProgram(const QString &name)
{
    const QString folder = QCoreApplication::applicationDirPath() + u'/';
    for (const QString &place :
         { folder + name, folder + QStringLiteral("../libexec/vantle/") + name,
           QStringLiteral(VANTLE_LIBEXEC_DIR "/") + name }) {
        if (QFileInfo(place).isFile())
            return place;
    }
    return folder + name;
}

Descriptor HelperProcess::makeMemory(qint64 bytes)
{
    Descriptor memory(::memfd_create("answer", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    constexpr int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;
    if (::ftruncate(memory.number(), bytes) != 0
        || ::fcntl(memory.number(), F_ADD_SEALS, seals) != 0)
        memory = Descriptor();
    return memory;
}

bool HelperProcess::give(const QByteArray &message, std::initializer_list<int> files)
{
    return !m_ended && m_socket && DecoderProtocol::send(m_socket.number(), message, files);
}

void HelperProcess::receive()
{
    const auto received = DecoderProtocol::receive(m_socket.number());
    if (!received)
        return;
    if (received->message.isEmpty())
        return m_notifier->setEnabled(false); // How it ended is told by its exit status.
    for (const int file : received->files)
        const Descriptor closed(file);
    if (!onMessage(received->message))
        end(End::Crashed);
}

/// A terminal obeys what is no plain text.
void HelperProcess::tellErrors()
{
    char text[mostErrors];
    const ssize_t size = ::read(m_errors.number(), text, sizeof text);
    for (ssize_t i = 0; i < size; ++i) {
        if (text[i] == '\n' || (text[i] >= ' ' && text[i] <= '~'))
            std::fputc(text[i], stderr);
    }
}

void HelperProcess::end(End how)
{
    if (std::exchange(m_ended, true))
        return;
    if (m_notifier)
        m_notifier->setEnabled(false);
    tellErrors();
    onEnd(how);
}

void endSoon(std::unique_ptr<QProcess> process)
{
    if (!process)
        return;
    process->disconnect();
    // In reach until the end, where some may be left.
    static auto *const ending = new QSet<QProcess *>;
    QProcess *const left = process.release();
    ending->insert(left);
    const auto gone = [left] {
        ending->remove(left);
        left->deleteLater();
    };
    if (left->state() == QProcess::NotRunning)
        return gone();
    QObject::connect(left, &QProcess::finished, left, gone);
    left->kill();
}
