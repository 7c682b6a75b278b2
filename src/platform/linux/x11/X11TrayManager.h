#pragma once

#include "platform/linux/session/WindowSystem.h"

#include <QAbstractNativeEventFilter>

#include <cstdint>

/// The manager of embedded windows on the screen (_NET_SYSTEM_TRAY_Sn), heard of on the
/// toolkit's connection. Source: https://specifications.freedesktop.org/systemtray-spec
class X11TrayManager final : public EmbeddingTray, private QAbstractNativeEventFilter
{
public:
    X11TrayManager();
    ~X11TrayManager() override;
    X11TrayManager(const X11TrayManager &) = delete;
    X11TrayManager &operator=(const X11TrayManager &) = delete;

    bool isThere() const override { return m_isThere; }

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

    bool m_isThere = false;
    uint32_t m_selection = 0;
    uint8_t m_selectionNotify = 0; // The event's number.
};
