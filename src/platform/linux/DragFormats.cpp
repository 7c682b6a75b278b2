#include "platform/linux/DragFormats.h"

#include "platform/linux/DropFormats.h"

#include <QStringConverter>

namespace {

/// Without a directory's slash: toolkits take the name behind the last one, and
/// would find a directory without a name.
QByteArray lineFor(const QUrl &url)
{
    QByteArray line = url.toEncoded();
    if (url.isLocalFile() && line.endsWith('/') && url.path() != QLatin1String("/"))
        line.chop(1);
    return line;
}

QByteArray utf16(const QString &text)
{
    // Without a mark at its beginning, as browsers write it.
    QStringEncoder encode(QStringConverter::Utf16LE);
    return encode(text);
}

}

QList<DragFormats::Format> DragFormats::formatsFor(const QList<QUrl> &urls)
{
    QByteArray list;
    QByteArrayList links;
    QByteArrayList titledLinks;
    for (const QUrl &url : urls) {
        const QByteArray line = lineFor(url);
        list += line + "\r\n";
        if (!url.isLocalFile()) {
            links.append(line);
            titledLinks.append(line + '\n' + line);
        }
    }
    QList<Format> formats;
    // As browsers do it, not for links alone: editors would try to open them as
    // files, where their text is meant.
    if (links.size() < urls.size())
        formats.append({ QLatin1String(DropFormats::uriList), list });
    if (links.isEmpty())
        return formats;
    formats.append(
        { QStringLiteral("text/x-moz-url"), utf16(QString::fromLatin1(titledLinks.join('\n'))) });
    formats.append({ QStringLiteral("_NETSCAPE_URL"), titledLinks.first() });
    // An encoded address is ASCII, which is the same in all of these.
    for (const char *type :
         { "text/plain;charset=utf-8", "UTF8_STRING", "text/plain", "STRING", "TEXT" })
        formats.append({ QLatin1String(type), links.join('\n') });
    return formats;
}
