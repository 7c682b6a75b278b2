#pragma once

#include "base/Descriptor.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>

class QSocketNotifier;

/// One process that deals with other people's files, and its socket. Main thread.
class HelperProcess
{
public:
    enum class End {
        Crashed,
        Missing, // The program is not there, or cannot work on this system.
    };

    explicit HelperProcess(const QString &program);
    ~HelperProcess();

    /// Where the installation, or the build, has the program of that name.
    static QString installedProgram(const QString &name);

    /// New memory for what it answers, whose size neither side can change, if there
    /// is any. It takes pages when they are written to.
    static Descriptor makeMemory(qint64 bytes);

    /// The files stay the caller's. False where the process is gone.
    bool give(const QByteArray &message, std::initializer_list<int> files = {});

    /// What it says; files that come with it are closed. False where that is not
    /// what such a process says, and it counts as crashed.
    std::function<bool(const QByteArray &message)> onMessage;
    /// Told once, while the process is still there for its owner to delete later.
    std::function<void(End)> onEnd;

private:
    void receive();
    void tellErrors();
    void end(End how);

    std::unique_ptr<QProcess> m_process;
    Descriptor m_socket;
    Descriptor m_errors; // What it writes to its standard error, as much as a pipe holds.
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_ended = false;
};

/// Kills it, and waits for nothing: it may hang in the kernel on a file that never
/// answers. The object goes when the process has ended. Main thread.
void endSoon(std::unique_ptr<QProcess> process);
