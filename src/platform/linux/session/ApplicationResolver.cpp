#include "platform/linux/session/ApplicationResolver.h"

#include "platform/linux/session/KeyFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace {

/// systemd writes what may not stand in a unit's name as "\x2d".
QString unescaped(const QString &name)
{
    QByteArray bytes = name.toUtf8();
    for (auto at = bytes.indexOf("\\x"); at >= 0; at = bytes.indexOf("\\x", at + 1))
        bytes.replace(at, 4, QByteArray::fromHex(bytes.mid(at + 2, 2)));
    return QString::fromUtf8(bytes);
}

bool isInterpreter(const QString &program)
{
    static const QRegularExpression names(QStringLiteral(
        "^(python|perl|ruby|gjs|node|java|mono|bash|dash|sh)[0-9.]*(-sgen|-console)?$"));
    return names.match(QFileInfo(program).fileName()).hasMatch();
}

/// Names under which the entry may know it. A program that a script runs is known
/// by the script; "soffice.bin" is what "soffice" starts.
QStringList programsOf(const QString &executable, const QStringList &commandLine)
{
    QStringList programs;
    if (isInterpreter(executable)) {
        const auto script = std::find_if(
            commandLine.begin() + std::min<qsizetype>(1, commandLine.size()), commandLine.end(),
            [](const QString &word) { return !word.startsWith(QLatin1Char('-')); });
        if (script != commandLine.end())
            programs.append(*script);
    } else {
        programs.append(executable);
        for (const QLatin1String suffix : { QLatin1String(".bin"), QLatin1String("-bin") }) {
            if (executable.endsWith(suffix))
                programs.append(executable.chopped(suffix.size()));
        }
    }
    if (!commandLine.isEmpty())
        programs.append(commandLine.first());
    programs.removeAll(QString());
    return programs;
}

}

QString applicationInUnit(const QString &unit)
{
    // app[-launcher]-ID-RANDOM.scope, app[-launcher]-ID[@RANDOM].service and the
    // message bus's dbus-:1.2-ID@0.service; a hyphen in the id itself is escaped.
    static const QRegularExpression forms(
        QStringLiteral("^(?:app-(?:[^-]+-)?([^-@]+)-[^-]+\\.scope"
                       "|app-(?:[^-]+-)?([^-@]+)(?:@[^@]*)?\\.service"
                       "|dbus-:[0-9.]+-([^@]+)@[0-9]+\\.service)$"));
    const auto match = forms.match(unit);
    return match.hasMatch() ? unescaped(match.captured(match.lastCapturedIndex())) : QString();
}

ApplicationResolver::ApplicationResolver(QString processes, const QStringList &applications)
    : m_processes(std::move(processes))
    , m_entries(applications)
{
}

QString ApplicationResolver::identifier(qint64 process)
{
    // Ids are given out again; with its start time, the 22nd field, a process has one of its own.
    const QByteArray stat = read(process, "stat");
    const auto fields = stat.mid(stat.lastIndexOf(')') + 1).split(' ');
    const QByteArray key = QByteArray::number(process) + ' ' + fields.value(20);
    const std::lock_guard lock(m_mutex);
    if (key != m_lastProcess) {
        m_lastIdentifier = find(process);
        m_lastProcess = key;
    }
    return m_lastIdentifier;
}

QString ApplicationResolver::find(qint64 process)
{
    QString found = fromSandbox(process);
    if (found.isEmpty())
        found = fromLauncher(process);
    if (found.isEmpty())
        found = fromUnit(process);
    if (found.isEmpty())
        found = fromProgram(process);
    return found;
}

QString ApplicationResolver::fromSandbox(qint64 process) const
{
    const auto file = QFile::encodeName(path(process, "root/.flatpak-info"));
    return QString::fromUtf8(keyFileGroup(file, "Application").value("name"));
}

/// GIO marks what it launches. Children inherit the mark, but not the process id in it.
QString ApplicationResolver::fromLauncher(qint64 process) const
{
    QByteArray file;
    QByteArray launched;
    for (const auto &variable : read(process, "environ").split('\0')) {
        const auto equals = variable.indexOf('=');
        const auto name = variable.left(equals);
        if (name == "GIO_LAUNCHED_DESKTOP_FILE")
            file = variable.mid(equals + 1);
        else if (name == "GIO_LAUNCHED_DESKTOP_FILE_PID")
            launched = variable.mid(equals + 1);
    }
    return launched == QByteArray::number(process) ? m_entries.identifierOf(QFile::decodeName(file))
                                                   : QString();
}

QString ApplicationResolver::fromUnit(qint64 process)
{
    for (const auto &line : QString::fromUtf8(read(process, "cgroup")).split(QLatin1Char('\n'))) {
        for (const auto &unit : line.split(QLatin1Char('/'))) {
            QString identifier = applicationInUnit(unit);
            if (!identifier.isEmpty() && m_entries.contains(identifier))
                return identifier;
        }
    }
    return {};
}

QString ApplicationResolver::fromProgram(qint64 process)
{
    QString executable = QFileInfo(path(process, "exe")).symLinkTarget();
    constexpr QLatin1String deleted(" (deleted)"); // Replaced by an update while it ran.
    if (executable.endsWith(deleted))
        executable.chop(deleted.size());
    QStringList commandLine;
    for (const auto &word : read(process, "cmdline").split('\0')) {
        if (!word.isEmpty())
            commandLine.append(QFile::decodeName(word));
    }
    return m_entries.matching(programsOf(executable, commandLine), commandLine.mid(1));
}

QString ApplicationResolver::path(qint64 process, const char *name) const
{
    return m_processes + QLatin1Char('/') + QString::number(process) + QLatin1Char('/')
        + QLatin1String(name);
}

/// Files of the process folder have no size that could be asked for.
QByteArray ApplicationResolver::read(qint64 process, const char *name) const
{
    QFile file(path(process, name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
