#include "player/Player.h"

#include <QImage>
#include <QMediaDevices>
#include <QMediaMetaData>
#include <QUrl>
#include <QVideoFrame>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <unistd.h>

Player::Player(int socket, int memory, const Command &open)
    : m_socket(socket)
    , m_memory(memory)
    , m_notifier(socket, QSocketNotifier::Read)
    , m_room(open.room)
{
    m_player.setVideoSink(&m_sink);
    if (!QMediaDevices::defaultAudioOutput().isNull()) // Else the film would wait for it.
        m_player.setAudioOutput(&m_sound);
    connect(&m_notifier, &QSocketNotifier::activated, this, &Player::receive);
    connect(&m_player, &QMediaPlayer::mediaStatusChanged, this, &Player::tellStatus);
    connect(&m_player, &QMediaPlayer::playbackStateChanged, this, &Player::tellState);
    connect(&m_player, &QMediaPlayer::positionChanged, this, &Player::tellState);
    connect(&m_player, &QMediaPlayer::durationChanged, this, &Player::tellState);
    connect(&m_player, &QMediaPlayer::errorOccurred, this, [this] { tell({}); });
    connect(&m_sink, &QVideoSink::videoFrameChanged, this, &Player::tellPicture);
}

void Player::receive()
{
    const auto received = DecoderProtocol::receive(m_socket);
    if (!received || received->message.isEmpty())
        std::_Exit(EXIT_SUCCESS); // The program is gone. Nothing has to be tidied up.
    if (const auto command = DecoderProtocol::decode<Command>(received->message))
        obey(*command);
}

void Player::obey(const Command &command)
{
    switch (command.kind) {
    case Command::Kind::Open:
        break; // Once, at the beginning.
    case Command::Kind::Play:
        if (m_player.hasVideo() || m_player.audioOutput())
            m_player.play();
        else
            tellState(); // It would wait for somewhere to be heard, and does not play.
        break;
    case Command::Kind::Pause:
        m_player.pause();
        break;
    case Command::Kind::Seek:
        m_player.setPosition(command.time);
        break;
    case Command::Kind::Room:
        m_room = command.room;
        tellPicture();
        break;
    case Command::Kind::Taken:
        m_isTaken = true;
        if (m_isWaiting)
            tellPicture();
        break;
    }
}

/// By its descriptor: where it lies, and what lies beside it, is nothing to the codecs.
void Player::open(int file)
{
    m_player.setSource(QUrl(QStringLiteral("file:///proc/self/fd/%1").arg(file)));
    m_player.pause(); // Shows the first picture.
}

void Player::tell(const Event &event) const
{
    if (!DecoderProtocol::send(m_socket, DecoderProtocol::encode(event)))
        std::_Exit(EXIT_SUCCESS);
}

void Player::tellStatus(QMediaPlayer::MediaStatus status)
{
    const bool isThere = status == QMediaPlayer::LoadedMedia
        || status == QMediaPlayer::BufferingMedia || status == QMediaPlayer::BufferedMedia;
    if (isThere && !m_isOpen) {
        m_isOpen = true;
        const QSize size = m_player.metaData().value(QMediaMetaData::Resolution).toSize();
        constexpr int most = PlayerProtocol::largestSide;
        tell({ .kind = Event::Kind::Opened,
               .flag = m_player.hasVideo(),
               .size = size.isValid() ? size.boundedTo({ most, most }) : QSize() });
        tellState();
        tellPicture();
    } else if (status == QMediaPlayer::InvalidMedia) {
        tell({});
    }
}

void Player::tellState()
{
    if (!m_isOpen)
        return;
    const auto inTime = [](qint64 time) {
        return static_cast<qint32>(std::clamp<qint64>(time, 0, std::numeric_limits<qint32>::max()));
    };
    const qint64 duration = m_player.duration();
    const bool isAtEnd = m_player.mediaStatus() == QMediaPlayer::EndOfMedia;
    tell({ .kind = Event::Kind::State,
           .flag = m_player.playbackState() == QMediaPlayer::PlayingState,
           .position = inTime(isAtEnd ? duration : m_player.position()), // It steps back at last.
           .duration = inTime(duration) });
}

/// No larger than there is room for. One that nobody had time for is left out.
void Player::tellPicture()
{
    m_isWaiting = m_isOpen && !m_isTaken;
    if (!m_isOpen || !m_isTaken)
        return;
    QImage image = m_sink.videoFrame().toImage();
    const QSize room
        = m_room.isEmpty() ? image.size() : image.size().scaled(m_room, Qt::KeepAspectRatio);
    if (image.isNull() || room.isEmpty())
        return;
    if (room.width() < image.width())
        image = image.scaled(room, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (std::max(image.width(), image.height()) > PlayerProtocol::largestSide)
        return;
    image.convertTo(QImage::Format_ARGB32_Premultiplied);
    const auto bytes = static_cast<size_t>(image.sizeInBytes());
    if (::pwrite(m_memory, image.constBits(), bytes, 0) != image.sizeInBytes())
        return;
    m_isTaken = false;
    tell({ .kind = Event::Kind::Picture, .size = image.size() });
}
