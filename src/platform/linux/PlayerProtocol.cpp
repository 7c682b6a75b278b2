#include "platform/linux/PlayerProtocol.h"

#include <QDataStream>
#include <QIODevice>

namespace PlayerProtocol {

QByteArray encode(const Command &command)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly)
        << static_cast<quint8>(command.kind) << command.time << command.room;
    return bytes;
}

std::optional<Command> decodeCommand(const QByteArray &message)
{
    QDataStream stream(message);
    quint8 kind = 0;
    Command command;
    stream >> kind >> command.time >> command.room;
    if (stream.status() != QDataStream::Ok || kind > static_cast<quint8>(Command::Kind::Taken))
        return std::nullopt;
    command.kind = static_cast<Command::Kind>(kind);
    return command;
}

QByteArray encode(const Event &event)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << static_cast<quint8>(event.kind) << event.flag
                                              << event.position << event.duration << event.size;
    return bytes;
}

std::optional<Event> decodeEvent(const QByteArray &message)
{
    QDataStream stream(message);
    quint8 kind = 0;
    Event event;
    stream >> kind >> event.flag >> event.position >> event.duration >> event.size;
    if (stream.status() != QDataStream::Ok || kind > static_cast<quint8>(Event::Kind::Failed)
        || event.size.width() > largestSide || event.size.height() > largestSide
        || event.position < 0 || event.duration < 0)
        return std::nullopt;
    event.kind = static_cast<Event::Kind>(kind);
    return event;
}

}
