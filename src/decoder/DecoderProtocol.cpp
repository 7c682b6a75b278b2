#include "decoder/DecoderProtocol.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <cerrno>

#include <sys/socket.h>
#include <sys/uio.h>

namespace {

using namespace DecoderProtocol;

bool isOf(const Result &result, const Job &job)
{
    if (result.bytes < 0 || result.bytes > mostBytes(job))
        return false;
    if (job.kind == Job::Kind::Archive)
        return result.frames == 0;
    const bool moves = job.kind == Job::Kind::Frames;
    const auto isSide = [&](qint32 pixels) { return pixels > 0 && pixels <= job.maxPixel; };
    const qint64 pictures = moves ? result.frames : 1;
    if (result.frames < 0 || result.frames > (moves ? mostFrames : 0))
        return false;
    return isSide(result.width) && isSide(result.height) && result.wholeWidth > 0
        && result.wholeHeight > 0
        && std::all_of(result.milliseconds.begin(), result.milliseconds.begin() + result.frames,
                       [](qint32 time) { return time > 0; })
        && result.bytes == pictures * 4 * result.width * result.height;
}

}

namespace DecoderProtocol {

qint64 mostBytes(const Job &job)
{
    constexpr qint64 largest = 1LL << 30;
    constexpr qint64 largestListing = 64 << 20;
    const qint64 picture = qint64 { 4 } * job.maxPixel * job.maxPixel;
    switch (job.kind) {
    case Job::Kind::Whole:
        return 4 * mostWholePixels;
    case Job::Kind::Archive:
        return largestListing;
    case Job::Kind::Frames:
        return std::clamp(picture, mostFrameBytes, largest);
    default:
        return std::clamp<qint64>(picture, 1, largest);
    }
}

std::optional<Result> decodeResult(const QByteArray &message, const Job &job)
{
    const auto result = decode<Result>(message);
    return result && (!result->isDecoded() || isOf(*result, job)) ? result : std::nullopt;
}

QByteArray encode(const PictureDecoder::Listing &listing)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << listing.whole << static_cast<qint32>(listing.entries.size());
    for (const auto &entry : listing.entries)
        stream << entry.path << entry.size << entry.folder;
    return bytes;
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
