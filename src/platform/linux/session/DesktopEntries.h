#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

/// The installed applications' desktop entries, as far as they tell which of
/// them a process is. Read when first asked, and again after a folder changed.
class DesktopEntries
{
public:
    /// folders: the applications folders, the most important first.
    explicit DesktopEntries(QStringList folders);

    bool contains(const QString &identifier);
    /// The id of an entry's file; empty if it has not an entry's name.
    QString identifierOf(const QString &path) const;

    /// The entry that starts such a process; empty if none does. programs: paths
    /// or names under which it may be known, the best first.
    QString matching(const QStringList &programs, const QStringList &arguments);

private:
    struct Entry
    {
        QString identifier;
        QString program; // As the entry writes it.
        std::optional<QString> executable; // What that is on the disk, once it was looked up.
        QStringList arguments; // Those that are always given.
        bool isInMenus = true;
    };

    void refresh();
    void readFolder(const QString &folder, const QString &prefix);
    void readEntry(const QString &path, const QString &identifier);
    enum class Names { Written, Real };
    static int likeness(Entry &entry, const QString &program, const QStringList &arguments,
                        Names names);
    static const QString &executableOf(Entry &entry);

    QStringList m_folders;
    QList<Entry> m_entries;
    QHash<QString, bool> m_identifiers; // Whether it is an application, or hides one.
    QList<std::pair<QString, QDateTime>> m_changeTimes; // Of each folder that was read.
};
