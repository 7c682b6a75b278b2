#include "platform/linux/ProcessEnd.h"

#include <QSet>

void endSoon(std::unique_ptr<QProcess> process)
{
    if (!process)
        return;
    process->disconnect();
    // In reach until the end, where some may be left.
    static auto *const ending = new QSet<QProcess *>;
    QProcess *const left = process.release();
    ending->insert(left);
    const auto gone = [left] {
        ending->remove(left);
        left->deleteLater();
    };
    if (left->state() == QProcess::NotRunning)
        return gone();
    QObject::connect(left, &QProcess::finished, left, gone);
    left->kill();
}
