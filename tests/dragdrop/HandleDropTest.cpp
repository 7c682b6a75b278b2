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
        QList<QUrl> urls;
        for (const ShelfItem &item : world.store().items.value())
            urls.append(item.url);
        return urls;
    }
    /// How often something was added.
    size_t additions() const { return world.sounds.played.size(); }
};

}

TEST(HandleDropTest, FilesComeTogetherAndInDragOrderHoweverTheyAnswer)
{
    Drop drop;
    const std::vector<std::shared_ptr<FakeItemProvider>> files { file("/a"), file("/b"),
                                                                 file("/c") };
    drop.handle({ files[0], files[1], files[2] });
    for (const size_t i : { 2U, 0U }) {
        files[i]->answer();
        EXPECT_TRUE(drop.urls().isEmpty());
    }
    std::thread([&] { files[1]->answer(); }).join();
    EXPECT_EQ(drop.urls(),
              (QList { FilePath::toUrl("/a"), FilePath::toUrl("/b"), FilePath::toUrl("/c") }));
    EXPECT_EQ(drop.additions(), 1U);
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

TEST(HandleDropTest, TextDoesNotWaitForFilesNorFilesForText)
{
    Drop drop;
    const auto first = file("/a");
    const auto second = file("/b");
    const auto words = text(QStringLiteral("two words"));
    drop.handle({ first, words, second });
    words->answer();
    EXPECT_EQ(drop.urls().size(), 1);
    first->answer();
    second->answer();
    EXPECT_EQ(drop.urls().size(), 3);
    EXPECT_EQ(drop.additions(), 2U);
}

TEST(HandleDropTest, OneFormIsTakenOfEachObjectTheFirstThatApplies)
{
    struct Case
    {
        const char *what;
        QStringList types;
        bool hasText, hasUrl;
        const char *asked; // The image type that is asked for.
        const char *preview; // Of the entry.
        bool isLink;
    };
    const Case cases[] = {
        { "image before text",
          { QStringLiteral("text/plain"), QStringLiteral("image/tiff"),
            QStringLiteral("image/png") },
          true,
          true,
          "image/png",
          nullptr,
          false },
        { "an image by another of its names",
          { QStringLiteral("image/x-bmp") },
          false,
          false,
          "image/x-bmp",
          nullptr,
          false },
        { "text before address",
          { QStringLiteral("text/plain") },
          true,
          true,
          nullptr,
          "two words",
          false },
        { "address alone", {}, false, true, nullptr, "example.org/a", true },
        { "nothing that is known",
          { QStringLiteral("application/x-color") },
          false,
          false,
          nullptr,
          nullptr,
          false },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        Drop drop;
        auto provider = std::make_shared<FakeItemProvider>();
        provider->types = c.types;
        provider->data = QByteArray("not looked at");
        if (c.hasText)
            provider->text = QStringLiteral("two words");
        if (c.hasUrl)
            provider->url = QUrl(QStringLiteral("https://www.example.org/a"));
        drop.handle({ provider });
        provider->answer();
        drop.urls();
        EXPECT_EQ(provider->asked.join(u','), QLatin1String(c.asked ? c.asked : ""));
        const auto &items = drop.world.store().items.value();
        ASSERT_EQ(items.size(), c.asked || c.preview ? 1 : 0);
        EXPECT_EQ(drop.nothings, items.isEmpty() ? 1 : 0);
        if (c.preview) {
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
