#include "dragdrop/DroppedFiles.h"
#include "platform/fake/FakeItemProvider.h"
#include "store/StoreWorld.h"

#include <thread>

namespace {

std::shared_ptr<FakeItemProvider> file(const QByteArray &path)
{
    auto provider = std::make_shared<FakeItemProvider>();
    provider->types = QStringList { QStringLiteral("text/uri-list") };
    provider->isFile = true;
    provider->url = FilePath::toUrl(path);
    return provider;
}

std::shared_ptr<FakeItemProvider> text(const QString &words)
{
    auto provider = std::make_shared<FakeItemProvider>();
    provider->text = words;
    return provider;
}

struct Drop
{
    World world;
    Ticket alive = std::make_shared<int>(0);
    int nothings = 0; // How often it was said that nothing came.

    void handle(const ItemProviders &providers)
    {
        handleDrop(providers, world.store(), world.queue, alive, [this] { ++nothings; });
        world.queue.settle();
    }
    QList<QUrl> urls()
    {
        world.queue.settle();
        return world.urls();
    }
    /// How often something was added.
    size_t additions() const { return world.sounds.played.size(); }
};

}

TEST(HandleDropTest, FilesComeTogetherAndInDragOrderHoweverTheyAnswer)
{
    Drop drop;
    const auto words = text(QStringLiteral("two words"));
    const std::vector files { file("/a"), file("/b"), file("/c") };
    drop.handle({ files[0], words, files[1], files[2] });
    for (const size_t i : { 2U, 0U }) {
        files[i]->answer();
        EXPECT_TRUE(drop.urls().isEmpty());
    }
    std::thread([&] { files[1]->answer(); }).join();
    EXPECT_EQ(drop.urls(),
              (QList { FilePath::toUrl("/a"), FilePath::toUrl("/b"), FilePath::toUrl("/c") }));
    words->answer();
    EXPECT_EQ(drop.urls().size(), 4) << "Neither waits for the other.";
    EXPECT_EQ(drop.additions(), 2U);
}

TEST(HandleDropTest, AFileThatFailsOrIsNoneLeavesTheOthersUnharmed)
{
    Drop drop;
    const auto good = file("/good");
    const auto failed = file("/failed");
    const auto web = file("/web");
    failed->url.reset();
    web->url = QUrl(QStringLiteral("https://example.org/"));
    drop.handle({ failed, good, web });
    for (const auto &provider : { web, failed, good })
        provider->answer();
    EXPECT_EQ(drop.urls(), QList { FilePath::toUrl("/good") });
    EXPECT_EQ(drop.nothings, 0);
    good->url = QUrl(QStringLiteral("sftp://example.org/a"));
    drop.handle({ failed, good });
    failed->answer();
    EXPECT_EQ(drop.nothings, 0);
    good->answer();
    EXPECT_EQ(drop.urls().size(), 1);
    EXPECT_EQ(drop.nothings, 1);
}

TEST(HandleDropTest, OneFormIsTakenOfEachObjectTheFirstThatApplies)
{
    const struct
    {
        const char *what;
        const char *types;
        bool hasText, hasUrl;
        const char *asked; // The image type that is asked for.
        const char *preview = ""; // Of the entry.
        bool isLink = false;
    } cases[] = {
        { "image before text", "text/plain image/tiff image/png", true, true, "image/png" },
        { "an image by another of its names", "image/x-bmp", false, false, "image/x-bmp" },
        { "an image that cannot be decoded", "image/tiff", true, false, "image/tiff" },
        { "text before address", "text/plain", true, true, "", "two words" },
        { "address alone", "x", false, true, "", "Example.org/a", true },
        { "nothing that is known", "application/x-color", false, false, "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Drop drop;
        auto provider = std::make_shared<FakeItemProvider>();
        provider->types = QString::fromLatin1(c.types).split(u' ');
        provider->data = QByteArray("no picture");
        if (c.hasText)
            provider->text = QStringLiteral("two words");
        if (c.hasUrl)
            provider->url = Address({}, "https://Example.org/a");
        drop.handle({ provider });
        provider->answer();
        drop.urls();
        const bool isLost = !drop.world.pictures.requests.empty();
        EXPECT_EQ(drop.nothings, *c.asked || *c.preview ? 0 : 1);
        drop.world.pictures.decodeData();
        drop.urls();
        EXPECT_EQ(provider->asked.join(u','), QLatin1String(c.asked));
        const auto &items = drop.world.store().items.value();
        ASSERT_EQ(items.size(), (*c.asked && !isLost) || *c.preview ? 1 : 0);
        EXPECT_EQ(drop.nothings, items.isEmpty() ? 1 : 0);
        if (*c.preview) {
            EXPECT_EQ(items.first().preview, QLatin1String(c.preview));
            EXPECT_EQ(items.first().link.has_value(), c.isLink);
        }
    }
}

TEST(HandleDropTest, WhatComesAfterTheProgramsEndReachesNoStore)
{
    Drop drop;
    const auto words = text(QStringLiteral("late"));
    const auto late = file("/late");
    drop.handle({ words, late });
    words->answer();
    late->answer();
    drop.alive.reset();
    EXPECT_TRUE(drop.urls().isEmpty());
}
