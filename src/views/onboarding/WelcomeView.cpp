#include "views/onboarding/WelcomeView.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "app/settings/ShortcutText.h"
#include "store/ShelfStore.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Brand.h"
#include "views/look/Look.h"
#include "views/look/Switch.h"
#include "views/onboarding/MockScenes.h"
#include "views/onboarding/TryScene.h"
#include "views/onboarding/WelcomeFooter.h"
#include "views/onboarding/WelcomePage.h"

#include <QAbstractButton>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QWindow>

#include <algorithm>
#include <array>

namespace {

constexpr QSize usualSize { 640, 640 };
constexpr int smallestHero = 150;
constexpr int usualHero = 410;
constexpr double slideDuration = 0.55; // Seconds.
constexpr int moveDistance = 4; // Points until a press on the background moves the window.
constexpr int hotkeyPage = 3;

struct PageKeys
{
    QString title;
    QString subtitle;
};

const std::array<PageKeys, WelcomeView::count> &pageKeys()
{
    static const std::array<PageKeys, WelcomeView::count> keys { {
        { QStringLiteral("wel_p1_title"), QStringLiteral("wel_p1_sub") },
        { QStringLiteral("wel_p2_title"), QStringLiteral("wel_p2_sub") },
        { QStringLiteral("wel_p3_title"), QStringLiteral("wel_p3_sub") },
        { QStringLiteral("wel_p4_title"), QStringLiteral("wel_p4_sub") },
        { QStringLiteral("wel_p5_title"), QStringLiteral("wel_p5_sub") },
    } };
    return keys;
}

}

WelcomeView::WelcomeView(AppSettings &settings, ShelfStore &store, const Localizer &texts,
                         const QUrl &demoURL, const WelcomeDesktop &desktop, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_texts(texts)
    , m_launchAtLogin(new Switch)
    , m_footer(new WelcomeFooter(count, this))
    , m_slide(desktop.queue)
{
    setAccessibleRole(*this, QAccessible::Window);
    makePages(store, demoURL, desktop);
    connectControls();
    m_subscriptions.push_back(settings.hotKeyLabel.subscribe([this](const QString &label) {
        m_hotKeyLabel = label;
        refreshTexts();
    }));
    m_subscriptions.push_back(settings.language.subscribe(
        [this](const QString &) { refreshTexts(); }, Deliver::ChangesOnly));
    m_subscriptions.push_back(settings.launchAtLogin.subscribe(
        [this](bool enabled) { m_launchAtLogin->setChecked(enabled); }));
    m_footer->right().setFocus();
}

WelcomeView::~WelcomeView() = default;

void WelcomeView::makePages(ShelfStore &store, const QUrl &demoURL, const WelcomeDesktop &desktop)
{
    const MockSources sources { desktop.queue, m_texts, desktop.session, desktop.resources };
    m_hotkeyScene = new HotkeyScene(sources);
    m_tryScene
        = new TryScene(store, demoURL, m_texts, desktop.queue, desktop.session, desktop.icons);
    m_scenes = { new IntroScene(sources), new DragScene(sources), new OutScene(sources),
                 m_hotkeyScene, m_tryScene };
    for (Scene *scene : m_scenes) {
        QWidget *extras = scene == m_tryScene ? m_launchAtLogin : nullptr;
        auto *page = new WelcomePage(scene, extras, this);
        page->setVisible(m_pages.empty());
        m_pages.push_back(page);
    }
    m_footer->raise();
    setTabOrder(&m_tryScene->control(), m_launchAtLogin);
    setTabOrder(m_launchAtLogin, &m_footer->left());
    setTabOrder(&m_footer->left(), &m_footer->dot(0));
    setTabOrder(&m_footer->dot(count - 1), &m_footer->right());
}

void WelcomeView::connectControls()
{
    m_tryScene->onBegin = [this] { onDemoBegin(); };
    m_tryScene->onEnd = [this] { onDemoEnd(); };
    m_tryScene->onPut = [this] { onDemoPut(); };
    connect(m_launchAtLogin, &QCheckBox::toggled, this, [this](bool checked) {
        if (checked != m_settings.launchAtLogin.value())
            m_settings.launchAtLogin.set(checked);
    });
    connect(&m_footer->left(), &QAbstractButton::clicked, this, [this] { leftPressed(); });
    connect(&m_footer->right(), &QAbstractButton::clicked, this, [this] { rightPressed(); });
    m_footer->onDot = [this](int page) { go(page); };
    addShortcut(Qt::Key_Left, [this] { go(m_page + (isRightToLeft() ? 1 : -1)); });
    addShortcut(Qt::Key_Right, [this] { go(m_page + (isRightToLeft() ? -1 : 1)); });
    addShortcut(Qt::Key_PageUp, [this] { go(m_page - 1); });
    addShortcut(Qt::Key_PageDown, [this] { go(m_page + 1); });
    const auto press = [this] {
        auto *button = qobject_cast<QAbstractButton *>(focusWidget());
        (button && button->isVisible() ? button : &m_footer->right())->click();
    };
    addShortcut(Qt::Key_Return, press);
    addShortcut(Qt::Key_Enter, press);
    auto *close = new QShortcut(QKeySequence::Close, this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
}

/// Before the buttons, which take the arrow keys for themselves.
void WelcomeView::addShortcut(int key, std::function<void()> action)
{
    auto *shortcut = new QShortcut(QKeySequence(key), this);
    connect(shortcut, &QShortcut::activated, this, std::move(action));
}

void WelcomeView::refreshTexts()
{
    const QString shortcut = shortcutText(m_hotKeyLabel, m_texts);
    QStringList names;
    for (int i = 0; i < count; ++i) {
        const PageKeys &keys = pageKeys()[static_cast<size_t>(i)];
        const QString subtitle = i == hotkeyPage ? m_texts.text(keys.subtitle, { shortcut })
                                                 : m_texts.text(keys.subtitle);
        names.append(m_texts.text(keys.title));
        m_pages[static_cast<size_t>(i)]->setTexts(names.last(), subtitle);
    }
    m_hotkeyScene->setShortcut(shortcut);
    m_tryScene->refreshTexts();
    m_launchAtLogin->setText(m_texts.text(QStringLiteral("launch_at_login")));
    m_footer->setPageNames(names);
    refreshPage();
    layOut();
}

void WelcomeView::refreshPage()
{
    m_footer->setLabels(
        m_texts.text(m_page == 0 ? QStringLiteral("wel_skip") : QStringLiteral("wel_back")),
        m_texts.text(m_page == count - 1 ? QStringLiteral("welcome_start")
                                         : QStringLiteral("wel_next")));
    m_footer->setPage(m_page);
}

void WelcomeView::leftPressed()
{
    if (m_page == 0)
        onDone();
    else
        go(m_page - 1);
}

void WelcomeView::rightPressed()
{
    if (m_page == count - 1)
        onDone();
    else
        go(m_page + 1);
}

void WelcomeView::go(int index)
{
    if (index < 0 || index >= count || index == m_page)
        return;
    m_forward = index > m_page;
    auto *leaving = m_pages[static_cast<size_t>(m_page)];
    auto *coming = m_pages[static_cast<size_t>(index)];
    // A page that goes does not take the keyboard with it.
    if (focusWidget() && leaving->isAncestorOf(focusWidget()))
        m_footer->right().setFocus();
    m_page = index;
    refreshPage();
    slide(leaving, coming);
}

/// Both pages move by the window's width; a page that still moved before that
/// is put away at once.
void WelcomeView::slide(WelcomePage *leaving, WelcomePage *coming)
{
    m_slide.cancel();
    const auto settle = [this, coming] {
        for (auto *page : m_pages)
            page->setVisible(page == coming);
        coming->move(0, 0);
    };
    if (m_motion == Motion::Reduced || !isVisible())
        return settle();
    const int way = m_forward != isRightToLeft() ? width() : -width();
    const auto place = [=](double progress) {
        leaving->move(qRound(-way * progress), 0);
        coming->move(qRound(way * (1 - progress)), 0);
    };
    for (auto *page : m_pages)
        page->setVisible(page == coming || page == leaving);
    place(0);
    m_slide.begin(slideDuration, AnimationCurve::Spring, place, settle);
}

void WelcomeView::setMotion(Motion motion)
{
    m_motion = motion;
    for (Scene *scene : m_scenes)
        scene->setMotion(motion);
}

int WelcomeView::textHeight(int width) const
{
    int height = 0;
    for (const auto *page : m_pages)
        height = std::max(height, page->textHeight(width));
    return height;
}

/// Larger where the texts are: the picture gives way last.
QSize WelcomeView::sizeHint() const
{
    const QSize available = screen()->availableSize() - QSize(40, 60);
    const int width = std::max(usualSize.width(), m_footer->sizeHint().width());
    const int wanted
        = textHeight(width) + m_footer->sizeHint().height() + usualSize.height() * 9 / 20;
    return QSize(width, std::max(usualSize.height(), wanted)).boundedTo(available);
}

void WelcomeView::layOut()
{
    const int footer = m_footer->sizeHint().height();
    m_footer->setGeometry(0, height() - footer, width(), footer);
    const int room = height() - footer - textHeight(width()) - 12;
    m_heroHeight = std::clamp(room, smallestHero, usualHero);
    const int gap = std::max(0, (room - usualHero) / 3);
    for (auto *page : m_pages) {
        page->resize(width(), height() - footer);
        page->setHeroHeight(m_heroHeight, gap);
    }
    update();
}

void WelcomeView::resizeEvent(QResizeEvent *)
{
    layOut();
}

void WelcomeView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange)
        layOut();
    QWidget::changeEvent(event);
}

/// The background of the pictures, which stands still while pages slide over it.
void WelcomeView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor window = palette().color(QPalette::Window);
    painter.fillRect(rect(), window);
    const QRectF hero(0, 0, width(), m_heroHeight);
    QLinearGradient wash = Brand::gradient(hero, layoutDirection());
    const double share = window.lightness() < 128 ? 0.17 : 0.2;
    wash.setColorAt(0, Look::blended(Brand::top, window, share));
    wash.setColorAt(1, Look::blended(Brand::bottom, window, share));
    painter.fillRect(hero, wash);
    painter.fillRect(QRectF(0, m_heroHeight - 1, width(), 1), Look::shade(palette(), 0.08));
}

void WelcomeView::mousePressEvent(QMouseEvent *event)
{
    m_downPoint.reset();
    if (event->button() == Qt::LeftButton)
        m_downPoint = event->position();
}

void WelcomeView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_downPoint || (event->position() - *m_downPoint).manhattanLength() < moveDistance)
        return;
    m_downPoint.reset();
    windowHandle()->startSystemMove();
}
