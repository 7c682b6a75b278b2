#include "store/StateEncoder.h"

#include "store/StateCoding.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace {

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
    case '"':
    case '\\':
    case '/':
        out += '\\';
        out += byte;
        break;
    default:
        out += "\\u00";
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
}

bool needsEscape(char byte)
{
    return byte == '"' || byte == '\\' || byte == '/' || (byte >= 0 && byte < 0x20);
}

void appendString(QByteArray &out, const QByteArray &utf8)
{
    out += '"';
    const char *next = utf8.begin();
    while (next != utf8.end()) {
        const char *end = std::find_if(next, utf8.end(), needsEscape);
        out.append(next, end - next);
        if (end != utf8.end())
            appendEscaped(out, *end++);
        next = end;
    }
    out += '"';
}

/// The fewest digits that read back as the same number, never with an exponent. What
/// is no number has no form in JSON, and would spoil the file: it becomes the start of 2001.
void appendNumber(QByteArray &out, double number)
{
    if (!std::isfinite(number))
        number = 0;
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

/// QUrl makes addresses that it refuses to read. Those of files never are among them.
bool isReadAgain(const QByteArray &address)
{
    return address.startsWith("file:///") || StateCoding::address(QString::fromLatin1(address));
}

/// Nothing for an entry that would spoil the whole file.
void appendItem(QByteArray &out, const ShelfItem &item)
{
    const QByteArray address = item.url.toEncoded();
    if (!isReadAgain(address))
        return;
    if (!out.isEmpty())
        out += ',';
    out += '{';
    appendId(out, "id", item.id);
    appendText(out, "url", address);
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
    if (item.link && WebAddress::stored(item.link->text()))
        appendText(out, "link", item.link->text().toUtf8());
    out += '}';
}

/// Up to the list of entries.
void appendHead(QByteArray &out, const Shelf &shelf)
{
    out += '{';
    appendId(out, "id", shelf.id);
    if (shelf.name)
        appendText(out, "name", shelf.name->toUtf8());
    appendKey(out, "pinned");
    out += shelf.pinned ? "true" : "false";
    appendKey(out, "items");
    out += '[';
}

void appendTail(QByteArray &out, const Shelf &shelf)
{
    out += ']';
    if (shelf.closedAt) {
        appendKey(out, "closedAt");
        appendNumber(out, *shelf.closedAt);
    }
    out += '}';
}

/// Finds entries of an old list for the entries of a new one, which has most of
/// them in the old order: looks at the next one first, then by id.
class Reuse
{
public:
    explicit Reuse(const QList<ShelfItem> &old)
        : m_old(old)
    {
    }

    /// The index of the equal entry, or -1.
    qsizetype find(const ShelfItem &item)
    {
        if (m_next >= m_old.size() || m_old.at(m_next).id != item.id)
            m_next = positions().value(item.id, m_next);
        if (m_next >= m_old.size() || m_old.at(m_next).id != item.id)
            return -1;
        const qsizetype found = m_next++;
        return m_old.at(found) == item ? found : -1;
    }

private:
    const QHash<QUuid, qsizetype> &positions()
    {
        if (m_positions.isEmpty()) {
            m_positions.reserve(m_old.size());
            for (qsizetype index = 0; index < m_old.size(); ++index)
                m_positions.insert(m_old.at(index).id, index);
        }
        return m_positions;
    }

    const QList<ShelfItem> &m_old;
    qsizetype m_next = 0;
    QHash<QUuid, qsizetype> m_positions; // Made when an entry is not the next one.
};

}

QByteArrayList StateEncoder::encode(const ShelfState &state)
{
    QHash<QUuid, Written> written;
    QByteArrayList pieces;
    QByteArray out; // What has to be written before the next list of entries.
    const auto appendShelves = [&](const char *key, const QList<Shelf> &shelves) {
        appendKey(out, key);
        out += '[';
        for (const Shelf &shelf : shelves) {
            if (!out.endsWith('['))
                out += ',';
            appendHead(out, shelf);
            const auto made = written.insert(shelf.id, write(shelf));
            pieces << std::exchange(out, {}) << made->bytes;
            appendTail(out, shelf);
        }
        out += ']';
    };
    out += '{';
    appendId(out, "current", state.current);
    appendShelves("shelves", state.shelves);
    appendShelves("closed", state.closed);
    out += '}';
    pieces << out;
    m_written = std::move(written);
    return pieces;
}

StateEncoder::Written StateEncoder::write(const Shelf &shelf) const
{
    Written old = m_written.value(shelf.id);
    // The old list is still held, so that the same memory means the same entries.
    if (old.items.constData() == shelf.items.constData() && old.items.size() == shelf.items.size())
        return old;
    Written now { shelf.items, {}, {} };
    now.bytes.reserve(old.bytes.size() + old.bytes.size() / 8);
    now.ends.reserve(shelf.items.size());
    Reuse reuse(old.items);
    for (const ShelfItem &item : shelf.items) {
        const QByteArrayView before = old.bytesOf(reuse.find(item));
        if (before.isEmpty()) {
            appendItem(now.bytes, item);
        } else {
            if (!now.bytes.isEmpty())
                now.bytes += ',';
            now.bytes += before;
        }
        now.ends.append(now.bytes.size());
    }
    return now;
}

QByteArrayView StateEncoder::Written::bytesOf(qsizetype index) const
{
    if (index < 0)
        return {};
    qsizetype start = index == 0 ? 0 : ends.at(index - 1);
    if (start > 0 && start < ends.at(index))
        ++start; // The comma.
    return QByteArrayView(bytes).sliced(start, ends.at(index) - start);
}
