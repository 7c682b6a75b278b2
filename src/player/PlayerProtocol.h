#pragma once

#include "decoder/DecoderProtocol.h"

#include <QSize>

/// What the program and its player process say to each other, over the same kind
/// of socket as the decoders have, and coded likewise; see DecoderProtocol. Times are in
/// milliseconds.
namespace PlayerProtocol {

struct Command
{
    enum class Kind : qint32 {
        Open, // Comes with the file, and with memory for mostBytes of picture.
        Play,
        Pause,
        Seek,
        Room, // That pictures have.
        Taken, // The last picture: the next one may come.
    };

    Kind kind = Kind::Open;
    qint32 time = 0;
    QSize room;
};

struct Event
{
    enum class Kind : qint32 {
        Opened, // The size is that of the film, empty where there is none.
        Picture, // In the memory: premultiplied ARGB of that size, without gaps.
        State,
        Failed,
    };

    Kind kind = Kind::Failed;
    qint32 flag = 0; // Of Opened, whether there is a film; of State, whether it plays.
    qint32 position = 0;
    qint32 duration = 0;
    QSize size {};
};

inline constexpr int largestSide = 8192; // Of a picture.
inline constexpr qint64 mostBytes = qint64 { 4 } * largestSide * largestSide;

/// None where it is no event.
inline std::optional<Event> decodeEvent(const QByteArray &message)
{
    const auto event = DecoderProtocol::decode<Event>(message);
    const bool isOne = event && event->kind >= Event::Kind::Opened
        && event->kind <= Event::Kind::Failed && event->size.width() <= largestSide
        && event->size.height() <= largestSide && event->position >= 0 && event->duration >= 0;
    return isOne ? event : std::nullopt;
}

}
