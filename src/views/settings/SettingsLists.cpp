#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/Sounds.h"
#include "views/look/DialogTitle.h"
#include "views/settings/AppBadge.h"
#include "views/settings/ApplicationPicker.h"
#include "views/settings/EntryList.h"
#include "views/settings/SettingsView.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>

#include <algorithm>

// The part of the settings that lists applications and folders.

/// What is installed, and where screenshots go, may differ from one opening to the next.
void SettingsView::refreshDesktop(const std::function<void()> &then)
{
    const auto take = [this, then](const QList<InstalledApplication> &installed,
                                   const QByteArray &screenshotFolder) {
        m_installed = installed;
        m_screenshotFolder = screenshotFolder;
        showIgnored(m_settings.ignoredApps.value());
        showWatched(m_settings.watchedFolders.value());
        if (then)
            then();
    };
    m_desktop.workers.run(
        WorkerPriority::UserInitiated, [take, alive = std::weak_ptr(m_alive), desktop = m_desktop] {
            desktop.queue.post([take, alive, installed = desktop.installedApplications(),
                                folder = desktop.screenshotFolder()] {
                if (alive.lock())
                    take(installed, folder);
            });
        });
}

void SettingsView::showIgnored(const QStringList &identifiers)
{
    QList<EntryList::Entry> entries;
    for (const QString &identifier : identifiers) {
        const AppBadge badge(identifier, m_installed);
        entries.append({ identifier, badge.name, badge.icon });
    }
    m_ignored->setEntries(entries);
    m_ignored->parentWidget()->setHidden(entries.isEmpty());
}

void SettingsView::showWatched(const QStringList &paths)
{
    QList<EntryList::Entry> entries;
    for (const QString &path : paths)
        entries.append({ path, path, m_folderIcon });
    m_watched->setEntries(entries);
    m_watched->parentWidget()->setHidden(entries.isEmpty());
    const auto isScreenshots = [this](const QString &path) {
        return FilePath::standardized(path.toUtf8()) == m_screenshotFolder;
    };
    const bool watched = std::any_of(paths.begin(), paths.end(), isScreenshots);
    const bool focused = m_addScreenshots->isAncestorOf(window()->focusWidget());
    const bool hidden = m_screenshotFolder.isEmpty() || watched;
    // Its own work takes the button away. The toolkit would give the keyboard to what comes
    // next, and scroll there.
    if (focused && hidden)
        m_watched->focusLast();
    m_addScreenshots->setHidden(hidden);
}

/// Of those that are installed by now.
void SettingsView::pickIgnoredApp()
{
    refreshDesktop([this] {
        if (!findChild<ApplicationPicker *>())
            offerApplications();
    });
}

void SettingsView::offerApplications()
{
    QList<InstalledApplication> offered;
    for (const auto &application : m_installed) {
        if (application.isInMenus
            && !m_settings.ignoredApps.value().contains(application.identifier))
            offered.append(application);
    }
    auto *dialog = new ApplicationPicker(offered, m_texts, this);
    dialog->setWindowIcon(windowIcon());
    dialog->onPicked = [this](const QStringList &picked) {
        auto identifiers = m_settings.ignoredApps.value();
        for (const QString &identifier : picked) {
            if (!identifiers.contains(identifier))
                identifiers.append(identifier);
        }
        m_settings.ignoredApps.set(identifiers);
    };
    dialog->open();
}

void SettingsView::pickWatchFolder()
{
    const QString title = dialogTitle(m_texts.text(QStringLiteral("watch_add")));
    const auto take = [this, alive = std::weak_ptr(m_alive)](const QUrl &url) {
        if (alive.lock())
            addWatchedFolder(FilePath::fromUrl(url));
    };
    const auto ask = [this, title, take, alive = std::weak_ptr(m_alive)] {
        if (!alive.lock())
            return;
        auto *dialog = new QFileDialog(this, title);
        dialog->setWindowIcon(windowIcon());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
        // Desktops' dialogs and the toolkit's own tell of the choice by different signals.
        QObject::connect(dialog, &QDialog::accepted, this, [dialog, take] {
            const auto urls = dialog->selectedUrls();
            take(urls.isEmpty() ? QUrl() : urls.first());
        });
        dialog->open();
    };
    m_desktop.chooseFolder(*window(), title, take, ask);
}

/// A path that is no text cannot be a setting, and what is elsewhere on the network has none.
void SettingsView::addWatchedFolder(const QByteArray &folder)
{
    const QString path = QString::fromUtf8(folder);
    if (folder.isEmpty() || path.toUtf8() != folder) {
        m_desktop.sounds.play(Sound::Beep);
        return;
    }
    auto paths = m_settings.watchedFolders.value();
    if (!paths.contains(path))
        m_settings.watchedFolders.set(paths << path);
}

/// It is watched from the first screenshot on, which may be what would make it.
void SettingsView::addScreenshotFolder()
{
    m_desktop.workers.runAt(m_screenshotFolder,
                            [this, alive = std::weak_ptr(m_alive), &queue = m_desktop.queue,
                             folder = m_screenshotFolder] {
                                const bool exists = QDir().mkpath(QFile::decodeName(folder));
                                queue.post([this, alive, exists, folder] {
                                    if (alive.lock())
                                        addWatchedFolder(exists ? folder : QByteArray());
                                });
                            });
}
