#include "store/StateCoding.h"

#include "store/StateEncoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <cmath>

namespace {

// Every function gives none for a value that is not exactly of its type.

/// Half a surrogate pair is no text: it could not be written again.
std::optional<QString> toText(const QJsonValue &value)
{
    const QString text = value.toString();
    return value.isString() && text.isValidUtf16() ? std::optional(text) : std::nullopt;
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
    constexpr qsizetype length = 36; // Without braces.
    const QString text = value.toString();
    const QUuid id = QUuid::fromString(text);
    const bool zeros = id.isNull() && text == QUuid().toString(QUuid::WithoutBraces);
    return text.size() == length && (zeros || !id.isNull()) ? std::optional(id) : std::nullopt;
}

std::optional<QUrl> toUrl(const QJsonValue &value)
{
    return StateCoding::address(value.toString());
}

std::optional<WebAddress> toLink(const QJsonValue &value)
{
    return WebAddress::stored(value.toString());
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
    reader.optional("link", item.link, toLink);
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

std::optional<QUrl> StateCoding::address(const QString &text)
{
    if (text.isEmpty() || !text.isValidUtf16())
        return std::nullopt;
    const QUrl url(text);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

QByteArray StateCoding::encode(const ShelfState &state)
{
    return StateEncoder().encode(state).join();
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
