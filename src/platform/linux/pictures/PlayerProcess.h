#pragma once

#include "base/Descriptor.h"
#include "platform/MediaPlayer.h"
#include "player/PlayerProtocol.h"

#include <QString>
#include <QUrl>

#include <memory>

class FileLanes;
class HelperProcess;
class MainQueue;

/// Plays in a process of its own, `vantle-player`, which a system without Qt
/// Multimedia does not have. It ends with this object.
class PlayerProcess final : public MediaPlayer
{
public:
    /// program: the path of vantle-player. The lanes outlive this object.
    PlayerProcess(QString program, const QUrl &url, FileLanes &lanes, MainQueue &queue);
    ~PlayerProcess() override;

    void play() override { tell({ Command::Kind::Play, 0, {} }); }
    void pause() override { tell({ Command::Kind::Pause, 0, {} }); }
    void seek(double seconds) override;
    void setRoom(const QSize &room) override;

private:
    using Command = PlayerProtocol::Command;
    using Event = PlayerProtocol::Event;

    void begin(const Descriptor &file);
    void tell(const Command &command);
    bool hear(const QByteArray &message);
    void fail();

    const QString m_program;
    MainQueue &m_queue;
    std::unique_ptr<HelperProcess> m_process;
    Descriptor m_memory; // In which it puts each picture.
    QSize m_room;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
