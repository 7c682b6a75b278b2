#include "platform/linux/ArgumentUrls.h"

#include "base/FilePath.h"
#include "platform/linux/DropFormats.h"

QList<QUrl> argumentUrls(const QByteArrayList &arguments, const QByteArray &folder)
{
    QList<QUrl> urls;
    bool onlyFiles = false;
    for (const QByteArray &argument : arguments) {
        if (!onlyFiles && argument.startsWith('-'))
            onlyFiles = argument == "--";
        else if (argument.startsWith("file:") || argument.contains("://"))
            urls += DropFormats::urls(argument);
        else if (!argument.isEmpty())
            urls.append(FilePath::toUrl(FilePath::standardized(
                argument.startsWith('/') ? argument : folder + '/' + argument)));
    }
    return urls;
}
