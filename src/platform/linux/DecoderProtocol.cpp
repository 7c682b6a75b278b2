#include "platform/linux/DecoderProtocol.h"

#include <QDataStream>
#include <QIODevice>

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/uio.h>

namespace {

template<typename Write>
QByteArray written(Write write)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    write(stream);
    return bytes;
}

}

namespace DecoderProtocol {

QByteArray encode(const Job &job)
{
    return written([&](QDataStream &stream) {
        stream << static_cast<quint8>(job.kind) << job.number << job.maxPixel;
    });
}

std::optional<Job> decodeJob(const QByteArray &message)
{
    QDataStream stream(message);
    quint8 kind = 0;
    Job job;
    stream >> kind >> job.number >> job.maxPixel;
    if (stream.status() != QDataStream::Ok || kind > static_cast<quint8>(Job::Kind::Archive))
        return std::nullopt;
    job.kind = static_cast<Job::Kind>(kind);
    return job;
}

QByteArray encode(const Result &result)
{
    return written([&](QDataStream &stream) {
        stream << result.decoded << result.width << result.height << result.wholeWidth
               << result.wholeHeight << result.count << result.milliseconds << result.bytes;
    });
}

std::optional<Result> decodeResult(const QByteArray &message)
{
    QDataStream stream(message);
    Result result;
    stream >> result.decoded >> result.width >> result.height >> result.wholeWidth
        >> result.wholeHeight >> result.count >> result.milliseconds >> result.bytes;
    if (stream.status() != QDataStream::Ok)
        return std::nullopt;
    return result;
}

QByteArray encode(const PictureDecoder::Listing &listing)
{
    return written([&](QDataStream &stream) {
        stream << listing.whole << static_cast<qint32>(listing.entries.size());
        for (const auto &entry : listing.entries)
            stream << entry.path << entry.size << entry.folder;
    });
}

std::optional<PictureDecoder::Listing> decodeListing(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    PictureDecoder::Listing listing;
    qint32 count = 0;
    stream >> listing.whole >> count;
    if (count < 0 || count > mostEntries)
        return std::nullopt;
    for (qint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        PictureDecoder::Entry entry;
        stream >> entry.path >> entry.size >> entry.folder;
        listing.entries.append(std::move(entry));
    }
    if (stream.status() != QDataStream::Ok)
        return std::nullopt;
    return listing;
}

bool send(int socket, const QByteArray &message, int descriptor)
{
    iovec part { const_cast<char *>(message.constData()), static_cast<size_t>(message.size()) };
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    if (descriptor >= 0) {
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        cmsghdr *const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(rights), &descriptor, sizeof(int));
    }
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(socket, &header, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == message.size();
}

std::optional<Received> receive(int socket)
{
    Received received;
    received.message.resize(largestMessage);
    iovec part { received.message.data(), static_cast<size_t>(received.message.size()) };
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof control;
    ssize_t size = -1;
    do {
        size = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && errno == EAGAIN)
        return std::nullopt;
    received.message.resize(std::max<ssize_t>(size, 0));
    for (cmsghdr *rights = CMSG_FIRSTHDR(&header); rights != nullptr;
         rights = CMSG_NXTHDR(&header, rights)) {
        if (rights->cmsg_level == SOL_SOCKET && rights->cmsg_type == SCM_RIGHTS)
            std::memcpy(&received.descriptor, CMSG_DATA(rights), sizeof(int));
    }
    return received;
}

}
