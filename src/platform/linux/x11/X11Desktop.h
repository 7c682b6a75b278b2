#pragma once

#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/WindowScale.h"
#include "platform/linux/x11/X11Clipboard.h"
#include "platform/linux/x11/X11DragSelection.h"
#include "platform/linux/x11/X11DragSession.h"
#include "platform/linux/x11/X11FrontApplication.h"
#include "platform/linux/x11/X11HotKey.h"
#include "platform/linux/x11/X11PanelWindow.h"
#include "platform/linux/x11/X11PointerMonitor.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11TabWindow.h"
#include "platform/linux/x11/X11TrayManager.h"
#include "platform/linux/x11/XSettingsWatch.h"
#include "platform/linux/x11/XdndTarget.h"

/// What the X server does for the program, with what joins the parts to each other. Main thread.
struct X11Desktop
{
    /// Whether there is a server to talk to: the toolkit ends the process where it finds none.
    static bool hasServer();

    /// textFolder: where texts that users put on a shelf are kept.
    X11Desktop(MainQueue &queue, Workers &workers, const QByteArray &textFolder);

    WatchConnection watch;
    X11PointerMonitor pointer;
    X11DragSelection dragSelection;
    X11FrontApplication front;
    X11HotKey hotKey;
    X11Screens screens;
    X11PanelWindow panelWindow;
    X11TabWindow tabWindow;
    XdndTarget dropTarget;
    X11DragSession dragSession;
    X11Clipboard clipboard;
    XSettingsWatch settings;
    X11TrayManager tray;
    WindowScale scale;
};
