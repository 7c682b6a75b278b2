#include "decoder/Decoded.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>
#include <vips/vips8>

namespace {

using DecoderProtocol::Job;
using vips::VImage;
using vips::VOption;
using vips::VSource;

/// Pixels of what is decoded at all, and of what its loader holds in memory as a
/// whole before the first line comes out.
constexpr double mostPixels = 1e9;
constexpr double mostInterlacedPixels = 1.2e8;

VSource sourceOf(int file)
{
    ::lseek(file, 0, SEEK_SET);
    return VSource::new_from_descriptor(file);
}

int number(const VImage &image, const char *field, int otherwise)
{
    return image.get_typeof(field) == G_TYPE_INT ? image.get_int(field) : otherwise;
}

bool isOf(const VImage &header, const char *family)
{
    return header.get_typeof(VIPS_META_LOADER) != 0
        && std::string(header.get_string(VIPS_META_LOADER)).starts_with(family);
}

/// Pages of other formats follow no clock.
int frameCount(const VImage &header)
{
    const bool moves = isOf(header, "gif") || isOf(header, "webp");
    return moves ? std::max(1, number(header, VIPS_META_N_PAGES, 1)) : 1;
}

/// Nearly none means a tenth of a second, as browsers have it.
int shownFor(int milliseconds)
{
    return milliseconds > 10 ? milliseconds : 100;
}

bool fits(const VImage &header, int maxPixel)
{
    return std::max(header.width(), header.height()) <= maxPixel;
}

bool isTooLarge(const VImage &header, const Job &job)
{
    const double pixels = static_cast<double>(header.width()) * header.height();
    if (job.kind == Job::Kind::Whole)
        return pixels > DecoderProtocol::mostWholePixels || !fits(header, job.maxPixel);
    const bool interlaced = number(header, "interlaced", 0) != 0;
    return pixels > (interlaced ? mostInterlacedPixels : mostPixels);
}

bool isLyingOnItsSide(const VImage &header)
{
    return number(header, VIPS_META_ORIENTATION, 1) >= 5;
}

/// Eight bits of red, green and blue, and of opacity where there is any.
VImage inScreenColours(VImage image)
{
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() > 4)
        image = image.extract_band(0, VImage::option()->set("n", 4));
    return image;
}

/// Writes blue, green, red, alpha, which is how the program's ARGB lies in memory.
void writePixels(const VImage &image, uchar *to, QImage::Format format)
{
    size_t size = 0;
    const std::unique_ptr<void, decltype(&g_free)> memory(image.write_to_memory(&size), &g_free);
    const auto *from = static_cast<const uchar *>(memory.get());
    const int bands = image.bands();
    const auto count = static_cast<size_t>(image.width()) * static_cast<size_t>(image.height());
    const bool isMultiplied = format == QImage::Format_ARGB32_Premultiplied;
    const auto multiplied = [isMultiplied](int value, int alpha) {
        return static_cast<uchar>(isMultiplied ? (value * alpha + 127) / 255 : value);
    };
    for (size_t i = 0; i < count; ++i, from += bands, to += 4) {
        const bool grey = bands < 3;
        const int alpha = bands == 2 || bands == 4 ? from[bands - 1] : 255;
        to[0] = multiplied(from[grey ? 0 : 2], alpha);
        to[1] = multiplied(from[grey ? 0 : 1], alpha);
        to[2] = multiplied(from[0], alpha);
        to[3] = static_cast<uchar>(alpha);
    }
}

VOption *thumbnailOptions(const VImage &header, int maxPixel)
{
    // What is damaged is shown as far as it goes.
    VOption *const options
        = VImage::option()
              ->set("height", maxPixel)
              // Where it shrinks anyway, DOWN would take the smallest picture of a file that
              // carries several.
              ->set("size", fits(header, maxPixel) ? VIPS_SIZE_DOWN : VIPS_SIZE_BOTH)
              ->set("fail_on", VIPS_FAIL_ON_NONE);
    // Colours that come without a profile are the screen's; converted to its profile, they shift.
    return header.get_typeof(VIPS_META_ICC_NAME) != 0 ? options->set("export_profile", "srgb")
                                                      : options;
}

Decoded decodeImage(int file, const Job &job, SharedMemory &memory)
{
    const bool isWhole = job.kind == Job::Kind::Whole;
    const int edge = job.maxPixel;
    const VImage header = VImage::new_from_source(
        sourceOf(file), "",
        VImage::option()
            ->set("access", VIPS_ACCESS_SEQUENTIAL)
            ->set("fail_on", isWhole ? VIPS_FAIL_ON_ERROR : VIPS_FAIL_ON_NONE));
    if (isTooLarge(header, job) || (isWhole && isOf(header, "svg")))
        return std::nullopt;
    // The shortcut would take a small picture that the file carries.
    const VImage sized = fits(header, edge) || isOf(header, "heif")
        ? header.thumbnail_image(edge, thumbnailOptions(header, edge))
        : VImage::thumbnail_source(sourceOf(file), edge, thumbnailOptions(header, edge));
    const VImage image = inScreenColours(sized);

    DecoderProtocol::Result result;
    result.width = image.width();
    result.height = image.height();
    result.wholeWidth = header.width();
    result.wholeHeight = number(header, VIPS_META_PAGE_HEIGHT, header.height());
    if (isLyingOnItsSide(header))
        std::swap(result.wholeWidth, result.wholeHeight);
    result.count = frameCount(header);
    result.bytes = static_cast<qint64>(result.width) * result.height * 4;
    uchar *const to = memory.begin(result.bytes);
    if (to == nullptr)
        return std::nullopt;
    writePixels(image, to, pixelFormat(job));
    return result;
}

Decoded decodeFrames(int file, const Job &job, SharedMemory &memory)
{
    const int first = job.number;
    const VImage header = VImage::new_from_source(sourceOf(file), "");
    const int count = frameCount(header);
    if (isTooLarge(header, job) || count < 2)
        return std::nullopt;
    const double scale = std::min(
        1.0, static_cast<double>(job.maxPixel) / std::max(header.width(), header.height()));
    const int width = std::max(1, static_cast<int>(std::lround(header.width() * scale)));
    const int height = std::max(1, static_cast<int>(std::lround(header.height() * scale)));
    const qint64 bytes = static_cast<qint64>(width) * height * 4;
    const int several = static_cast<int>(std::clamp<qint64>(DecoderProtocol::mostFrameBytes / bytes,
                                                            1, DecoderProtocol::mostFrames));
    const int frames = std::clamp(count - first, 0, several);

    DecoderProtocol::Result result { width, height, header.width(), header.height(),
                                     count, 0,      frames * bytes };
    const std::vector<int> delays
        = header.get_typeof("delay") != 0 ? header.get_array_int("delay") : std::vector<int>();
    if (frames == 0)
        return result;
    uchar *const to = memory.begin(result.bytes);
    if (to == nullptr)
        return std::nullopt;
    // Together, since the decoder of each would begin with the first of all.
    const VImage together = VImage::new_from_source(sourceOf(file), "",
                                                    VImage::option()
                                                        ->set("page", first)
                                                        ->set("n", frames)
                                                        ->set("access", VIPS_ACCESS_SEQUENTIAL));
    for (int frame = 0; frame < frames; ++frame) {
        const VImage one
            = together.extract_area(0, frame * header.height(), header.width(), header.height());
        const VImage sized = scale < 1
            ? one.thumbnail_image(
                width, VImage::option()->set("height", height)->set("size", VIPS_SIZE_FORCE))
            : one;
        if (sized.width() != width || sized.height() != height)
            return std::nullopt;
        writePixels(inScreenColours(sized), to + frame * bytes, pixelFormat(job));
        const auto place = static_cast<size_t>(first) + static_cast<size_t>(frame);
        result.milliseconds[static_cast<size_t>(result.frames++)]
            = shownFor(place < delays.size() ? delays[place] : 0);
    }
    return result;
}

template<typename Work>
Decoded guarded(Work work)
{
    try {
        return work();
    } catch (const std::exception &) { // Damaged, of no known format, or no memory.
        vips_error_clear();
        return std::nullopt;
    }
}

}

void Decode::begin()
{
    // No file can be written to when memory would be spared.
    ::setenv("VIPS_DISC_THRESHOLD", "2g", 1);
    vips_init("vantle-decoder");
    g_log_set_handler(
        "VIPS", G_LOG_LEVEL_MASK, [](const char *, GLogLevelFlags, const char *, void *) {},
        nullptr);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    // Only loaders that are made for hostile files, and those of two formats that people have.
    vips_block_untrusted_set(TRUE);
    for (const char *loader : { "VipsForeignLoadSvg", "VipsForeignLoadJxl" })
        vips_operation_block_set(loader, FALSE);
}

Decoded Decode::image(int file, const Job &job, SharedMemory &memory)
{
    return guarded([&] { return decodeImage(file, job, memory); });
}

Decoded Decode::frames(int file, const Job &job, SharedMemory &memory)
{
    return guarded([&] { return decodeFrames(file, job, memory); });
}
