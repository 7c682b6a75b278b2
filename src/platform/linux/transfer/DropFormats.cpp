#include "platform/linux/transfer/DropFormats.h"

#include "base/FilePath.h"

#include <QByteArrayView>
#include <QStringConverter>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

// Bytes. The parser takes quadratic time for tags within tags: some four seconds
// for this much. Sources of whole pages offer their text as well.
constexpr qsizetype htmlCap = 128 << 10;

enum class Charset { Utf8, Guess, Utf16, Latin1, Html };

/// How a text type is encoded; none for types that hold no text. Names of
/// charsets that sources do not use in practice count as none.
std::optional<Charset> charsetOf(const QString &type)
{
    static const std::pair<QLatin1String, Charset> known[] = {
        { QLatin1String("utf8_string"), Charset::Utf8 },
        { QLatin1String("text/plain;charset=utf-8"), Charset::Utf8 },
        { QLatin1String("text/plain;charset=utf8"), Charset::Utf8 },
        { QLatin1String("text/plain"), Charset::Guess },
        { QLatin1String("text"), Charset::Guess },
        { QLatin1String("text/plain;charset=utf-16"), Charset::Utf16 },
        { QLatin1String("text/unicode"), Charset::Utf16 },
        { QLatin1String("text/plain;charset=iso-8859-1"), Charset::Latin1 },
        { QLatin1String("text/plain;charset=us-ascii"), Charset::Latin1 },
        { QLatin1String("string"), Charset::Latin1 },
        { QLatin1String("text/html"), Charset::Html },
    };
    const QString name = QString(type).remove(u' ').remove(u'"').toLower();
    for (const auto &[spelling, charset] : known) {
        if (name == spelling)
            return charset;
    }
    return std::nullopt;
}

/// How "address newline title" is encoded, as browsers write it.
std::optional<Charset> urlCharsetOf(const QString &type)
{
    if (type == QLatin1String("text/x-moz-url"))
        return Charset::Utf16;
    if (type == QLatin1String("_NETSCAPE_URL"))
        return Charset::Guess;
    return std::nullopt;
}

/// The byte order that a mark at the beginning tells; none without a mark.
std::optional<QStringConverter::Encoding> markedUtf16(QByteArrayView data)
{
    const auto encoding = QStringConverter::encodingForData(data).value_or(QStringConverter::Utf8);
    if (encoding != QStringConverter::Utf16BE && encoding != QStringConverter::Utf16LE)
        return std::nullopt;
    return encoding;
}

QString fromUtf16(QByteArrayView data)
{
    auto encoding = markedUtf16(data);
    if (!encoding) {
        // Nearly all text has a zero byte in its first unit, and where that stands
        // tells the order.
        const bool bigEndian = data.size() >= 2 && data[0] == '\0' && data[1] != '\0';
        encoding = bigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE;
    }
    QStringDecoder decode(*encoding);
    return decode(data.first(data.size() - data.size() % 2));
}

/// UTF-8 where it is valid, else Latin-1, in which every byte is a character.
QString fromBytes(QByteArrayView data)
{
    QStringDecoder decode(QStringConverter::Utf8);
    QString text = decode(data);
    return decode.hasError() ? QString::fromLatin1(data) : text;
}

QString fromHtmlBytes(QByteArrayView data)
{
    const bool looksWide = data.size() >= 2 && (data[0] == '\0') != (data[1] == '\0');
    return looksWide || markedUtf16(data) ? fromUtf16(data) : fromBytes(data);
}

/// A page loads nothing: it could name any file, and one that never ends.
class Page final : public QTextDocument
{
    QVariant loadResource(int, const QUrl &) override { return {}; }
};

/// What a piece of a page says: where it is nothing but one link or one picture,
/// its address, else its text.
QString textOfHtml(const QString &html)
{
    Page document;
    document.setUndoRedoEnabled(false);
    document.setHtml(html);
    QStringList links;
    QStringList pictures;
    bool hasBareText = false;
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        for (auto i = block.begin(); !i.atEnd(); ++i) {
            const auto format = i.fragment().charFormat();
            if (format.isAnchor() && !format.anchorHref().isEmpty())
                links.append(format.anchorHref());
            else if (format.isImageFormat())
                pictures.append(format.toImageFormat().name());
            else if (!i.fragment().text().trimmed().isEmpty())
                hasBareText = true;
        }
    }
    links.removeDuplicates();
    if (!hasBareText && links.size() == 1 && pictures.isEmpty())
        return links.first();
    if (!hasBareText && links.isEmpty() && pictures.size() == 1)
        return pictures.first();
    return document.toPlainText().remove(QChar::ObjectReplacementCharacter);
}

/// Escapes become bytes; a "%" that begins none stands for itself.
QByteArray unescaped(QByteArrayView text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    while (!text.isEmpty()) {
        const QByteArrayView digits = text.sliced(1).first(std::min<qsizetype>(text.size() - 1, 2));
        quint8 byte = 0;
        const bool isEscape = text.front() == '%' && digits.size() == 2
            && std::from_chars(digits.begin(), digits.end(), byte, 16).ptr == digits.end();
        bytes.append(isEscape ? static_cast<char>(byte) : text.front());
        text = text.sliced(isEscape ? 3 : 1);
    }
    return bytes;
}

bool isThisMachine(QByteArrayView host)
{
    if (host.isEmpty())
        return true;
    const auto url = QUrl::fromEncoded("file://" + host.toByteArray() + "/");
    return !FilePath::fromUrl(url).isEmpty();
}

/// The rest of a line after "file:".
std::optional<QUrl> fileUrl(QByteArrayView rest)
{
    const auto end = std::ranges::find_if(rest, [](char c) { return c == '?' || c == '#'; });
    rest = rest.first(end - rest.begin());
    if (rest.startsWith("//")) {
        const auto path = rest.indexOf('/', 2);
        if (path < 0 || !isThisMachine(rest.sliced(2, path - 2)))
            return std::nullopt;
        rest = rest.sliced(path);
    }
    const QByteArray path = unescaped(rest);
    if (!path.startsWith('/') || path.contains('\0'))
        return std::nullopt;
    const auto kind = path.endsWith('/') ? FilePath::Kind::Directory : FilePath::Kind::File;
    return FilePath::toUrl(FilePath::standardized(path), kind);
}

std::optional<Address> addressOfLine(QByteArrayView line)
{
    line = line.trimmed();
    if (line.isEmpty() || line.startsWith('#') || line.contains('\0'))
        return std::nullopt;
    constexpr qsizetype schemeSize = 5;
    if (line.first(std::min(line.size(), schemeSize)).compare("file:", Qt::CaseInsensitive) == 0)
        return fileUrl(line.sliced(schemeSize));
    const QUrl url = QUrl::fromEncoded(line.toByteArray());
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    return Address(url, line.toByteArray());
}

QByteArrayView withoutZeros(QByteArrayView data)
{
    while (data.endsWith('\0'))
        data.chop(1);
    return data;
}

QStringList ranked(QStringList types, const auto &rankOf)
{
    types.removeIf([&](const QString &type) { return !rankOf(type); });
    std::stable_sort(types.begin(), types.end(),
                     [&](const auto &a, const auto &b) { return *rankOf(a) < *rankOf(b); });
    return types;
}

}

bool DropFormats::canHold(const QStringList &types)
{
    static const QStringList lists { QLatin1String(uriList), QLatin1String(portalTransfer),
                                     QLatin1String(portalFiles) };
    return std::ranges::any_of(types, [](const QString &type) {
        return lists.contains(type) || type.startsWith(QLatin1String("image/")) || charsetOf(type)
            || urlCharsetOf(type);
    });
}

bool DropFormats::promisesFiles(const QStringList &types)
{
    return std::ranges::any_of(
        promisedFiles, [&](const char *type) { return types.contains(QLatin1String(type)); });
}

QList<Address> DropFormats::urls(const QByteArray &list)
{
    QList<Address> found;
    const QByteArrayView all = withoutZeros(list);
    for (const QByteArray &line : all.toByteArray().replace('\r', '\n').split('\n')) {
        if (const auto url = addressOfLine(line))
            found.append(*url);
    }
    return found;
}

QStringList DropFormats::textTypes(const QStringList &types)
{
    return ranked(types, charsetOf);
}

QStringList DropFormats::urlTypes(const QStringList &types)
{
    return ranked(types, urlCharsetOf);
}

std::optional<QString> DropFormats::text(const QString &type, const QByteArray &data)
{
    QString text;
    switch (charsetOf(type).value_or(Charset::Guess)) {
    case Charset::Utf8:
    case Charset::Guess:
        text = fromBytes(withoutZeros(data));
        break;
    case Charset::Utf16:
        text = fromUtf16(data);
        break;
    case Charset::Latin1:
        text = QString::fromLatin1(withoutZeros(data));
        break;
    case Charset::Html:
        if (data.size() <= htmlCap)
            text = textOfHtml(fromHtmlBytes(data));
        break;
    }
    while (text.endsWith(QChar::Null))
        text.chop(1);
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

std::optional<Address> DropFormats::url(const QString &type, const QByteArray &data)
{
    const QString lines
        = urlCharsetOf(type) == Charset::Utf16 ? fromUtf16(data) : fromBytes(withoutZeros(data));
    const QString line = lines.section(QLatin1Char('\n'), 0, 0).remove(QChar::Null);
    return addressOfLine(line.toUtf8());
}
