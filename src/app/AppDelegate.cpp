#include "app/AppDelegate.h"

#include "base/FilePath.h"
#include "fileops/FileOps.h"
#include "platform/Autostart.h"
#include "platform/Clipboard.h"
#include "platform/DragSelection.h"
#include "platform/DragSession.h"
#include "platform/DropTarget.h"
#include "platform/FrontApplication.h"
#include "platform/Icons.h"
#include "platform/PanelWindow.h"
#include "platform/PointerMonitor.h"
#include "platform/Preferences.h"
#include "platform/Screens.h"
#include "platform/Sounds.h"
#include "platform/StatusItem.h"
#include "platform/TabWindow.h"
#include "views/onboarding/WelcomeView.h"
#include "views/preview/PreviewWindow.h"
#include "views/settings/AboutView.h"
#include "views/settings/SettingsView.h"

#include <QGuiApplication>

#include <optional>

namespace {

constexpr double cleanupPeriod = 60; // Seconds.
constexpr double locationPeriod = 3; // Seconds.
constexpr double longestTrayMenu = 60; // Seconds after which a tray has forgotten to tell its end.
constexpr double dropGrace = 0.4; // Seconds in which a drop may still land after the release.
constexpr double refusalTime = 2; // Seconds for which the panel stays to say that it took nothing.

/// The modifier that a drag must hold down to summon; 0 where none is asked for.
Modifiers requiredModifier(const QString &setting)
{
    if (setting == QLatin1String("command"))
        return EventModifier::Command;
    if (setting == QLatin1String("option"))
        return EventModifier::Option;
    if (setting == QLatin1String("control"))
        return EventModifier::Control;
    if (setting == QLatin1String("shift"))
        return EventModifier::Shift;
    return 0;
}

/// The age in seconds at which entries expire; none where they do not.
std::optional<double> expiryAge(const QString &setting)
{
    if (setting == QLatin1String("1h"))
        return 3600;
    if (setting == QLatin1String("1d"))
        return 86400;
    if (setting == QLatin1String("1w"))
        return 604800;
    return {};
}

}

AppDelegate::AppDelegate(const Desktop &desktop, Localizer &texts)
    : m_desktop(desktop)
    , m_texts(texts)
    , m_store(AppPaths(desktop.directories), desktop.queue, desktop.workers, desktop.bookmarks,
              desktop.sounds, desktop.pictures, texts)
    , m_settings(desktop.preferences, desktop.autostart, texts, desktop.directories.downloads)
    , m_thumbnails(desktop.pictures, desktop.thumbnails)
    , m_previewCache(desktop.pictures, desktop.queue)
    , m_monitor(desktop.pointer, desktop.dragSelection, desktop.frontApplication, desktop.screens,
                desktop.queue)
    , m_hotKey(desktop.hotKey)
    , m_folderWatcher(desktop.folderEvents, desktop.queue, desktop.workers)
    , m_openWith(desktop.applications, desktop.queue, desktop.workers)
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    connectPanel();
    connectStatusItem();
    connectHotKey();
    connectFolders();
    connectMonitor();
    connectSettings();
    m_monitor.start();
    welcomeOnce();
    runCleanup();
    // Nothing of the start shows them.
    m_desktop.queue.post([this] { m_toolkitTexts.setLanguage(m_texts.currentCode()); });
    m_cleanupTimer = m_desktop.queue.every(
        cleanupPeriod, [this] { runCleanup(); }, MainQueue::Precision::Coarse);
    m_panel->onWillShow = [this] {
        watchLocations();
        iconsSoon();
    };
}

void AppDelegate::connectPanel()
{
    m_view
        = std::make_unique<ShelfView>(m_store, m_settings, m_texts, m_ql, m_desktop.icons,
                                      m_desktop.dragSession, m_desktop.queue, m_desktop.resources);
    m_view->setThumbnails(m_thumbnails);
    m_desktop.panelWindow.setRootView(m_view.get());
    m_panel = std::make_unique<ShelfPanel>(
        m_desktop.panelWindow, m_desktop.screens, m_desktop.pointer, m_desktop.preferences,
        m_desktop.dragSession, m_desktop.icons, m_desktop.queue, m_ql);
    m_panel->positionMode = m_settings.summonPosition.value();
    m_panel->onKey = [this](const KeyEvent &event) { return handleKey(event); };
    m_panel->beginPress = [this] { m_store.pressedID.reset(); };
    m_panel->dragURLs = [this] { return m_store.dragURLs(); };
    m_panel->onDragBegan = [this] { m_view->cancelPress(); };
    connectDock();
    m_panel->onDraggedOut = [this](const QList<Address> &urls) { draggedOut(urls); };
    m_view->onDraggedOut = m_panel->onDraggedOut;
    m_view->onClose = [this] { m_panel->hide(); };
    connectPreview();
    m_view->onNeedsKeyboard = [this] { m_desktop.panelWindow.focus(); };
    m_view->onMoveWindow = [this] { m_desktop.panelWindow.performDrag(); };
    connectRows();
    m_desktop.dropTarget.mayTake = [this] { return !m_view->isAsking(); };
    m_desktop.dropTarget.onTargeted = [this](bool targeted) { m_view->setTargeted(targeted); };
    m_desktop.dropTarget.onDrop
        = [this](const ItemProviders &providers) { m_view->handleDrop(providers); };
}

void AppDelegate::connectRows()
{
    m_view->actions.open = [this](const QList<Address> &urls, const QString &application) {
        FileOps::open(urls, m_desktop.applications, m_desktop.workers, application);
    };
    m_view->actions.apps = [this](const QUrl &url) { return m_openWith.apps(url); };
    m_view->actions.reveal = [this](const QList<QUrl> &urls) {
        FileOps::reveal(urls, m_desktop.applications, m_desktop.workers);
    };
    m_view->actions.copyText
        = [this](const QList<Address> &urls) { m_desktop.clipboard.writeText(urls); };
}

void AppDelegate::connectDock()
{
    m_dockTab = std::make_unique<DockTab>(m_desktop.tabWindow, m_desktop.queue);
    m_dockTabView = std::make_unique<DockTabView>(m_store, m_dockTab->model);
    m_dockTabView->onPress = [this] { m_dockTab->onActivate(); };
    m_desktop.tabWindow.setRootView(m_dockTabView.get());
    m_panel->attachDock(*m_dockTab);
    m_panel->canDock = [this] { return !m_store.items.value().isEmpty(); };
    m_panel->hasModal
        = [this] { return m_view->isAsking() || QGuiApplication::modalWindow() != nullptr; };
    m_popups.onOpened = [this] { m_panel->menuOpened(); };
    m_popups.onClosed = [this] { m_panel->menuClosed(); };
}

void AppDelegate::connectStatusItem()
{
    m_view->moreEntries = [this] { return entriesWithoutTray(); };
    const QString image = m_desktop.resources + QStringLiteral("/icons/tray-full.svg");
    m_desktop.statusItem.setImage(QIcon(image), m_texts.text(QStringLiteral("app_name")));
    m_desktop.statusItem.onActivate = [this] { toggle(); };
    m_desktop.statusItem.onMenuOpened = [this] {
        m_panel->menuOpened();
        m_trayMenuLimit = m_desktop.queue.after(longestTrayMenu, [this] { m_panel->menuClosed(); });
    };
    m_desktop.statusItem.onMenuClosed = [this] {
        m_trayMenuLimit.reset();
        m_panel->menuClosed();
    };
    rebuildMenu();
}

void AppDelegate::connectHotKey()
{
    m_hotKey.onTrigger = [this] { toggle(); };
    applyHotKey();
}

void AppDelegate::connectFolders()
{
    m_folderWatcher.onNewFiles = [this](const QList<QUrl> &urls) {
        m_store.add(urls);
        m_panel->summon();
    };
    whenSet(m_settings.watchedFolders, [this](const QStringList &paths) {
        m_desktop.queue.post([this, paths] {
            QList<QByteArray> folders;
            for (const QString &path : paths)
                folders.append(FilePath::standardized(path.toUtf8()));
            m_folderWatcher.watch(folders);
        });
    });
    // The label is announced last, and stored after that.
    whenSet(
        m_settings.hotKeyLabel,
        [this](const QString &) { m_desktop.queue.post([this] { applyHotKey(); }); },
        Deliver::ChangesOnly);
}

void AppDelegate::connectMonitor()
{
    m_monitor.onDragStart = [this] { handleDragStart(); };
    m_monitor.onDragEnd = [this] { handleDragEnd(); };
    whenSet(m_settings.shakeToSummon, [this](bool enabled) { m_monitor.dragEnabled = enabled; });
    whenSet(m_settings.cornerToSummon, [this](bool enabled) { m_monitor.cornerEnabled = enabled; });
    whenSet(m_settings.dragModifier, [this](const QString &modifier) {
        m_monitor.requiredModifier = requiredModifier(modifier);
    });
    whenSet(m_settings.ignoredApps, [this](const QStringList &applications) {
        m_monitor.ignoredBundleIDs = QSet(applications.begin(), applications.end());
    });
    whenSet(m_settings.summonPosition,
            [this](const QString &mode) { m_panel->positionMode = mode; });
    whenSet(m_settings.dockToEdge, [this](bool enabled) { m_panel->setDockEnabled(enabled); });
    // A tab never stays for an empty shelf.
    whenSet(m_store.items, [this](const QList<ShelfItem> &items) {
        if (items.isEmpty() && m_panel->isDocked())
            m_panel->hide();
    });
}

void AppDelegate::connectSettings()
{
    // Settings announce a change before they store it: what reads the stored value waits a turn.
    whenSet(
        m_settings.autoCleanup,
        [this](const QString &) { m_desktop.queue.post([this] { runCleanup(); }); },
        Deliver::ChangesOnly);
    whenSet(
        m_settings.language,
        [this](const QString &code) {
            m_texts.setOverride(code);
            m_toolkitTexts.setLanguage(m_texts.currentCode());
            rebuildMenu();
            titleWindows();
        },
        Deliver::ChangesOnly);
    whenSet(m_desktop.look, [this](const DesktopLook &look) { followLook(look); });
}

void AppDelegate::followLook(const DesktopLook &look)
{
    m_style.apply(look);
    m_view->setMotion(look.motion);
    m_panel->setMotion(look.motion);
    m_panel->setTextScale(look.textScale);
    m_dockTab->setMotion(look.motion);
    if (m_preview)
        m_preview->setMotion(look.motion);
    if (m_settingsWindow)
        m_settingsWindow->setFixedSize(m_settingsWindow->sizeHint());
    if (m_welcomeWindow) {
        m_welcomeWindow->setMotion(look.motion);
        m_welcomeWindow->setFixedSize(m_welcomeWindow->sizeHint());
    }
}

void AppDelegate::toggle()
{
    if (m_panel->isVisible() && !m_panel->isDocked())
        m_panel->hide();
    else
        m_panel->summon();
}

/// Menus that start programs over the bus ask for that right after the first start, which
/// shows the tour alone.
void AppDelegate::activate()
{
    if (m_firstLaunch)
        showWelcome();
    else
        m_panel->summonWithFocus();
}

/// The menu names the key whether the desktop took it or not.
void AppDelegate::applyHotKey()
{
    if (!m_hotKey.registerHotKey(m_settings.hotKeyCode.value(), m_settings.hotKeyModifiers.value()))
        m_desktop.sounds.play(Sound::Beep);
    rebuildMenu();
}

void AppDelegate::runCleanup()
{
    if (const auto age = expiryAge(m_settings.autoCleanup.value()))
        m_store.pruneExpired(*age);
}

/// Follows files for as long as the panel shows, also as its tab. The timer ends
/// itself, so that nothing wakes up for a panel that is hidden.
void AppDelegate::watchLocations()
{
    m_store.refreshLocationsInBackground();
    if (m_locationTimer)
        return;
    m_locationTimer = m_desktop.queue.every(
        locationPeriod,
        [this] {
            if (m_panel->isVisible() || m_panel->isDocked())
                m_store.refreshLocationsInBackground();
            else
                m_locationTimer.reset();
        },
        MainQueue::Precision::Coarse);
}

void AppDelegate::handleDragStart()
{
    m_refusalRead.reset(); // The end of this drag decides.
    // A panel that is up stays as it is, and the drag must not change how it goes away.
    if (m_panel->isVisible() && !m_panel->isDocked())
        return;
    m_restoreDock = m_panel->isDocked();
    m_dropBaseline = m_store.items.value().size();
    m_panel->summon();
    m_autoShown = true;
}

void AppDelegate::handleDragEnd()
{
    if (!m_autoShown)
        return;
    m_pendingEnds.push_back(m_desktop.queue.after(dropGrace, [this, baseline = m_dropBaseline] {
        finishDrag(baseline);
        m_pendingEnds.pop_front(); // All wait equally long, so the oldest is the one that runs.
    }));
}

void AppDelegate::finishDrag(qsizetype baseline)
{
    const bool isUnchanged = m_autoShown && m_store.items.value().size() == baseline;
    if (isUnchanged && m_view->saysNothingTaken()) {
        m_refusalRead
            = m_desktop.queue.after(refusalTime, [this, baseline] { finishDrag(baseline); });
        return;
    }
    if (isUnchanged) {
        if (m_restoreDock)
            m_panel->dock();
        else
            m_panel->hide();
    }
    m_autoShown = false;
}

void AppDelegate::draggedOut(const QList<Address> &urls)
{
    if (m_settings.removeAfterDragOut.value())
        m_store.removeUrls(urls);
}
