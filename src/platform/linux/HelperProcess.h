#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <functional>
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
    HelperProcess(const HelperProcess &) = delete;
    HelperProcess &operator=(const HelperProcess &) = delete;

    /// Where the installation, or the build, has the program of that name.
    static QString installedProgram(const QString &name);

    /// The file stays the caller's. False where the process is gone.
    bool give(const QByteArray &message, int file = -1);

    /// What it says; the file is the receiver's to close, or -1. False where that
    /// is not what such a process says, and it counts as crashed.
    std::function<bool(const QByteArray &message, int file)> onMessage;
    /// Told once, while the process is still there for its owner to delete later.
    std::function<void(End)> onEnd;

private:
    void receive();
    void end(End how);

    std::unique_ptr<QProcess> m_process;
    int m_socket = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_ended = false;
};
