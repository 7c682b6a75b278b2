#pragma once

#include "platform/PictureDecoder.h"

#include <QByteArray>

#include <optional>

/// What the program and its decoder processes say to each other. Each message is
/// one packet of a SOCK_SEQPACKET socket and may carry one file descriptor: a job
/// the file to be decoded, a result the memory that holds its pixels.
namespace DecoderProtocol {

// Of the decoder process: far from those that starting a process uses.
inline constexpr int socketDescriptor = 99;
// Its exit status where the system does not let it confine itself.
inline constexpr int unableStatus = 69;
inline constexpr qsizetype largestMessage = 65536; // Bytes.
inline constexpr int mostFrames = 64; // Of an animation, in one result.
inline constexpr int mostEntries = 10'000; // Of an archive.

struct Job
{
    enum class Kind : quint8 { Image, Page, Frames, Archive };

    Kind kind = Kind::Image;
    qint32 number = 0; // Of the page, or the first frame.
    qint32 maxPixel = 0;
};

/// The memory holds `frames` pictures of premultiplied ARGB one after the other,
/// without gaps, or a listing of that many bytes.
struct Result
{
    bool decoded = false;
    qint32 width = 0;
    qint32 height = 0;
    qint32 wholeWidth = 0;
    qint32 wholeHeight = 0;
    qint32 count = 0; // Of the file: frames or pages.
    QList<qint32> milliseconds; // One for each picture in the memory, of an animation.
    qint64 bytes = 0; // That the memory holds.
};

QByteArray encode(const Job &job);
std::optional<Job> decodeJob(const QByteArray &message);
QByteArray encode(const Result &result);
std::optional<Result> decodeResult(const QByteArray &message);

QByteArray encode(const PictureDecoder::Listing &listing);
std::optional<PictureDecoder::Listing> decodeListing(const QByteArray &bytes);

/// False where the other side is gone. A descriptor of -1 is none.
bool send(int socket, const QByteArray &message, int descriptor);
struct Received
{
    QByteArray message; // Empty: the other side is gone.
    int descriptor = -1; // The receiver's to close.
};
/// Waits only where the socket blocks.
std::optional<Received> receive(int socket);

}
