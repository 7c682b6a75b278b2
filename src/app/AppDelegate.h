#pragma once

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "app/settings/ToolkitTexts.h"
#include "base/MainQueue.h"
#include "fileops/OpenWithCache.h"
#include "fileops/ThumbnailLoader.h"
#include "panel/DockTab.h"
#include "panel/FolderWatcher.h"
#include "panel/HotKeyCenter.h"
#include "panel/ShelfPanel.h"
#include "panel/SummonMonitor.h"
#include "platform/Desktop.h"
#include "store/QuickLookController.h"
#include "store/ShelfStore.h"
#include "views/look/DesktopStyle.h"
#include "views/look/PopupWatch.h"
#include "views/preview/PreviewCache.h"
#include "views/shelf/DockTabView.h"
#include "views/shelf/ShelfView.h"

#include <deque>
#include <functional>
#include <memory>
#include <vector>

class AboutView;
class PreviewWindow;
class QWidget;
class SettingsView;
class WelcomeView;

/// Owns every long-lived part and connects them. No part knows another except
/// through a callback or a subscription that is installed here, in the order in
/// which applicationDidFinishLaunching lists them. Main thread.
class AppDelegate
{
public:
    /// Loads the shelves, then the settings, which give the texts their language.
    AppDelegate(const Desktop &desktop, Localizer &texts);
    ~AppDelegate();
    AppDelegate(const AppDelegate &) = delete;
    AppDelegate &operator=(const AppDelegate &) = delete;

    void applicationDidFinishLaunching();

    /// Hides a panel that is up, summons one that is not.
    void toggle();
    /// A second start of the program, or the desktop's request: the panel comes
    /// up and takes the keyboard.
    void activate();
    /// Puts files and web addresses on the shelf and summons the panel.
    void openUrls(const QList<Address> &urls);
    /// The same with text, where there is neither; false, and nothing happens, if
    /// there is nothing to add.
    bool addToShelf(const QList<Address> &urls, const QString &text);
    /// "toggle", "paste", "new-shelf", "settings", "quit".
    void performAction(const QString &name);

    /// Opens the settings' window, or brings it to the front where the user left it.
    void openSettings();
    /// The tour, from its first page; one that is open comes to the front as it is.
    void showWelcome();

    std::function<void()> onQuit;

private:
    void connectPanel();
    void connectRows();
    void connectPreview();
    void showPreview();
    void previewItemsChanged();
    void connectDock();
    void connectStatusItem();
    void connectHotKey();
    void connectFolders();
    void connectMonitor();
    void connectSettings();
    void followLook(const DesktopLook &look);
    void rebuildMenu();
    /// What the shelves' menu offers where no tray does.
    QList<MenuEntry> entriesWithoutTray();
    void titleWindows();
    void iconsSoon();
    void welcomeOnce();
    void putDemoFile(const QUrl &url);
    void showAbout();
    void sendFeedback();
    void applyHotKey();
    void runCleanup();
    void watchLocations();
    void handleDragStart();
    void handleDragEnd();
    void finishDrag(qsizetype baseline);
    void draggedOut(const QList<Address> &urls);
    bool handleKey(const KeyEvent &event);
    bool handleCommandKey(const KeyEvent &event);
    bool switchToShelf(qsizetype index);
    bool openSelection();
    bool copySelection();
    bool pasteIntoShelf();
    bool addUrls(const QList<Address> &urls);
    bool addKnownUrls(const QList<Address> &urls);

    template<typename T>
    void whenSet(Observable<T> &property, typename Observable<T>::Handler handler,
                 Deliver deliver = Deliver::CurrentFirst)
    {
        m_subscriptions.push_back(property.subscribe(std::move(handler), deliver));
    }

    Desktop m_desktop;
    Localizer &m_texts;
    ShelfStore m_store;
    AppSettings m_settings;
    QuickLookController m_ql;
    DesktopStyle m_style;
    ToolkitTexts m_toolkitTexts;
    Thumbnails m_thumbnails; // Before the view.
    PreviewCache m_previewCache;
    std::unique_ptr<ShelfView> m_view; // Before the panel: the panel shows it.
    std::unique_ptr<DockTab> m_dockTab; // Before the panel, too.
    std::unique_ptr<DockTabView> m_dockTabView;
    std::unique_ptr<ShelfPanel> m_panel;
    std::unique_ptr<SettingsView> m_settingsWindow; // Made when it is first opened.
    std::unique_ptr<PreviewWindow> m_preview; // Made when it is first opened.
    QSet<QUuid> m_previewSelection; // When the preview was last told what to show.
    std::unique_ptr<WelcomeView> m_welcomeWindow; // Made anew whenever it opens.
    std::unique_ptr<AboutView> m_aboutWindow;
    PopupWatch m_popups;
    SummonMonitor m_monitor;
    HotKeyCenter m_hotKey;
    FolderWatcher m_folderWatcher;
    OpenWithCache m_openWith;
    std::vector<Ticket> m_subscriptions;
    Ticket m_iconTimer; // From the first time that the panel comes up.
    Ticket m_cleanupTimer;
    Ticket m_trayMenuLimit; // Runs while the tray's menu is open.
    Ticket m_locationTimer; // Runs while the panel is up.

    Ticket m_firstLaunch; // Runs while a request may belong to the very first start.
    bool m_autoShown = false; // The panel is up only because a drag summoned it.
    qsizetype m_dropBaseline = 0; // Entries on the shelf when that drag began.
    bool m_restoreDock = false; // The panel was docked when that drag began.
    Ticket m_refusalRead; // Runs while the panel stays up to say that nothing was taken.
    std::deque<Ticket> m_pendingEnds; // Drag ends whose 0.4 seconds run, oldest first.
    // Results that come back later ask it first.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
