#include "app/AppDelegate.h"

#include "platform/linux/InstalledApplications.h"
#include "platform/linux/ScreenshotFolder.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "views/SettingsView.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>

namespace {

/// In the middle of the screen that the pointer is on.
void centre(QWidget &window)
{
    const QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    QRect frame(QPoint(), window.size());
    frame.moveCenter((screen ? screen : window.screen())->availableGeometry().center());
    window.move(frame.topLeft());
}

}

void AppDelegate::openSettings()
{
    if (!m_settingsWindow) {
        const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
        m_settingsWindow = std::make_unique<SettingsView>(
            m_settings, m_texts,
            SettingsDesktop { m_desktop.queue, m_desktop.workers, m_desktop.sounds, m_desktop.icons,
                              m_desktop.resources, X11Keyboard::keyEvent, installedApplications,
                              [directories = m_desktop.directories, desktops] {
                                  return screenshotFolder(directories, desktops);
                              } });
        m_settingsWindow->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                                         | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
        m_settingsWindow->setFixedSize(m_settingsWindow->sizeHint());
        centre(*m_settingsWindow);
        auto *close = new QShortcut(QKeySequence::Close, m_settingsWindow.get());
        QObject::connect(close, &QShortcut::activated, m_settingsWindow.get(), &QWidget::close);
    }
    titleWindows();
    m_desktop.bringToFront(*m_settingsWindow);
}

/// In the language in force.
void AppDelegate::titleWindows()
{
    if (m_settingsWindow)
        m_settingsWindow->setWindowTitle(m_texts.text(QStringLiteral("settings_title")));
}
