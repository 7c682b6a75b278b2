#include "platform/linux/session/KeyFile.h"

#include "base/NativeFile.h"

#include <QStringTokenizer>

QHash<QByteArray, QByteArray> keyFileGroup(const QByteArray &path, const QByteArray &group)
{
    const QByteArray file = NativeFile::read(path).bytes.value_or(QByteArray());
    QHash<QByteArray, QByteArray> values;
    const QByteArray head = '[' + group + ']';
    bool isInGroup = group.isEmpty();
    for (const QLatin1String whole : qTokenize(QLatin1String(QByteArrayView(file)), u'\n')) {
        const auto line = QByteArrayView(whole.data(), whole.size()).trimmed();
        if (line.startsWith('[')) {
            if (isInGroup)
                break;
            isInGroup = line == head;
            continue;
        }
        const auto equals = line.indexOf('=');
        if (!isInGroup || equals <= 0 || line.startsWith('#'))
            continue;
        auto key = line.first(equals).trimmed();
        if (key.endsWith("[$e]"))
            key.chop(4);
        if (!key.endsWith(']')) // A language in brackets: most of the file is that.
            values.insert(key.toByteArray(), line.sliced(equals + 1).trimmed().toByteArray());
    }
    return values;
}
