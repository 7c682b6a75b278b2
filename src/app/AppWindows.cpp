#include "app/AppDelegate.h"

#include "app/Feedback.h"
#include "fileops/FileOps.h"
#include "platform/Applications.h"
#include "platform/OwnFile.h"
#include "views/look/AccessibleRole.h"
#include "views/look/ProgramIcon.h"
#include "views/onboarding/WelcomeView.h"
#include "views/preview/PreviewWindow.h"
#include "views/settings/AboutView.h"
#include "views/settings/SettingsView.h"

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

/// With a title and a button that closes, and of a size that is its own.
void dress(QWidget &window, const QString &resources)
{
    window.setWindowIcon(programIcon(resources));
    window.setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                          | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
}

QString versionAndBuild()
{
    return QStringLiteral(VANTLE_VERSION " (" VANTLE_BUILD ")");
}

}

void AppDelegate::openSettings()
{
    if (!m_settingsWindow) {
        m_settingsWindow = std::make_unique<SettingsView>(
            m_settings, m_texts,
            SettingsDesktop {
                m_desktop.queue, m_desktop.workers, m_desktop.sounds, m_desktop.icons,
                m_desktop.resources, m_desktop.keyEvent,
                [&applications = m_desktop.applications] { return applications.all(); },
                m_desktop.screenshotFolder, m_desktop.chooseFolder });
        dress(*m_settingsWindow, m_desktop.resources);
        m_settingsWindow->setFixedSize(m_settingsWindow->sizeHint());
        centre(*m_settingsWindow);
        for (const auto &key :
             { QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close) }) {
            auto *close = new QShortcut(key, m_settingsWindow.get());
            QObject::connect(close, &QShortcut::activated, m_settingsWindow.get(), &QWidget::close);
        }
    }
    titleWindows();
    m_desktop.bringToFront(*m_settingsWindow);
}

/// The mark is stored first, so that no end of the program brings the tour back.
void AppDelegate::welcomeOnce()
{
    if (m_settings.onboarded.value())
        return;
    m_settings.onboarded.set(true);
    constexpr double longestStart = 1; // Seconds until what asked for the start has asked for more.
    m_firstLaunch = m_desktop.queue.after(longestStart, [this] { m_firstLaunch.reset(); });
    m_desktop.queue.post([this] { showWelcome(); });
}

void AppDelegate::showWelcome()
{
    if (!m_welcomeWindow || !m_welcomeWindow->isVisible()) {
        const QUrl demo = m_store.makeDemoFile();
        m_welcomeWindow = std::make_unique<WelcomeView>(
            m_settings, m_store, m_texts, demo,
            WelcomeDesktop { m_desktop.queue, m_desktop.dragSession, m_desktop.icons,
                             m_desktop.resources });
        m_welcomeWindow->onDemoBegin = [this] { handleDragStart(); };
        m_welcomeWindow->onDemoEnd = [this] { handleDragEnd(); };
        m_welcomeWindow->onDemoPut = [this, demo] { putDemoFile(demo); };
        m_welcomeWindow->onDone = [this] {
            m_firstLaunch.reset();
            m_welcomeWindow->close();
            m_panel->summon();
        };
        m_welcomeWindow->setMotion(m_desktop.look.value().motion);
        dress(*m_welcomeWindow, m_desktop.resources);
        m_welcomeWindow->setFixedSize(m_welcomeWindow->sizeHint());
        centre(*m_welcomeWindow);
        titleWindows();
    }
    m_desktop.bringToFront(*m_welcomeWindow);
}

/// What a drag of it onto the panel would do.
void AppDelegate::putDemoFile(const QUrl &url)
{
    handleDragStart();
    m_view->handleDrop({ std::make_shared<OwnFile>(url) });
    handleDragEnd();
}

void AppDelegate::showAbout()
{
    if (!m_aboutWindow) {
        m_aboutWindow
            = std::make_unique<AboutView>(m_texts, m_desktop.resources, versionAndBuild());
        dress(*m_aboutWindow, m_desktop.resources);
    }
    m_aboutWindow->refreshTexts();
    if (!m_aboutWindow->isVisible())
        centre(*m_aboutWindow);
    m_desktop.bringToFront(*m_aboutWindow);
}

void AppDelegate::sendFeedback()
{
    const QUrl address
        = feedbackAddress(QStringLiteral(VANTLE_WEBSITE), m_texts.currentCode(), versionAndBuild());
    if (address.isValid())
        FileOps::open({ address }, m_desktop.applications, m_desktop.workers);
}

/// For what lists windows. It is drawn in many sizes, which takes a moment: the panel is up first.
void AppDelegate::iconsSoon()
{
    constexpr double afterwards = 1; // Seconds.
    if (m_iconTimer)
        return;
    m_iconTimer = m_desktop.queue.after(afterwards, [this] {
        for (const QWidget *view :
             std::initializer_list<QWidget *> { m_view.get(), m_dockTabView.get() })
            view->window()->setWindowIcon(programIcon(m_desktop.resources));
    });
}

/// In the language in force.
void AppDelegate::titleWindows()
{
    if (m_preview)
        m_preview->refreshTexts();
    if (m_welcomeWindow)
        setTitle(*m_welcomeWindow, m_texts.text(QStringLiteral("welcome_window_title")));
    if (m_aboutWindow)
        m_aboutWindow->refreshTexts();
    if (m_settingsWindow)
        setTitle(*m_settingsWindow, m_texts.text(QStringLiteral("settings_title")));
}
