#pragma once

#include "platform/Sounds.h"
#include "platform/linux/session/WindowSystem.h"

#include <QByteArray>

#include <memory>

/// Plays sound files through the session's sound server, if the desktop has
/// event sounds switched on. All of it happens on a thread of its own, which
/// starts with the first sound.
class CanberraSounds final : public Sounds
{
public:
    /// The folder holds "pop.wav", "tink.wav" and "beep.wav".
    CanberraSounds(QByteArray folder, ReadSettings readSettings);
    ~CanberraSounds() override;

    void play(Sound sound) override;

private:
    struct Thread;
    QByteArray m_folder;
    const ReadSettings m_readSettings;
    std::unique_ptr<Thread> m_thread; // From the first sound on.
};
