#include "store/StateCoding.h"

#include "store/StateEncoder.h"

#include <gtest/gtest.h>

#include <QSet>

#include <algorithm>
#include <bit>
#include <iterator>
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

/// One change of a kind that the store makes.
class RandomEdit
{
public:
    explicit RandomEdit(ShelfState &state)
        : m_state(state)
    {
    }

    void operator()()
    {
        auto &list = below(4) > 0 ? m_state.shelves : m_state.closed;
        if (list.isEmpty() || below(10) == 0) {
            list.insert(below(list.size() + 1), Shelf { QUuid::createUuid(), {}, false, {}, {} });
            return;
        }
        Shelf &shelf = list[below(list.size())];
        switch (below(6)) {
        case 0:
            shelf.name = QString::number(below(1000));
            shelf.closedAt = below(2) == 0 ? std::nullopt : std::optional(double(below(100)));
            break;
        case 1:
            if (below(4) == 0)
                list.removeAt(&shelf - list.data());
            break;
        case 2:
            std::rotate(list.begin(), list.begin() + below(list.size()), list.end());
            break;
        default:
            editItems(shelf.items);
        }
    }

private:
    void editItems(QList<ShelfItem> &items)
    {
        const qsizetype at = below(items.size() + 1);
        if (at == items.size() || below(3) == 0) {
            ShelfItem item;
            item.id = QUuid::createUuid();
            item.url = QUrl::fromEncoded("file:///a/" + QByteArray::number(below(1000)));
            items.insert(at, item);
        } else if (below(3) == 0) {
            items.removeAt(at);
        } else if (below(3) == 0) {
            std::rotate(items.begin(), items.begin() + at, items.end());
        } else if (below(3) == 0 && !m_state.shelves.isEmpty()) {
            m_state.shelves.last().items.append(items.at(at)); // With its id, even into one list.
        } else {
            items[at].preview = QString::number(below(1000));
            items[at].bookmark = QByteArray(below(100), '\xff');
        }
    }

    qsizetype below(qsizetype end) { return static_cast<qsizetype>(m_random() % size_t(end)); }

    ShelfState &m_state;
    std::mt19937 m_random { 7 };
};

}

TEST(StateCodingTest, BytesThatAreUsedAgainAreThoseOfANewEncoder)
{
    ShelfState state;
    StateEncoder encoder;
    RandomEdit edit(state);
    for (int i = 0; i < 3000; ++i) {
        edit();
        ASSERT_EQ(encoder.encode(state).join(), StateCoding::encode(state)) << i;
    }
}

/// Of what was ever a special case somewhere.
QString randomText(std::mt19937 &random)
{
    static const char *const pieces[] = { "http://",  "https://",
                                          "HTTP://",  "file:///",
                                          "a.org",    "1.2.3",
                                          "[::1",     "]",
                                          ":",        "@",
                                          "/",        "?",
                                          "#",        "%",
                                          "%25",      "%5B",
                                          "%3a",      "%00",
                                          "\xc3\xa9", " ",
                                          "\n",       "..",
                                          "<",        "\"",
                                          "\\",       "\xf0\x9f\x98\x80",
                                          "0x7f",     "%ff",
                                          "xn--",     "80",
                                          "&",        "a" };
    QString text = random() % 4 == 0 ? QString() : QString::fromUtf8(pieces[random() % 4]);
    for (auto left = random() % 9; left > 0; --left)
        text += QString::fromUtf8(pieces[random() % std::size(pieces)]);
    if (random() % 16 == 0)
        text += QChar(char16_t(0xd800 + random() % 0x800));
    return text;
}

TEST(StateCodingTest, WhateverAnEntryHoldsTheFileIsReadAgain)
{
    std::mt19937 random(5);
    int links = 0;
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
        const Shelf shelf {
            QUuid::createUuid(), randomText(random), false, { item, odd, item }, {}
        };
        const auto json = StateCoding::encode({ shelf.id, { shelf }, {} });
        const auto again = StateCoding::decodeState(json);
        ASSERT_TRUE(again) << json.constData();
        ASSERT_GE(again->shelves.first().items.size(), 2);
        EXPECT_EQ(again->shelves.first().items.first().link, item.link);
        EXPECT_EQ(StateCoding::encode(*again).size(), json.size()); // Nothing changes any more.
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
