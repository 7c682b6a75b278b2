#pragma once

#include "platform/linux/session/DesktopEntries.h"

#include <mutex>

/// From a process to the application that it is. Reads what may wait for that
/// process and for where its program lies: worker threads only.
class ApplicationResolver
{
public:
    /// processes: "/proc" or what stands for it. applications: the folders with
    /// desktop entries, the most important first.
    ApplicationResolver(QString processes, const QStringList &applications);

    /// Its desktop entry's id without ".desktop"; empty where none can be told.
    /// Asked in turn: the sandbox, the launcher's mark in the environment, the
    /// unit in which the session runs it, and what the installed entries start.
    QString identifier(qint64 process);

private:
    QString find(qint64 process);
    QString fromSandbox(qint64 process) const;
    QString fromLauncher(qint64 process) const;
    QString fromUnit(qint64 process);
    QString fromProgram(qint64 process);
    QString path(qint64 process, const char *name) const;
    QByteArray read(qint64 process, const char *name) const;

    QString m_processes; // "/proc"
    std::mutex m_mutex; // Of what follows.
    DesktopEntries m_entries;
    QByteArray m_lastProcess; // Most drags come from the one that the last came from.
    QString m_lastIdentifier;
};

/// The application's id in the name of a systemd unit, as desktops and D-Bus
/// name the units in which they start applications; empty for other units.
QString applicationInUnit(const QString &unit);
