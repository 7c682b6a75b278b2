#include "store/WebLocation.h"

#include <QStringDecoder>
#include <QXmlStreamReader>

namespace {

constexpr qsizetype largest = 1 << 20; // Bytes; such a file has some hundred.

/// The property lists of other systems: objects, a table of their offsets, and a
/// trailer of 32 bytes that tells the sizes. All numbers are big-endian.
class BinaryList
{
public:
    explicit BinaryList(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    std::optional<QString> addressInRoot()
    {
        const qsizetype trailer = m_bytes.size() - 32;
        m_offsetSize = number(trailer + 6, 1).value_or(0);
        m_referenceSize = number(trailer + 7, 1).value_or(0);
        m_table = number(trailer + 24, 8).value_or(largest);
        const auto root = object(number(trailer + 16, 8));
        if (!root || root->kind != 0xd)
            return std::nullopt;
        for (qsizetype i = 0; i < root->count; ++i) {
            const qsizetype key = root->begin + i * m_referenceSize;
            const auto name = object(number(key, m_referenceSize));
            if (!name)
                return std::nullopt;
            if (name->kind == 5 && name->count == 3 && m_bytes.mid(name->begin, 3) == "URL")
                return text(number(key + root->count * m_referenceSize, m_referenceSize));
        }
        return std::nullopt;
    }

private:
    struct Object
    {
        int kind = 0; // 5 and 6 are text of one and two bytes a character, 13 is a dictionary.
        qsizetype count = 0;
        qsizetype begin = 0; // Of its contents.
    };

    /// None for what does not fit or lies outside the file.
    std::optional<qsizetype> number(qsizetype at, qsizetype size) const
    {
        if (at < 0 || size < 1 || size > 8 || at > m_bytes.size() - size)
            return std::nullopt;
        qsizetype value = 0;
        for (qsizetype i = 0; i < size; ++i) {
            value = value << 8 | static_cast<uchar>(m_bytes.at(at + i));
            if (value > largest)
                return std::nullopt;
        }
        return value;
    }

    std::optional<Object> object(std::optional<qsizetype> reference) const
    {
        const auto at
            = reference ? number(m_table + *reference * m_offsetSize, m_offsetSize) : std::nullopt;
        const auto marker = at ? number(*at, 1) : std::nullopt;
        if (!marker)
            return std::nullopt;
        Object result { static_cast<int>(*marker >> 4), *marker & 15, *at + 1 };
        if (result.count < 15)
            return result;
        // The count follows as a whole number of 1, 2, 4 or 8 bytes.
        const qsizetype size = qsizetype(1) << (number(*at + 1, 1).value_or(0) & 3);
        const auto count = number(*at + 2, size);
        if (!count)
            return std::nullopt;
        result.count = *count;
        result.begin = *at + 2 + size;
        return result;
    }

    std::optional<QString> text(std::optional<qsizetype> reference) const
    {
        const auto found = object(reference);
        if (!found || (found->kind != 5 && found->kind != 6))
            return std::nullopt;
        const qsizetype size = found->kind == 5 ? found->count : found->count * 2;
        if (found->begin > m_bytes.size() - size)
            return std::nullopt;
        const QByteArray content = m_bytes.mid(found->begin, size);
        return found->kind == 5 ? QString::fromLatin1(content)
                                : QString(QStringDecoder(QStringDecoder::Utf16BE)(content));
    }

    const QByteArray &m_bytes;
    qsizetype m_offsetSize = 0;
    qsizetype m_referenceSize = 0;
    qsizetype m_table = 0;
};

std::optional<QString> addressInXml(const QByteArray &bytes)
{
    QXmlStreamReader reader(bytes);
    reader.setEntityExpansionLimit(0); // Nobody writes entities of their own into such a file.
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("plist")
        || !reader.readNextStartElement() || reader.name() != QLatin1String("dict"))
        return std::nullopt;
    bool isNext = false;
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("key")) {
            isNext = reader.readElementText() == QLatin1String("URL");
        } else if (isNext && reader.name() == QLatin1String("string")) {
            const QString text = reader.readElementText();
            return reader.hasError() ? std::nullopt : std::optional(text);
        } else {
            isNext = false;
            reader.skipCurrentElement();
        }
    }
    return std::nullopt;
}

}

QByteArray WebLocation::encode(const WebAddress &address)
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                             "<plist version=\"1.0\">\n<dict>\n\t<key>URL</key>\n\t<string>")
        + address.text().toHtmlEscaped().toUtf8()
        + QByteArrayLiteral("</string>\n</dict>\n</plist>\n");
}

std::optional<Address> WebLocation::decode(const QByteArray &bytes)
{
    if (bytes.size() > largest)
        return std::nullopt;
    const auto address
        = bytes.startsWith("bplist00") ? BinaryList(bytes).addressInRoot() : addressInXml(bytes);
    const QString text = address.value_or(QString()).trimmed();
    if (const auto web = WebAddress::typed(text))
        return web->url();
    const QUrl url(text);
    return url.isValid() && !url.isRelative() ? std::optional<Address>(url) : std::nullopt;
}
