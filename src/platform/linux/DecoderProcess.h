#pragma once

#include "platform/linux/DecoderProtocol.h"

#include <QProcess>

#include <functional>
#include <memory>

class QSocketNotifier;

/// One process that decodes, and its socket. Main thread.
class DecoderProcess
{
public:
    enum class End {
        Crashed,
        Missing, // The program is not there, or cannot work on this system.
    };

    explicit DecoderProcess(const QString &program);
    ~DecoderProcess();
    DecoderProcess(const DecoderProcess &) = delete;
    DecoderProcess &operator=(const DecoderProcess &) = delete;

    /// The file stays the caller's. False where the process is gone.
    bool give(const DecoderProtocol::Job &job, int file);

    /// What it made of the last job; `memory` is the receiver's to close, or -1.
    std::function<void(const DecoderProtocol::Result &, int memory)> onResult;
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
