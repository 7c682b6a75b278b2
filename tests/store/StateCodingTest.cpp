#include "store/StateCoding.h"

#include "store/StateEncoder.h"

#include <gtest/gtest.h>

#include <QSet>

#include <algorithm>
#include <bit>
#include <random>

namespace {

const QByteArray idA = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";
const QByteArray idB = "00000000-0000-0000-0000-000000000000";
const QByteArray minimal = R"({"current":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","shelves":[{"id":)"
                           R"("E621E1F8-C36C-495A-93FC-0C247A3E6E5F","pinned":false,"items":[]}],)"
                           R"("closed":[]})";

QByteArray withItem(const QByteArray &item)
{
    return QByteArray(minimal).replace("\"items\":[]", "\"items\":[" + item + "]");
}

QByteArray itemWith(const QByteArray &rest)
{
    return R"({"id":")" + idB + R"(","url":"file:///a","addedAt":1)" + rest + '}';
}

/// Of what was ever a special case somewhere.
QString randomText(std::mt19937 &random)
{
    static const QStringList pieces
        = QString::fromUtf8("http://|https://|HTTP://|file:///|a.org|1.2.3|[::1|]|:|@|/|?|#|%|%25|"
                            "%5B|%3a|%00|\xc3\xa9| |\n|..|<|\"|\\|\xf0\x9f\x98\x80|0x7f|%ff|xn--|"
                            "80|&|a")
              .split(u'|');
    QString text = random() % 4 == 0 ? QString() : pieces.at(random() % 4);
    for (auto left = random() % 9; left > 0; --left)
        text += pieces.at(random() % pieces.size());
    if (random() % 16 == 0)
        text += QChar(char16_t(0xd800 + random() % 0x800));
    return text;
}

}

TEST(StateCodingTest, WhateverAnEntryHoldsTheFileIsReadAgain)
{
    std::mt19937 random(5);
    int links = 0;
    StateEncoder encoder; // Uses again what it wrote before.
    Shelf kept { QUuid::createUuid(), {}, false, {}, {} };
    for (int i = 0; i < 20000; ++i) {
        const QString text = randomText(random);
        SCOPED_TRACE(text.toUtf8().toPercentEncoding().constData());
        ShelfItem item;
        item.id = QUuid::createUuid();
        item.url = QUrl(QStringLiteral("file:///a"));
        item.addedAt = std::bit_cast<double>(quint64(random()) << 32 | random());
        item.preview = randomText(random);
        item.link = WebAddress::typed(text);
        ShelfItem odd = item; // Of no file: as a damaged file may have it.
        odd.id = QUuid::createUuid();
        odd.url = QUrl(text);
        odd.link = WebAddress(odd.url);
        const Shelf shelf {
            QUuid::createUuid(), randomText(random), false, { item, odd, item }, {}
        };
        const auto json = StateCoding::encode({ shelf.id, { shelf }, {} });
        const auto again = StateCoding::decodeState(json);
        ASSERT_TRUE(again) << json.constData();
        ASSERT_GE(again->shelves.first().items.size(), 2);
        EXPECT_EQ(again->shelves.first().items.first().link, item.link);
        EXPECT_EQ(StateCoding::encode(*again).size(), json.size()); // Nothing changes any more.
        kept.items.insert(qsizetype(random() % (kept.items.size() + 1)), random() % 3 ? item : odd);
        if (kept.items.size() > 8)
            kept.items.removeAt(qsizetype(random() % 8));
        kept.items.last().preview = item.preview;
        const ShelfState state { kept.id, { shelf, kept }, { kept } };
        ASSERT_EQ(encoder.encode(state).join(), StateCoding::encode(state));
        if (item.link) {
            ++links;
            EXPECT_TRUE(item.link->url().isValid());
            EXPECT_EQ(WebAddress::typed(item.link->text()), item.link);
        }
    }
    EXPECT_GT(links, 1000);
    // What earlier versions wrote, and QUrl does not read.
    EXPECT_TRUE(
        StateCoding::decodeState(withItem(itemWith(R"(,"link":"http:\/\/[::1%25a]:]\/")"))));
}

TEST(StateCodingTest, EveryFieldComesBack)
{
    ShelfItem bare;
    bare.id = QUuid::createUuid();
    bare.url = QUrl::fromEncoded("file:///a%20b/caf%C3%A9/%FF/");
    bare.addedAt = 0.1 + 0.2;
    ShelfItem full = bare;
    full.id = QUuid::createUuid();
    full.driveFileId = QStringLiteral("id/1");
    full.driveLink = QStringLiteral("https://d/1?a=b&c");
    full.preview = QString::fromUtf8("\"quoted\" \\ / \b\f\n\r\t\x01\x1f\x7f é 😀");
    full.bookmark = QByteArray("\0\xff\xfe", 3);
    full.link = QUrl(QStringLiteral("https://www.example.com/ä?q=1#f"));
    const Shelf open { QUuid::createUuid(), QString(), true, { bare, full }, {} };
    // The start of 2001 is a time, and the last bit of every number counts.
    for (const double date : { 0.0, -1.5, 785000000.123456, 1e300, 5e-324, 1e22 }) {
        const ShelfState state { open.id, { open }, { { QUuid(), {}, false, {}, date } } };
        const QByteArray json = StateCoding::encode(state);
        EXPECT_FALSE(json.contains("e+")) << json.constData();
        EXPECT_EQ(StateCoding::decodeState(json), state) << json.constData();
    }
}

TEST(StateCodingTest, TheFormIsFixedToTheByte)
{
    auto state = StateCoding::decodeState(minimal);
    ASSERT_TRUE(state);
    EXPECT_EQ(StateCoding::encode(*state), minimal);

    ShelfItem item;
    item.id = QUuid::fromString(QString::fromLatin1(idA));
    item.url = QUrl::fromEncoded("file:///Users/me/Desktop/a%20b.png");
    item.addedAt = 785000000;
    const QByteArray start
        = R"({"id":")" + idA + R"(","url":"file:\/\/\/Users\/me\/Desktop\/a%20b.png","addedAt":)";
    state->shelves[0].items = { item };
    EXPECT_EQ(StateCoding::encode(*state), withItem(start + "785000000}"));
    item.addedAt = 785000000.25;
    item.preview = QStringLiteral("a/\"b\"\n\u0001");
    item.bookmark = "hello";
    state->shelves[0].items = { item };
    EXPECT_EQ(
        StateCoding::encode(*state),
        withItem(start + R"(785000000.25,"preview":"a\/\"b\"\n\u0001","bookmark":"aGVsbG8="})"));
}

TEST(StateCodingTest, AnIdThatCameBeforeIsReplaced)
{
    const QByteArray shelf = R"({"id":")" + idA + R"(","pinned":false,"items":[)" + itemWith("")
        + ',' + itemWith(R"(,"preview":"x")") + "]}";
    const auto state = StateCoding::decodeState(R"({"current":")" + idA + R"(","shelves":[)" + shelf
                                                + ',' + shelf + R"(],"closed":[)" + shelf + "]}");
    ASSERT_TRUE(state);
    QSet<QUuid> ids;
    for (const Shelf &each : state->shelves + state->closed) {
        ids.insert(each.id);
        ASSERT_EQ(each.items.size(), 2);
        ids.insert(each.items.at(0).id);
        ids.insert(each.items.at(1).id);
        EXPECT_EQ(each.items.at(1).preview, QStringLiteral("x"));
    }
    EXPECT_EQ(ids.size(), 9);
    EXPECT_EQ(state->shelves.first().id, state->current);
}
