#include "app/AppDelegate.h"

#include "app/settings/ShortcutText.h"
#include "platform/StatusItem.h"

QList<MenuEntry> AppDelegate::entriesWithoutTray()
{
    if (m_desktop.statusItem.isShown())
        return {};
    return {
        { m_texts.text(QStringLiteral("menu_settings")), [this] { openSettings(); }, {} },
        { m_texts.text(QStringLiteral("menu_welcome")), [this] { showWelcome(); }, {} },
        { m_texts.text(QStringLiteral("menu_quit")), [this] { onQuit(); }, {} },
    };
}

void AppDelegate::rebuildMenu()
{
    const QString shortcut = shortcutText(m_settings.hotKeyLabel.value(), m_texts);
    m_desktop.statusItem.setMenu({
        { m_texts.text(QStringLiteral("menu_toggle"), { shortcut }), [this] { toggle(); }, {} },
        {}, // A separator.
        { m_texts.text(QStringLiteral("menu_welcome")), [this] { showWelcome(); }, {} },
        { m_texts.text(QStringLiteral("menu_about")), [this] { showAbout(); }, {} },
        { m_texts.text(QStringLiteral("menu_feedback")), [this] { sendFeedback(); }, {} },
        { m_texts.text(QStringLiteral("menu_settings")), [this] { openSettings(); },
          QStringLiteral(",") },
        {},
        { m_texts.text(QStringLiteral("menu_quit")), [this] { onQuit(); }, QStringLiteral("q") },
    });
}
