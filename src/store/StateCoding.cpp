#include "store/StateCoding.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <charconv>
#include <cmath>

namespace {

// Writing.

void appendEscaped(QByteArray &out, char byte)
{
    static constexpr char digits[] = "0123456789abcdef";
    switch (byte) {
    case '\b':
        out += "\\b";
        break;
    case '\f':
        out += "\\f";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00";
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
}

void appendString(QByteArray &out, const QByteArray &utf8)
{
    out += '"';
    for (const char byte : utf8) {
        if (byte == '"' || byte == '\\' || byte == '/') {
            out += '\\';
            out += byte;
        } else if (byte >= 0 && byte < 0x20) {
            appendEscaped(out, byte);
        } else {
            out += byte;
        }
    }
    out += '"';
}

/// The fewest digits that read back as the same number, never with an exponent.
void appendNumber(QByteArray &out, double number)
{
    Q_ASSERT(std::isfinite(number));
    char buffer[400]; // The smallest double has 343 characters.
    const auto end
        = std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed);
    out.append(buffer, end.ptr - buffer);
}

/// Of the object that was begun last; the comma before it comes by itself.
void appendKey(QByteArray &out, const char *key)
{
    if (!out.endsWith('{'))
        out += ',';
    out += '"';
    out += key;
    out += "\":";
}

void appendText(QByteArray &out, const char *key, const QByteArray &utf8)
{
    appendKey(out, key);
    appendString(out, utf8);
}

void appendId(QByteArray &out, const char *key, const QUuid &id)
{
    appendText(out, key, id.toByteArray(QUuid::WithoutBraces).toUpper());
}

template<typename T>
void appendList(QByteArray &out, const char *key, const QList<T> &list,
                void (*append)(QByteArray &, const T &))
{
    appendKey(out, key);
    out += '[';
    for (const T &element : list) {
        if (!out.endsWith('['))
            out += ',';
        append(out, element);
    }
    out += ']';
}

void appendItem(QByteArray &out, const ShelfItem &item)
{
    out += '{';
    appendId(out, "id", item.id);
    appendText(out, "url", item.url.toEncoded());
    appendKey(out, "addedAt");
    appendNumber(out, item.addedAt);
    if (item.driveFileId)
        appendText(out, "driveFileId", item.driveFileId->toUtf8());
    if (item.driveLink)
        appendText(out, "driveLink", item.driveLink->toUtf8());
    if (item.preview)
        appendText(out, "preview", item.preview->toUtf8());
    if (item.bookmark)
        appendText(out, "bookmark", item.bookmark->toBase64());
    if (item.link)
        appendText(out, "link", item.link->toEncoded());
    out += '}';
}

void appendShelf(QByteArray &out, const Shelf &shelf)
{
    out += '{';
    appendId(out, "id", shelf.id);
    if (shelf.name)
        appendText(out, "name", shelf.name->toUtf8());
    appendKey(out, "pinned");
    out += shelf.pinned ? "true" : "false";
    appendList(out, "items", shelf.items, appendItem);
    if (shelf.closedAt) {
        appendKey(out, "closedAt");
        appendNumber(out, *shelf.closedAt);
    }
    out += '}';
}

// Reading. Every function gives none for a value that is not exactly of its type.

std::optional<QString> toText(const QJsonValue &value)
{
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> toBool(const QJsonValue &value)
{
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<double> toDate(const QJsonValue &value)
{
    const double number = value.toDouble(NAN);
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<QUuid> toId(const QJsonValue &value)
{
    const QString text = value.toString();
    const QUuid id = QUuid::fromString(text);
    // The comparison refuses braces, and tells the id of all zeros from no id.
    const bool canonical
        = id.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) == 0;
    return canonical ? std::optional(id) : std::nullopt;
}

std::optional<QUrl> toUrl(const QJsonValue &value)
{
    const QUrl url(value.toString()); // Empty, which is not valid, for what is no string.
    return url.isValid() ? std::optional(url) : std::nullopt;
}

std::optional<QByteArray> toBytes(const QJsonValue &value)
{
    const QByteArray text = value.toString().toUtf8();
    auto result = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!value.isString() || !result || text.size() % 4 != 0)
        return std::nullopt;
    return *result;
}

template<typename T>
std::optional<QList<T>> toList(const QJsonValue &value,
                               std::optional<T> (*element)(const QJsonValue &))
{
    if (!value.isArray())
        return std::nullopt;
    QList<T> list;
    const auto array = value.toArray();
    for (const auto &each : array) {
        auto decoded = element(each);
        if (!decoded)
            return std::nullopt;
        list.append(std::move(*decoded));
    }
    return list;
}

/// Takes fields out of one object and remembers whether all were as they must be.
class Reader
{
public:
    explicit Reader(const QJsonValue &value)
        : m_object(value.toObject())
        , m_good(value.isObject())
    {
    }

    bool isGood() const { return m_good; }

    template<typename T>
    void required(const char *key, T &field, std::optional<T> (*decode)(const QJsonValue &))
    {
        auto decoded = decode(m_object.value(QLatin1String(key)));
        m_good = m_good && decoded;
        if (decoded)
            field = std::move(*decoded);
    }

    template<typename T>
    void optional(const char *key, std::optional<T> &field,
                  std::optional<T> (*decode)(const QJsonValue &))
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            return;
        field = decode(value);
        m_good = m_good && field;
    }

private:
    QJsonObject m_object;
    bool m_good;
};

std::optional<ShelfItem> toItem(const QJsonValue &value)
{
    Reader reader(value);
    ShelfItem item;
    reader.required("id", item.id, toId);
    reader.required("url", item.url, toUrl);
    reader.required("addedAt", item.addedAt, toDate);
    reader.optional("driveFileId", item.driveFileId, toText);
    reader.optional("driveLink", item.driveLink, toText);
    reader.optional("preview", item.preview, toText);
    reader.optional("bookmark", item.bookmark, toBytes);
    reader.optional("link", item.link, toUrl);
    return reader.isGood() ? std::optional(std::move(item)) : std::nullopt;
}

std::optional<QList<ShelfItem>> toItems(const QJsonValue &value)
{
    return toList(value, toItem);
}

std::optional<Shelf> toShelf(const QJsonValue &value)
{
    Reader reader(value);
    Shelf shelf;
    reader.required("id", shelf.id, toId);
    reader.optional("name", shelf.name, toText);
    reader.required("pinned", shelf.pinned, toBool);
    reader.required("items", shelf.items, toItems);
    reader.optional("closedAt", shelf.closedAt, toDate);
    return reader.isGood() ? std::optional(std::move(shelf)) : std::nullopt;
}

std::optional<QList<Shelf>> toShelves(const QJsonValue &value)
{
    return toList(value, toShelf);
}

/// What is found by its id must have one of its own: of several with one id the
/// first keeps it.
template<typename T>
void makeDistinct(QList<T> &list, QSet<QUuid> &known)
{
    for (T &each : list) {
        if (known.contains(each.id))
            each.id = QUuid::createUuid();
        known.insert(each.id);
    }
}

void makeDistinct(ShelfState &state)
{
    QSet<QUuid> shelves;
    QSet<QUuid> items;
    for (auto *list : { &state.shelves, &state.closed }) {
        makeDistinct(*list, shelves);
        for (Shelf &shelf : *list)
            makeDistinct(shelf.items, items);
    }
}

}

QByteArray StateCoding::encode(const ShelfState &state)
{
    QByteArray out;
    out += '{';
    appendId(out, "current", state.current);
    appendList(out, "shelves", state.shelves, appendShelf);
    appendList(out, "closed", state.closed, appendShelf);
    out += '}';
    return out;
}

std::optional<ShelfState> StateCoding::decodeState(const QByteArray &json)
{
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return std::nullopt;
    Reader reader(document.object());
    ShelfState state;
    reader.required("current", state.current, toId);
    reader.required("shelves", state.shelves, toShelves);
    reader.required("closed", state.closed, toShelves);
    if (!reader.isGood())
        return std::nullopt;
    makeDistinct(state);
    return state;
}

std::optional<QList<ShelfItem>> StateCoding::decodeItems(const QByteArray &json)
{
    const auto document = QJsonDocument::fromJson(json);
    auto items = document.isArray() ? toItems(document.array()) : std::nullopt;
    QSet<QUuid> known;
    if (items)
        makeDistinct(*items, known);
    return items;
}
