#pragma once

#include "platform/PictureDecoder.h"

#include <QByteArray>

#include <array>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <type_traits>

/// What the program and its decoder processes say to each other. Each message is
/// one packet of a SOCK_SEQPACKET socket. A job carries two descriptors: the file to
/// be decoded, or sealed memory in its place, and memory of mostBytes() for what comes of it, whose
/// size is sealed.
namespace DecoderProtocol {

// Of the decoder process: far from those that starting a process uses.
inline constexpr int socketDescriptor = 99;
inline constexpr qsizetype largestMessage = 65536; // Bytes.
inline constexpr int mostFrames = 64; // Of an animation, in one result.
inline constexpr qint64 mostFrameBytes = 24 << 20; // Likewise, or one that is larger.
inline constexpr int mostEntries = 10'000; // Of an archive.
// A few hundred bytes can announce any size. Unpacked, this is 256 MB.
inline constexpr qint64 mostWholePixels = 64 << 20;
inline constexpr qint32 mostWholeEdge = 1 << 20; // Pixels.

/// A message is the bytes of one of these: both sides are of one build. Whoever receives it
/// believes nothing of it.
template<typename Message>
QByteArray encode(const Message &message)
{
    static_assert(std::has_unique_object_representations_v<Message>);
    return { reinterpret_cast<const char *>(&message), sizeof message };
}
template<typename Message>
std::optional<Message> decode(const QByteArray &bytes)
{
    Message message;
    if (bytes.size() != sizeof message)
        return std::nullopt;
    std::memcpy(&message, bytes.constData(), sizeof message);
    return message;
}

struct Job
{
    enum class Kind : qint32 { Image, Whole, Page, Frames, Archive };

    Kind kind = Kind::Image;
    qint32 number = 0; // Of the page, or the first frame.
    qint32 maxPixel = 0;
};

/// Of memory that the result of this job may take.
qint64 mostBytes(const Job &job);

/// Of what is shown, the premultiplied one of painting; what is kept loses nothing where it lets
/// something through.
inline QImage::Format pixelFormat(const Job &job)
{
    return job.kind == Job::Kind::Whole ? QImage::Format_ARGB32
                                        : QImage::Format_ARGB32_Premultiplied;
}

/// The memory holds pictures of pixelFormat() one after the other, without gaps, or a
/// listing of that many bytes.
struct Result
{
    qint32 width = 0;
    qint32 height = 0;
    qint32 wholeWidth = 0;
    qint32 wholeHeight = 0;
    qint32 count = 0; // Frames or pages of the file; 0 where nothing was decoded.
    qint32 frames = 0; // Pictures in the memory, of an animation.
    qint64 bytes = 0; // That the memory holds.
    std::array<qint32, mostFrames> milliseconds {}; // That each of the frames shows.

    bool isDecoded() const { return count > 0; }
};

/// None where it is no result of that job.
std::optional<Result> decodeResult(const QByteArray &message, const Job &job);

QByteArray encode(const PictureDecoder::Listing &listing);
std::optional<PictureDecoder::Listing> decodeListing(const QByteArray &bytes);

inline constexpr int mostFiles = 2; // With one message.
/// False where the other side is gone.
bool send(int socket, const QByteArray &message, std::initializer_list<int> files = {});
struct Received
{
    QByteArray message; // Empty: the other side is gone.
    std::array<int, mostFiles> files; // The receiver's to close; -1 is none.
};
/// Waits only where the socket blocks.
std::optional<Received> receive(int socket);

}
