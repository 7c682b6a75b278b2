#pragma once

#include "base/Ticket.h"
#include "panel/Animation.h"
#include "views/look/Motion.h"

#include <QPointF>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class AppSettings;
class DragSession;
class HotkeyScene;
class Icons;
class Localizer;
class MainQueue;
class Scene;
class ShelfStore;
class Switch;
class TryScene;
class WelcomeFooter;
class WelcomePage;

/// What the desktop does for the tour.
struct WelcomeDesktop
{
    MainQueue &queue;
    DragSession &session;
    Icons &icons;
    QString resources; // The folder with the icons' folder.
};

/// The tour: five pages that tell what the program does. On the last of them its
/// user drags a sample file onto the real panel. Pages turn by buttons, dots and
/// arrow keys; each window begins with the first.
class WelcomeView final : public QWidget
{
public:
    static constexpr int count = 5;

    WelcomeView(AppSettings &settings, ShelfStore &store, const Localizer &texts,
                const QUrl &demoURL, const WelcomeDesktop &desktop, QWidget *parent = nullptr);
    ~WelcomeView() override;

    std::function<void()> onDemoBegin;
    std::function<void()> onDemoEnd;
    /// Puts the sample on the shelf for who cannot drag it.
    std::function<void()> onDemoPut;
    std::function<void()> onDone;

    /// Turns to that page; nothing happens where there is none.
    void go(int index);
    int page() const { return m_page; }
    bool isForward() const { return m_forward; }
    void setMotion(Motion motion);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    void makePages(ShelfStore &store, const QUrl &demoURL, const WelcomeDesktop &desktop);
    void connectControls();
    void addShortcut(int key, std::function<void()> action);
    void refreshTexts();
    void refreshPage();
    void leftPressed();
    void rightPressed();
    void layOut();
    void slide(WelcomePage *leaving, WelcomePage *coming);
    int textHeight(int width) const;

    AppSettings &m_settings;
    const Localizer &m_texts;
    std::vector<Scene *> m_scenes;
    std::vector<WelcomePage *> m_pages;
    HotkeyScene *m_hotkeyScene = nullptr;
    TryScene *m_tryScene = nullptr;
    Switch *m_launchAtLogin;
    WelcomeFooter *m_footer;
    QString m_hotKeyLabel;
    int m_page = 0;
    bool m_forward = true;
    int m_heroHeight = 0;
    Motion m_motion = Motion::Full;
    Animation m_slide;
    std::optional<QPointF> m_downPoint; // A press on the background.
    std::vector<Ticket> m_subscriptions;
};
