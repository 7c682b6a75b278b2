#include "platform/linux/transfer/DragFormats.h"

#include "base/FilePath.h"
#include "platform/linux/transfer/DropFormats.h"

#include <QStringConverter>

namespace {

constexpr const char *utf8Types[] = { "text/plain;charset=utf-8", "UTF8_STRING", "text/plain" };

/// Without a directory's slash: toolkits take the name behind the last one, and
/// would find a directory without a name.
QByteArray lineFor(const Address &url)
{
    QByteArray line = url.text;
    if (url.isLocalFile() && line.endsWith('/') && url.path() != QLatin1String("/"))
        line.chop(1);
    return line;
}

void appendLinks(QList<DragFormats::Format> &formats, const QByteArrayList &links)
{
    QByteArrayList titled;
    for (const QByteArray &link : links)
        titled.append(link + '\n' + link);
    // Without a mark at its beginning, as browsers write it.
    QStringEncoder utf16(QStringConverter::Utf16LE);
    formats.append(
        { QStringLiteral("text/x-moz-url"), utf16(QString::fromUtf8(titled.join('\n'))), {} });
    formats.append({ QStringLiteral("_NETSCAPE_URL"), titled.first(), {} });
}

void appendText(QList<DragFormats::Format> &formats, const QString &text)
{
    for (const char *type : utf8Types)
        formats.append({ QLatin1String(type), text.toUtf8(), {} });
    for (const char *type : { "STRING", "TEXT" }) // Latin-1 by their definition.
        formats.append({ QLatin1String(type), text.toLatin1(), {} });
}

/// What a single entry says or shows. Judged by name and place: nobody waits for the
/// disk when a drag begins.
QList<DragFormats::Format> contentFormats(const QList<Address> &urls, const QByteArray &textFolder)
{
    const QByteArray path = urls.size() == 1 ? FilePath::fromUrl(urls.first()) : QByteArray();
    QList<DragFormats::Format> formats;
    if (path.endsWith(".txt") && FilePath::isBelow(path, textFolder)) {
        for (const char *type : utf8Types)
            formats.append({ QLatin1String(type), {}, path });
    } else if (!path.isEmpty()) {
        const QString type = FilePath::typeByName(path).name();
        if (type.startsWith(QLatin1String("image/")))
            formats.append({ type, {}, path });
    }
    return formats;
}

}

QList<DragFormats::Format> DragFormats::formatsFor(const QList<Address> &urls,
                                                   const QByteArray &textFolder)
{
    QByteArray list;
    QByteArrayList links;
    for (const Address &url : urls) {
        const QByteArray line = lineFor(url);
        list += line + "\r\n";
        if (!url.isLocalFile())
            links.append(line);
    }
    QList<Format> formats;
    // As browsers do it, not for links alone: editors would try to open them as
    // files, where their text is meant.
    if (links.size() < urls.size())
        formats.append({ QLatin1String(DropFormats::uriList), list, {} });
    if (links.isEmpty())
        return formats + contentFormats(urls, textFolder);
    appendLinks(formats, links);
    appendText(formats, QString::fromUtf8(links.join('\n')));
    return formats;
}

QList<DragFormats::Format> DragFormats::clipboardFormatsFor(const QList<Address> &urls,
                                                            const QByteArray &textFolder)
{
    QByteArrayList files;
    QByteArrayList links;
    for (const Address &url : urls)
        (url.isLocalFile() ? files : links).append(lineFor(url));
    QList<Format> formats;
    if (!files.isEmpty()) {
        for (const char *type : DropFormats::copiedFiles)
            formats.append({ QLatin1String(type), "copy\n" + files.join('\n'), {} });
        formats.append({ QLatin1String(DropFormats::uriList), files.join("\r\n") + "\r\n", {} });
        formats.append({ QStringLiteral("application/x-kde-cutselection"), "0", {} });
    }
    if (!links.isEmpty())
        appendLinks(formats, links);
    const auto content = contentFormats(urls, textFolder);
    formats += content;
    const bool hasText
        = !content.isEmpty() && !content.first().type.startsWith(QLatin1String("image/"));
    return hasText ? formats : formats + textFormatsFor(urls);
}

QList<DragFormats::Format> DragFormats::textFormatsFor(const QList<Address> &urls)
{
    QStringList lines;
    for (const Address &url : urls)
        lines.append(url.isLocalFile() ? FilePath::display(FilePath::fromUrl(url))
                                       : QString::fromUtf8(lineFor(url)));
    QList<Format> formats;
    if (!lines.isEmpty())
        appendText(formats, lines.join(u'\n'));
    return formats;
}
