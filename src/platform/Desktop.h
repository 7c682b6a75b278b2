#pragma once

#include "base/Observable.h"
#include "platform/DesktopLook.h"
#include "platform/Directories.h"
#include "platform/KeyEvent.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>

class Applications;
class Autostart;
class Bookmarks;
class Clipboard;
class DragSelection;
class DragSession;
class DropTarget;
class FolderEvents;
class FrontApplication;
class HotKey;
class Icons;
class MainQueue;
class MediaPlayer;
class PanelWindow;
class PictureDecoder;
class PointerMonitor;
class Preferences;
class QKeyEvent;
struct Address;
class QUrl;
class QWidget;
class Screens;
class Sounds;
class StatusItem;
class TabWindow;
class ThumbnailGenerator;
class Workers;

/// What the desktop does for the program. All of it outlives whoever gets this.
struct Desktop
{
    MainQueue &queue;
    Workers &workers;
    Bookmarks &bookmarks;
    Sounds &sounds;
    Preferences &preferences;
    Autostart &autostart;
    Screens &screens;
    PointerMonitor &pointer;
    DragSelection &dragSelection;
    FrontApplication &frontApplication;
    HotKey &hotKey;
    Icons &icons;
    PanelWindow &panelWindow;
    TabWindow &tabWindow;
    DropTarget &dropTarget;
    DragSession &dragSession;
    StatusItem &statusItem;
    Directories directories;
    QString resources; // The folder with icons, sounds and texts.
    Clipboard &clipboard;
    Applications &applications;
    FolderEvents &folderEvents;
    Observable<DesktopLook> &look;
    PictureDecoder &pictures;
    ThumbnailGenerator &thumbnails;

    /// Shows a window of ours in front and with the keyboard, whoever had it.
    std::function<void(QWidget &)> bringToFront;
    /// The toolkit's key press in the program's terms.
    std::function<KeyEvent(const QKeyEvent &)> keyEvent;
    /// Where the desktop's own tool writes screenshots; the folder need not exist. Reads small
    /// files: for worker threads.
    std::function<QByteArray()> screenshotFolder;
    /// Whether an address is one that the desktop may have mounted (sftp, smb, mtp …).
    std::function<bool(const QUrl &)> isRemote;
    /// The addresses with the local paths of those that it has mounted. For worker threads.
    std::function<QList<Address>(const QList<Address> &)> localFiles;
    /// Plays a sound or film, paused at first.
    std::function<std::unique_ptr<MediaPlayer>(const QUrl &)> play;
    /// The desktop's question for a folder in front of a window, with its title: the first
    /// callback takes the choice, the second is called where the desktop does not ask.
    std::function<void(QWidget &, const QString &, std::function<void(const QUrl &)>,
                       std::function<void()>)>
        chooseFolder;
};
