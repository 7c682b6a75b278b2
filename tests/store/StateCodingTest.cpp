#include "store/StateCoding.h"

#include <gtest/gtest.h>

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

ShelfState fullState()
{
    ShelfItem bare;
    bare.id = QUuid::createUuid();
    bare.url = QUrl::fromEncoded("file:///a%20b/caf%C3%A9/%FF/");
    bare.addedAt = 785000000.25;
    ShelfItem full = bare;
    full.id = QUuid::createUuid();
    full.addedAt = 0.1 + 0.2;
    full.driveFileId = QStringLiteral("id/1");
    full.driveLink = QStringLiteral("https://d/1?a=b&c");
    full.preview = QString::fromUtf8("\"quoted\" \\ / \b\f\n\r\t\x01\x1f\x7f é 😀");
    full.bookmark = QByteArray("\0\xff\xfe", 3);
    full.link = QUrl(QStringLiteral("https://www.example.com/ä?q=1#f"));
    Shelf open;
    open.id = QUuid::createUuid();
    open.name = QString();
    open.pinned = true;
    open.items = { bare, full };
    Shelf closed;
    closed.id = QUuid::createUuid();
    closed.closedAt = 0;
    return { open.id, { open }, { closed } };
}

}

TEST(StateCodingTest, EveryFieldComesBack)
{
    const ShelfState state = fullState();
    const auto decoded = StateCoding::decodeState(StateCoding::encode(state));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, state);
    EXPECT_EQ(StateCoding::encode(*decoded), StateCoding::encode(state));
}

TEST(StateCodingTest, TheFormIsFixedToTheByte)
{
    const auto empty = StateCoding::decodeState(minimal);
    ASSERT_TRUE(empty);
    EXPECT_EQ(StateCoding::encode(*empty), minimal);

    ShelfItem item;
    item.id = QUuid::fromString(QString::fromLatin1(idA));
    item.url = QUrl::fromEncoded("file:///Users/me/Desktop/a%20b.png");
    item.addedAt = 785000000;
    ShelfState state = *empty;
    state.shelves[0].items = { item };
    EXPECT_EQ(
        StateCoding::encode(state),
        withItem("{\"id\":\"" + idA
                 + R"(","url":"file:\/\/\/Users\/me\/Desktop\/a%20b.png","addedAt":785000000})"));
    item.addedAt = 785000000.25;
    item.preview = QStringLiteral("a/\"b\"\n\u0001");
    item.bookmark = "hello";
    state.shelves[0].items = { item };
    EXPECT_EQ(
        StateCoding::encode(state),
        withItem("{\"id\":\"" + idA
                 + R"(","url":"file:\/\/\/Users\/me\/Desktop\/a%20b.png","addedAt":785000000.25,)"
                   R"("preview":"a\/\"b\"\n\u0001","bookmark":"aGVsbG8="})"));
}

TEST(StateCodingTest, DatesKeepTheirLastBit)
{
    for (const double date : { 0.0, -1.5, 785000000.123456, 1e300, 5e-324, 1e22, 0.1 }) {
        ShelfState state = *StateCoding::decodeState(minimal);
        state.shelves[0].closedAt = date;
        const QByteArray json = StateCoding::encode(state);
        EXPECT_FALSE(json.contains("e+")) << json.constData();
        EXPECT_EQ(StateCoding::decodeState(json), state) << json.constData();
    }
}

TEST(StateCodingTest, WhatOtherWritersMayDoIsRead)
{
    const struct
    {
        const char *what;
        QByteArray json;
    } cases[] = {
        { "as we write", withItem(itemWith("")) },
        { "white space", QByteArray(minimal).replace(",", " ,\n ").replace(":", " : ") },
        { "small letters", minimal.toLower() },
        { "unknown keys", withItem(itemWith(R"(,"kind":{"x":[1,null]})")) },
        { "null for absent", withItem(itemWith(R"(,"preview":null,"link":null,"bookmark":null)")) },
        { "an exponent", withItem(itemWith("").replace(":1}", ":7.85e8}")) },
        { "address in letters", withItem(itemWith("").replace("/a", "/caf\xc3\xa9 x")) },
    };
    for (const auto &c : cases)
        EXPECT_TRUE(StateCoding::decodeState(c.json)) << c.what;
}

TEST(StateCodingTest, AnythingElseSpoilsTheWholeFile)
{
    const QByteArray good = withItem(itemWith(""));
    ASSERT_TRUE(StateCoding::decodeState(good));
    QList<QByteArray> broken {
        "",
        "null",
        "[]",
        "{}",
        good + '}',
        "\xff" + good,
        withItem(itemWith("") + ',' + itemWith("")), // One id twice.
        QByteArray(minimal).replace("\"closed\":[]",
                                    "\"closed\":" + minimal.mid(minimal.indexOf("[{"), 79)),
    };
    for (int size = 0; size < good.size(); ++size)
        broken.append(good.first(size));
    for (const char *key :
         { "current", "shelves", "closed", "pinned", "items", "id", "url", "addedAt" })
        broken.append(QByteArray(good).replace('"' + QByteArray(key) + '"', "\"other\""));
    const std::pair<const char *, const char *> wrong[] = {
        { "false", "null" },
        { "false", "0" },
        { "false", "\"false\"" },
        { ":1}", ":\"1\"}" },
        { ":1}", ":true}" },
        { ":1}", ":null}" },
        { ":1}", ":1e999}" },
        { ":1}", ":NaN}" },
        { "\"file:///a\"", "7" },
        { "\"file:///a\"", "\"\"" },
        { "file:///a", "http://[" },
        { "\"shelves\":[", "\"shelves\":[[]," },
        { "[]}", "{}}" },
        { "00000000-", "{00000000-" },
        { "00000000-", "0000000-" },
        { "00000000-", "G0000000-" },
        { "-0000-0000-0000-", "000000000000" },
    };
    for (const auto &[from, to] : wrong)
        broken.append(QByteArray(good).replace(from, to));
    for (const char *rest : { ",\"preview\":1", ",\"driveLink\":[]", ",\"driveFileId\":false",
                              R"(,"bookmark":"a")", R"(,"bookmark":"!!!!")", ",\"bookmark\":[1]",
                              R"(,"bookmark":"aGVsbG8")", R"(,"link":"")", ",\"link\":1" })
        broken.append(withItem(itemWith(rest)));
    for (const QByteArray &json : broken)
        EXPECT_FALSE(StateCoding::decodeState(json)) << json.constData();
}

TEST(StateCodingTest, TheOlderFileIsABareList)
{
    const auto items = StateCoding::decodeItems('[' + itemWith("") + ']');
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 1);
    EXPECT_EQ(StateCoding::decodeItems("[]"), QList<ShelfItem>());
    for (const QByteArray &json :
         { QByteArray("{}"), QByteArray("[{}]"), minimal, QByteArray("[") })
        EXPECT_FALSE(StateCoding::decodeItems(json)) << json.constData();
}

TEST(StateCodingTest, HostileNestingIsRefused)
{
    EXPECT_FALSE(StateCoding::decodeState(QByteArray(1000000, '[')));
    EXPECT_FALSE(StateCoding::decodeState(withItem(itemWith(",\"x\":" + QByteArray(100000, '{')))));
}
