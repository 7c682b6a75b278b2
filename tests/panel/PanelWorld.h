#pragma once

#include "panel/DockTab.h"
#include "panel/ShelfPanel.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePanelWindow.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/FakeTabWindow.h"
#include "platform/fake/VirtualQueue.h"
#include "store/QuickLookController.h"

#include <gtest/gtest.h>

#include <ostream>

// How GoogleTest prints them.
inline void PrintTo(const QRectF &rect, std::ostream *out)
{
    *out << rect.x() << "," << rect.y() << " " << rect.width() << "x" << rect.height();
}

/// Side by side, the left and main one with a bar of 30 points at the top.
inline const Screen leftScreen { QRectF(0, 0, 1000, 800), QRectF(0, 30, 1000, 770) };
inline const Screen rightScreen { QRectF(1000, 0, 800, 600), QRectF(1000, 0, 800, 600) };

/// A panel on these two screens.
struct PanelWorld
{
    explicit PanelWorld(const QJsonValue &storedFrame = QJsonValue::Undefined)
    {
        screens.screens = { leftScreen, rightScreen };
        pointer.at = QPointF(500, 400);
        if (!storedFrame.isUndefined())
            preferences.object.insert(QStringLiteral("ShelfPanelFrame"), storedFrame);
        panel.emplace(window, screens, pointer, preferences, session, icons, queue, ql);
    }
    void summonAndWait()
    {
        panel->summon();
        queue.advance(1);
    }

    VirtualQueue queue;
    FakePanelWindow window;
    FakeScreens screens;
    FakePointerMonitor pointer;
    FakePreferences preferences;
    FakeDragSession session;
    FakeIcons icons;
    QuickLookController ql;
    std::optional<ShelfPanel> panel;
};
