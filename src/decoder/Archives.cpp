#include "decoder/Decoded.h"

#include <archive.h>
#include <archive_entry.h>

#include <array>
#include <chrono>
#include <cstring>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t blockSize = 65536;
constexpr std::chrono::seconds longestReading { 4 }; // Then the listing is what was read by then.
constexpr qsizetype longestPath = 1000; // Characters.

/// Names are in UTF-8 most times; what is not is shown as well as it can be.
QString pathOf(archive_entry *entry)
{
    const char *const name = archive_entry_pathname_utf8(entry);
    return QString::fromUtf8(name != nullptr ? name : archive_entry_pathname(entry))
        .left(longestPath);
}

struct Input
{
    int file;
    std::chrono::steady_clock::time_point end = std::chrono::steady_clock::now() + longestReading;
    std::array<char, blockSize> block {};

    bool isTimeOver() const { return std::chrono::steady_clock::now() > end; }

    static la_ssize_t read(::archive *, void *input, const void **bytes)
    {
        auto &self = *static_cast<Input *>(input);
        *bytes = self.block.data();
        if (self.isTimeOver())
            return ARCHIVE_FATAL;
        return ::read(self.file, self.block.data(), self.block.size());
    }
    static la_int64_t seek(::archive *, void *input, la_int64_t offset, int whence)
    {
        const off_t place = ::lseek(static_cast<Input *>(input)->file, offset, whence);
        return place < 0 ? ARCHIVE_FATAL : place;
    }
    static la_int64_t skip(::archive *, void *input, la_int64_t count)
    {
        const int file = static_cast<Input *>(input)->file;
        struct stat status = {};
        const off_t at = ::lseek(file, 0, SEEK_CUR);
        if (::fstat(file, &status) != 0 || at < 0 || count > status.st_size - at)
            return 0; // By reading on it is found out that the file was cut off.
        return ::lseek(file, count, SEEK_CUR) < 0 ? 0 : count;
    }
};

/// Passes over the content of a member. In a packed stream it has to be unpacked
/// for that, and a few bytes may become any number: false where time is over.
bool skipContent(::archive *reader, const Input &input)
{
    if (archive_filter_count(reader) < 2)
        return true; // Done by seeking, with the next header.
    const void *bytes = nullptr;
    size_t size = 0;
    la_int64_t offset = 0;
    while (!input.isTimeOver()) {
        if (archive_read_data_block(reader, &bytes, &size, &offset) < ARCHIVE_WARN)
            return true; // Of a damaged one the next header tells.
        if (size == 0)
            return true;
        size = 0;
    }
    return false;
}

}

Decoded Decode::archive(int file, SharedMemory &memory)
{
    ::lseek(file, 0, SEEK_SET);
    const std::unique_ptr<::archive, decltype(&archive_read_free)> reader(archive_read_new(),
                                                                          &archive_read_free);
    archive_read_support_filter_all(reader.get());
    for (const auto support :
         { archive_read_support_format_zip, archive_read_support_format_tar,
           archive_read_support_format_gnutar, archive_read_support_format_7zip,
           archive_read_support_format_rar, archive_read_support_format_rar5,
           archive_read_support_format_cab, archive_read_support_format_iso9660,
           archive_read_support_format_cpio, archive_read_support_format_ar,
           archive_read_support_format_xar, archive_read_support_format_lha })
        support(reader.get());
    const auto input = std::make_unique<Input>(Input { file });
    archive_read_set_seek_callback(reader.get(), &Input::seek);
    if (archive_read_open2(reader.get(), input.get(), nullptr, &Input::read, &Input::skip, nullptr)
        != ARCHIVE_OK)
        return std::nullopt;

    PictureDecoder::Listing listing;
    archive_entry *entry = nullptr;
    int state = ARCHIVE_OK;
    while ((state = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK
           || state == ARCHIVE_WARN) {
        if (listing.entries.size() >= DecoderProtocol::mostEntries) {
            listing.whole = false;
            break;
        }
        listing.entries.append({ pathOf(entry), qMax<qint64>(0, archive_entry_size(entry)),
                                 archive_entry_filetype(entry) == AE_IFDIR });
        if (!skipContent(reader.get(), *input)) {
            listing.whole = false;
            break;
        }
    }
    if (state != ARCHIVE_EOF)
        listing.whole = false;
    if (listing.entries.isEmpty() && state != ARCHIVE_EOF)
        return std::nullopt;

    const QByteArray bytes = DecoderProtocol::encode(listing);
    DecoderProtocol::Result result;
    result.count = 1;
    result.bytes = bytes.size();
    uchar *const to = memory.begin(result.bytes);
    if (to == nullptr)
        return std::nullopt;
    std::memcpy(to, bytes.constData(), static_cast<size_t>(bytes.size()));
    return result;
}
