#include "StoreWorld.h"

#include "store/UploadHistory.h"

#include <QStringList>

namespace {

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

QStringList ids(const UploadHistory &history)
{
    QStringList result;
    for (const UploadRecord &record : history.records.value())
        result.append(record.fileId);
    return result;
}

}

TEST(UploadHistoryTest, TheNewestThirtyStayAndAFileHasOneRecord)
{
    World w;
    UploadHistory history(w.paths(), w.queue);
    for (int i = 0; i < 31; ++i)
        history.add(QString::number(i), q("name"), std::nullopt);
    EXPECT_EQ(ids(history).size(), 30);
    EXPECT_EQ(ids(history).last(), q("1"));
    w.queue.advance(5);
    history.add(q("7"), q("a/\u00e9"), q("https://x/"));
    EXPECT_EQ(ids(history).size(), 30);
    EXPECT_EQ(ids(history).count(q("7")), 1);
    EXPECT_EQ(history.records.value().first(),
              (UploadRecord { q("7"), q("a/\u00e9"), q("https://x/"), w.queue.now() }));
    EXPECT_EQ(history.record(q("7")), history.records.value().first());
    EXPECT_EQ(history.record(q("0")), std::nullopt);
    EXPECT_EQ(UploadHistory(w.paths(), w.queue).records.value(), history.records.value());
}

TEST(UploadHistoryTest, TheFileFollowsEveryChange)
{
    World w;
    UploadHistory history(w.paths(), w.queue);
    const auto file = [&] { return w.read(w.data("uploads.json")); };
    EXPECT_EQ(file(), "missing");
    history.remove(q("a")); // Unknown: nothing is written.
    history.add(q("a"), q("x/y"), std::nullopt);
    EXPECT_EQ(file(), R"([{"date":785001000,"fileId":"a","name":"x\/y"}])");
    history.add(q("b"), q("z"), q("l"));
    history.remove(q("a"));
    EXPECT_EQ(file(), R"([{"date":785001000,"fileId":"b","link":"l","name":"z"}])");
    history.clear();
    EXPECT_EQ(file(), "[]");
    NativeFile::remove(w.paths().dataDir);
    history.add(q("c"), q("c"), std::nullopt);
    EXPECT_EQ(ids(UploadHistory(w.paths(), w.queue)), QStringList { q("c") });
}
