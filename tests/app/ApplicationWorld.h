#pragma once

#include "app/AppDelegate.h"

#include "platform/StatusItem.h"
#include "platform/fake/FakeApplications.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakeClipboard.h"
#include "platform/fake/FakeDragSelection.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeFolderEvents.h"
#include "platform/fake/FakeFrontApplication.h"
#include "platform/fake/FakeHotKey.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakeItemProvider.h"
#include "platform/fake/FakePanelWindow.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/FakeTabWindow.h"
#include "platform/fake/FakeThumbnailGenerator.h"
#include "platform/fake/VirtualQueue.h"
#include "store/AppPaths.h"

#include <QJsonObject>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

inline FakePreferences withValues(const QJsonObject &values)
{
    FakePreferences preferences;
    preferences.object = values;
    if (!values.contains(QStringLiteral("onboarded")))
        preferences.object.insert(QStringLiteral("onboarded"), true);
    return preferences;
}

class MenuOnly final : public StatusItem
{
public:
    void setImage(const QIcon &, const QString &) override { }
    void setMenu(const QList<MenuEntry> &next) override { entries = next; }
    bool isShown() const override { return shown; }
    bool shown = true;
    QList<MenuEntry> entries;
};

/// The whole program over a desktop that a test moves.
class Application
{
public:
    explicit Application(const QJsonObject &stored = {},
                         const QSet<FakeHotKey::Combination> &taken = {})
        : preferences(withValues(stored))
    {
        hotKey.taken = taken;
        pointer.at = QPointF(400, 400);
        delegate.applicationDidFinishLaunching();
        queue.settle();
    }

    bool isUp() const { return window.visible && window.opacity > 0; }
    void beginFileDrag()
    {
        pointer.press({ 400, 400 });
        selection.announce();
        selection.answer(true);
        pointer.drag({ 410, 400 });
        queue.settle();
    }
    void endDrag()
    {
        pointer.release();
        queue.settle();
    }
    /// A drop of another program's text.
    void drop(const char *text)
    {
        const auto object = std::make_shared<FakeItemProvider>();
        object->text = QString::fromUtf8(text);
        dropTarget.onDrop({ object });
        object->answer();
        queue.settle();
    }
    bool press(int keyCode, Modifiers modifiers = 0, const char *characters = "")
    {
        return window.onKey({ keyCode, modifiers, QString::fromLatin1(characters) });
    }

    QTemporaryDir folder;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    FakeBookmarks bookmarks;
    FakeSounds sounds;
    FakePreferences preferences;
    FakeAutostart autostart;
    FakeScreens screens;
    FakePointerMonitor pointer;
    FakeDragSelection selection;
    FakeFrontApplication front { queue };
    FakeHotKey hotKey;
    FakeIcons icons;
    FakePanelWindow window;
    FakeTabWindow tab;
    DropTarget dropTarget;
    FakeDragSession session;
    MenuOnly status;
    FakeClipboard clipboard;
    FakeApplications applications;
    FakeFolderEvents folderEvents;
    Observable<DesktopLook> look;
    FakePictureDecoder pictures;
    FakeThumbnailGenerator thumbnails;
    QString resources = QStringLiteral(VANTLE_SOURCE_DIR "/src/resources");
    Localizer texts { resources + QStringLiteral("/Vantle_Vantle.bundle"), {} };
    AppDelegate delegate { { queue,
                             workers,
                             bookmarks,
                             sounds,
                             preferences,
                             autostart,
                             screens,
                             pointer,
                             selection,
                             front,
                             hotKey,
                             icons,
                             window,
                             tab,
                             dropTarget,
                             session,
                             status,
                             Directories { {}, folder.path().toUtf8(), {}, {}, {}, {}, {} },
                             resources,
                             clipboard,
                             applications,
                             folderEvents,
                             look,
                             pictures,
                             thumbnails,
                             [](QWidget &opened) { opened.show(); },
                             {},
                             {},
                             [](const QUrl &url) { return url.scheme() == u"smb"_s; },
                             [](const QList<Address> &urls) { return urls; },
                             {},
                             {} },
                           texts };
};
