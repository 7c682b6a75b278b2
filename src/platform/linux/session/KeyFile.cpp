#include "platform/linux/session/KeyFile.h"

#include "base/NativeFile.h"

QHash<QByteArray, QByteArray> keyFileGroup(const QByteArray &path, const QByteArray &group)
{
    const QByteArray file = NativeFile::read(path).bytes.value_or(QByteArray());
    QHash<QByteArray, QByteArray> values;
    const QByteArray head = '[' + group + ']';
    bool isInGroup = group.isEmpty();
    for (qsizetype from = 0; from < file.size();) {
        auto end = file.indexOf('\n', from);
        end = end < 0 ? file.size() : end;
        const auto line = QByteArrayView(file).sliced(from, end - from).trimmed();
        from = end + 1;
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
