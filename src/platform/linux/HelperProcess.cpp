#include "platform/linux/HelperProcess.h"

#include "platform/linux/DecoderProtocol.h"
#include "platform/linux/ProcessEnd.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>

#include <csignal>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int notLinkedStatus = 127; // The dynamic linker's, where a library is missing.

}

HelperProcess::HelperProcess(const QString &program)
    : m_process(std::make_unique<QProcess>())
{
    int sockets[2] = { -1, -1 };
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0)
        return;
    m_socket = sockets[0];
    ::fcntl(m_socket, F_SETFL, O_NONBLOCK);
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setChildProcessModifier([other = sockets[1]] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (other == DecoderProtocol::socketDescriptor)
            ::fcntl(other, F_SETFD, 0);
        else
            ::dup2(other, DecoderProtocol::socketDescriptor); // Without close-on-exec.
    });
    QObject::connect(m_process.get(), &QProcess::finished, m_process.get(),
                     [this](int status, QProcess::ExitStatus how) {
                         const bool unable = how == QProcess::NormalExit
                             && (status == DecoderProtocol::unableStatus
                                 || status == notLinkedStatus);
                         end(unable ? End::Missing : End::Crashed);
                     });
    QObject::connect(m_process.get(), &QProcess::errorOccurred, m_process.get(),
                     [this](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart)
                             end(End::Missing);
                     });
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { receive(); });
    m_process->start(program, {});
    ::close(sockets[1]);
}

HelperProcess::~HelperProcess()
{
    m_notifier.reset();
    if (m_socket >= 0)
        ::close(m_socket);
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

bool HelperProcess::give(const QByteArray &message, int file)
{
    return !m_ended && m_socket >= 0 && DecoderProtocol::send(m_socket, message, file);
}

void HelperProcess::receive()
{
    const auto received = DecoderProtocol::receive(m_socket);
    if (!received)
        return;
    if (received->message.isEmpty())
        return m_notifier->setEnabled(false); // How it ended is told by its exit status.
    if (!onMessage(received->message, received->descriptor))
        end(End::Crashed);
}

void HelperProcess::end(End how)
{
    if (std::exchange(m_ended, true))
        return;
    if (m_notifier)
        m_notifier->setEnabled(false);
    onEnd(how);
}
