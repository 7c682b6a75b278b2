#pragma once

#include <QByteArray>
#include <QSize>

#include <optional>

/// What the program and its player process say to each other, over the same kind
/// of socket as the decoders have; see DecoderProtocol. Times are in milliseconds.
namespace PlayerProtocol {

struct Command
{
    enum class Kind : quint8 {
        Open, // Comes with the file, and with memory for mostBytes of picture.
        Play,
        Pause,
        Seek,
        Room, // That pictures have.
        Taken, // The last picture: the next one may come.
    };

    Kind kind = Kind::Open;
    qint64 time = 0;
    QSize room;
};

struct Event
{
    enum class Kind : quint8 {
        Opened, // The size is that of the film, empty where there is none.
        Picture, // In the memory: premultiplied ARGB of that size, without gaps.
        State,
        Failed,
    };

    Kind kind = Kind::Failed;
    bool flag = false; // Of Opened, whether there is a film; of State, whether it plays.
    qint64 position = 0;
    qint64 duration = 0;
    QSize size {};
};

inline constexpr int largestSide = 8192; // Of a picture.
inline constexpr qint64 mostBytes = qint64 { 4 } * largestSide * largestSide;

QByteArray encode(const Command &command);
std::optional<Command> decodeCommand(const QByteArray &message);
QByteArray encode(const Event &event);
std::optional<Event> decodeEvent(const QByteArray &message);

}
