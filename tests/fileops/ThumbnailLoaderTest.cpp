#include "fileops/ThumbnailLoader.h"

#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakeThumbnailGenerator.h"

#include <gtest/gtest.h>

namespace {

using Representation = ThumbnailGenerator::Representation;

struct ThumbnailWorld
{
    ThumbnailLoader loader(const QUrl &url) { return { shared, url, 64 }; }
    void answer(size_t request, const QImage &image, const QByteArray &version = "1")
    {
        const auto picture = decoder.requests.at(request).picture;
        picture(image.isNull()
                    ? std::nullopt
                    : std::optional(PictureDecoder::Picture { image, image.size(), 1, version }));
    }
    void send(size_t request, Representation quality, const QImage &image)
    {
        const auto update = generator.requests.at(request).update;
        update(quality, image, "1");
    }

    FakePictureDecoder decoder;
    FakeThumbnailGenerator generator;
    Thumbnails shared { decoder, generator };
    const QUrl photo { QStringLiteral("file:///a/photo.JPG") };
    const QUrl report { QStringLiteral("file:///a/report.pdf") };
    const QImage small { 32, 24, QImage::Format_RGB32 };
    const QImage full { 64, 48, QImage::Format_RGB32 };
    const QImage other { 60, 64, QImage::Format_RGB32 };
};

}

TEST(ThumbnailLoaderTest, ThePictureOnlyGetsBetter)
{
    using enum Representation;
    const std::tuple<const char *, std::vector<Representation>, QSize, bool> cases[] = {
        { "nothing", {}, { 0, 0 }, false },
        { "better and better", { LowQuality, Thumbnail }, { 64, 48 }, true },
        { "the worse one late", { Thumbnail, LowQuality }, { 64, 48 }, true },
        { "the worse one alone", { LowQuality }, { 32, 24 }, false },
    };
    for (const auto &[what, sent, shown, kept] : cases) {
        SCOPED_TRACE(what);
        ThumbnailWorld w;
        auto loader = w.loader(w.report);
        EXPECT_TRUE(w.generator.requests.empty()) << "construction alone does no work";
        loader.load(w.report, 32, 2);
        loader.load(w.report, 32, 2);
        ASSERT_EQ(w.generator.requests.size(), 1);
        for (const auto quality : sent)
            w.send(0, quality, quality == Thumbnail ? w.full : w.small);
        EXPECT_EQ(loader.image.value().size(), shown);
        EXPECT_EQ(w.shared.cached(w.report, 64).isNull(), !kept);
        EXPECT_EQ(w.loader(w.report).image.value().isNull(), !kept) << "at hand for the next row";
    }
}

TEST(ThumbnailLoaderTest, AnImageIsDecodedAndOneThatCannotBeGoesToTheDesktop)
{
    ThumbnailWorld w;
    auto loader = w.loader(w.photo);
    loader.load(w.photo, 32, 2);
    ASSERT_EQ(w.decoder.requests.size(), 1);
    EXPECT_EQ(w.decoder.requests[0].maxPixel, 64);
    w.answer(0, {});
    ASSERT_EQ(w.generator.requests.size(), 1);
    w.send(0, Representation::LowQuality, w.small);
    EXPECT_EQ(loader.image.value().size(), w.small.size());
    EXPECT_TRUE(w.shared.cached(w.photo, 64).isNull());
}

TEST(ThumbnailLoaderTest, AnotherFileOrScreenCancelsWhatWasAskedFor)
{
    ThumbnailWorld w;
    auto loader = w.loader(w.photo);
    loader.load(w.photo, 32, 1);
    loader.load(w.photo, 32, 2);
    EXPECT_TRUE(w.decoder.requests[0].isCancelled());
    w.answer(1, w.full);
    loader.load(w.report, 32, 2);
    EXPECT_TRUE(loader.image.value().isNull()) << "the former file's picture";
    EXPECT_FALSE(w.shared.cached(w.photo, 64).isNull());
    {
        auto scrolledAway = w.loader(w.photo);
        scrolledAway.load(QUrl(QStringLiteral("file:///a/c.png")), 32, 2);
    }
    EXPECT_TRUE(w.decoder.requests.back().isCancelled());
}

TEST(ThumbnailLoaderTest, AFileThatChangedInItsPlaceIsDecodedAgain)
{
    ThumbnailWorld w;
    w.loader(w.photo).load(w.photo, 32, 2);
    auto first = w.loader(w.photo);
    first.load(w.photo, 32, 2);
    w.answer(1, w.full);
    for (const QByteArray &version : { QByteArray("1"), QByteArray("2") }) {
        auto loader = w.loader(w.photo);
        loader.load(w.photo, 32, 2);
        EXPECT_EQ(loader.image.value().size(), w.full.size()) << "at once";
        const size_t asked = w.decoder.requests.size();
        ASSERT_EQ(w.decoder.requests.back().kind, FakePictureDecoder::Kind::Version);
        const auto answer = w.decoder.requests.back().version;
        answer(version);
        if (version == "1") {
            EXPECT_EQ(w.decoder.requests.size(), asked);
            continue;
        }
        w.answer(asked, w.other, version);
        EXPECT_EQ(loader.image.value().size(), w.other.size());
        EXPECT_EQ(w.shared.cached(w.photo, 64).size(), w.other.size());
    }
}
