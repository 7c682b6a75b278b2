#pragma once

#include "player/PlayerProtocol.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QMediaPlayer>
#include <QSocketNotifier>
#include <QVideoSink>

/// Plays the one file that it is given over the socket, and tells what comes of it.
class Player final : public QObject
{
public:
    /// The command that opens came with these files.
    Player(int socket, int memory, const PlayerProtocol::Command &open);

    /// Whatever of the system it plays by, it is connected with now. From here on
    /// the process may lose the means for that.
    void open(int file);

private:
    using Command = PlayerProtocol::Command;
    using Event = PlayerProtocol::Event;

    void receive();
    void obey(const Command &command);
    void tell(const Event &event) const;
    void tellStatus(QMediaPlayer::MediaStatus status);
    void tellState();
    void tellPicture();

    const int m_socket;
    const int m_memory;
    QSocketNotifier m_notifier;
    QMediaPlayer m_player;
    QVideoSink m_sink;
    QAudioOutput m_sound;
    QSize m_room;
    bool m_isOpen = false;
    bool m_isTaken = true; // The last picture.
    bool m_isWaiting = false; // A newer picture, for the last one to be taken.
};
