#include "platform/linux/session/DesktopEntries.h"

#include "platform/linux/session/KeyFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace {

/// "env NAME=value program": what runs in the end is the program.
void skipEnv(QStringList &words)
{
    if (words.isEmpty() || QFileInfo(words.first()).fileName() != QLatin1String("env"))
        return;
    words.removeFirst();
    while (
        !words.isEmpty()
        && (words.first().startsWith(QLatin1Char('-')) || words.first().contains(QLatin1Char('='))))
        words.removeFirst();
}

}

DesktopEntries::DesktopEntries(QStringList folders)
    : m_folders(std::move(folders))
{
}

bool DesktopEntries::contains(const QString &identifier)
{
    refresh();
    return m_identifiers.value(identifier);
}

QString DesktopEntries::identifierOf(const QString &path) const
{
    constexpr QLatin1String suffix(".desktop");
    if (!path.endsWith(suffix))
        return {};
    QString name = QFileInfo(path).fileName();
    for (const auto &folder : m_folders) {
        if (path.startsWith(folder + QLatin1Char('/'))) {
            name = path.mid(folder.size() + 1);
            break;
        }
    }
    name.chop(suffix.size());
    return name.replace(QLatin1Char('/'), QLatin1Char('-')); // As the menu specification has it.
}

QString DesktopEntries::matching(const QStringList &programs, const QStringList &arguments)
{
    refresh();
    // What the entries' programs really are is a look at the disk for each of them.
    for (const auto names : { Names::Written, Names::Real }) {
        for (const auto &program : programs) {
            int best = 0;
            QString identifier;
            for (auto &entry : m_entries) {
                const int like = likeness(entry, program, arguments, names);
                if (like <= best)
                    continue;
                best = like;
                identifier = entry.identifier;
            }
            if (best > 0)
                return identifier;
        }
    }
    return {};
}

/// 0 for another program's entry. One program may have several entries, which
/// differ by arguments; those that the process was not given speak against one.
int DesktopEntries::likeness(Entry &entry, const QString &program, const QStringList &arguments,
                             Names names)
{
    const QString &known = names == Names::Written ? entry.program : executableOf(entry);
    if (QFileInfo(program).fileName() != QFileInfo(known).fileName())
        return 0;
    const auto given = std::ranges::count_if(
        entry.arguments, [&](const QString &argument) { return arguments.contains(argument); });
    const bool isSameFile = program == entry.program || program == executableOf(entry);
    return 1 + (entry.isInMenus ? 1 : 0) + 2 * static_cast<int>(std::min<qsizetype>(given, 9))
        + (isSameFile ? 20 : 0) + (given == entry.arguments.size() ? 40 : 0);
}

const QString &DesktopEntries::executableOf(Entry &entry)
{
    if (!entry.executable) {
        const bool isPath = entry.program.contains(QLatin1Char('/'));
        const QString path = isPath ? entry.program : QStandardPaths::findExecutable(entry.program);
        entry.executable = QFileInfo(path).canonicalFilePath();
    }
    return *entry.executable;
}

void DesktopEntries::refresh()
{
    const bool isCurrent = !m_changeTimes.isEmpty()
        && std::all_of(m_changeTimes.begin(), m_changeTimes.end(), [](const auto &folder) {
               return QFileInfo(folder.first).lastModified() == folder.second;
           });
    if (isCurrent)
        return;
    m_changeTimes.clear();
    m_entries.clear();
    m_identifiers.clear();
    for (const auto &folder : m_folders)
        readFolder(folder, {});
}

void DesktopEntries::readFolder(const QString &folder, const QString &prefix)
{
    m_changeTimes.append({ folder, QFileInfo(folder).lastModified() });
    const auto files
        = QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const auto &file : files) {
        if (file.isDir() && !file.isSymLink())
            readFolder(file.filePath(), prefix + file.fileName() + QLatin1Char('-'));
        else if (file.fileName().endsWith(QLatin1String(".desktop")))
            readEntry(file.filePath(), prefix + file.completeBaseName());
    }
}

void DesktopEntries::readEntry(const QString &path, const QString &identifier)
{
    if (m_identifiers.contains(identifier))
        return; // A more important folder has it.
    const auto values = keyFileGroup(QFile::encodeName(path), "Desktop Entry");
    const bool isApplication
        = values.value("Type") == "Application" && values.value("Hidden") != "true";
    m_identifiers.insert(identifier, isApplication);
    // Entries of Flatpak all run the same program, and their processes say who they are.
    if (!isApplication || values.contains("X-Flatpak"))
        return;
    QStringList words = QProcess::splitCommand(QString::fromUtf8(values.value("Exec")));
    skipEnv(words);
    if (words.isEmpty())
        return;
    Entry entry { identifier, words.takeFirst(), {}, {}, values.value("NoDisplay") != "true" };
    for (const auto &word : words) {
        if (!word.contains(QLatin1Char('%'))) // A code for files and the like.
            entry.arguments.append(word);
    }
    m_entries.append(entry);
}
