#include "platform/linux/DecoderProtocol.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>
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

using namespace DecoderProtocol;

bool isOf(const Result &result, const Job &job)
{
    if (result.bytes < 0 || result.bytes > mostBytes(job))
        return false;
    if (job.kind == Job::Kind::Archive)
        return result.milliseconds.isEmpty();
    const bool moves = job.kind == Job::Kind::Frames;
    const auto isSide = [&](qint32 pixels) { return pixels > 0 && pixels <= job.maxPixel; };
    const qint64 pictures = moves ? result.milliseconds.size() : 1;
    return isSide(result.width) && isSide(result.height) && result.wholeWidth > 0
        && result.wholeHeight > 0 && result.count > 0 && (moves || result.milliseconds.isEmpty())
        && std::ranges::all_of(result.milliseconds, [](qint32 time) { return time > 0; })
        && result.bytes == pictures * 4 * result.width * result.height;
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

qint64 mostBytes(const Job &job)
{
    constexpr qint64 largest = 1LL << 30;
    constexpr qint64 largestListing = 64 << 20;
    const qint64 picture = qint64 { 4 } * job.maxPixel * job.maxPixel;
    switch (job.kind) {
    case Job::Kind::Archive:
        return largestListing;
    case Job::Kind::Frames:
        return std::clamp(picture, mostFrameBytes, largest);
    default:
        return std::clamp<qint64>(picture, 1, largest);
    }
}

QByteArray encode(const Result &result)
{
    return written([&](QDataStream &stream) {
        stream << result.decoded << result.width << result.height << result.wholeWidth
               << result.wholeHeight << result.count << result.bytes
               << static_cast<qint32>(result.milliseconds.size());
        for (const qint32 time : result.milliseconds)
            stream << time;
    });
}

std::optional<Result> decodeResult(const QByteArray &message, const Job &job)
{
    QDataStream stream(message);
    Result result;
    qint32 times = 0;
    stream >> result.decoded >> result.width >> result.height >> result.wholeWidth
        >> result.wholeHeight >> result.count >> result.bytes >> times;
    if (times < 0 || times > mostFrames)
        return std::nullopt;
    for (qint32 i = 0; i < times; ++i) {
        qint32 time = 0;
        stream >> time;
        result.milliseconds.append(time);
    }
    if (stream.status() != QDataStream::Ok || !stream.atEnd())
        return std::nullopt;
    return !result.decoded || isOf(result, job) ? std::optional(result) : std::nullopt;
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
        if (entry.size < 0)
            return std::nullopt;
        listing.entries.append(std::move(entry));
    }
    if (stream.status() != QDataStream::Ok)
        return std::nullopt;
    return listing;
}

bool send(int socket, const QByteArray &message, std::initializer_list<int> files)
{
    iovec part { const_cast<char *>(message.constData()), static_cast<size_t>(message.size()) };
    alignas(cmsghdr) char control[CMSG_SPACE(mostFiles * sizeof(int))] = {};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    if (const size_t size = files.size() * sizeof(int); size > 0) {
        header.msg_control = control;
        header.msg_controllen = CMSG_SPACE(size);
        cmsghdr *const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(rights), files.begin(), size);
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
    received.files.fill(-1);
    received.message.resize(largestMessage);
    iovec part { received.message.data(), static_cast<size_t>(received.message.size()) };
    // The kernel closes what does not fit.
    alignas(cmsghdr) char control[CMSG_SPACE(mostFiles * sizeof(int))] = {};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = CMSG_LEN(mostFiles * sizeof(int));
    ssize_t size = -1;
    do {
        size = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && errno == EAGAIN)
        return std::nullopt;
    received.message.resize(std::max<ssize_t>(size, 0));
    const cmsghdr *const rights = CMSG_FIRSTHDR(&header); // There is no room for two.
    if (rights != nullptr && rights->cmsg_level == SOL_SOCKET && rights->cmsg_type == SCM_RIGHTS)
        std::memcpy(received.files.data(), CMSG_DATA(rights),
                    std::min(rights->cmsg_len - CMSG_LEN(0), mostFiles * sizeof(int)));
    return received;
}

}
