#include "views/preview/PreviewWindow.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/Icons.h"
#include "platform/MediaPlayer.h"
#include "store/QuickLookController.h"
#include "views/look/AccessibleRole.h"
#include "views/look/ElidedLabel.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"
#include "views/preview/CardPage.h"
#include "views/preview/DocumentPage.h"
#include "views/preview/ListingPage.h"
#include "views/preview/MediaPage.h"
#include "views/preview/PicturePage.h"
#include "views/preview/PreviewCache.h"
#include "views/preview/PreviewHeader.h"
#include "views/preview/TextPage.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr double patience = 0.03; // Seconds until the window shows before its content.
constexpr double longestHold = 0.4; // Seconds that the last file's content stays meanwhile.
constexpr QSize usualSize(720, 560);
constexpr QSize smallestSize(360, 280);
constexpr double mostOfScreen = 0.8;
constexpr int panelGap = 16; // Points between window and panel.
constexpr int iconSize = 16; // Points.

PreviewPage *makePage(const PreviewItem &item, const PreviewServices &services, QWidget *parent)
{
    using Kind = PreviewFiles::Kind;
    const QUrl &url = item.url;
    const Kind kind = PreviewFiles::kindOf(url);
    switch (kind) {
    case Kind::Image:
        return new PicturePage(url, services, parent);
    case Kind::Document:
        return new DocumentPage(url, services, parent);
    case Kind::Text:
        return new TextPage(url, services, parent);
    case Kind::Folder:
    case Kind::Archive:
        return new ListingPage(url, kind, services, parent);
    case Kind::Media:
        if (services.play)
            return new MediaPage(url, services, parent);
        break;
    case Kind::WebLocation:
    case Kind::Other:
        break;
    }
    return new CardPage(item, services, parent);
}

}

PreviewWindow::PreviewWindow(const QuickLookController &ql, PreviewServices services)
    : QWidget(nullptr, Qt::Window | Qt::WindowStaysOnTopHint)
    , m_ql(ql)
    , m_services(std::move(services))
    , m_icon(new PlainLabel(this))
    , m_name(new ElidedLabel(this))
    , m_facts(new PlainLabel(this))
    , m_position(new PlainLabel(this))
    , m_open(new OpenButton(this))
    , m_column(new QVBoxLayout(this))
{
    setMinimumSize(smallestSize);
    setFocusPolicy(Qt::StrongFocus);
    m_open->setFocusPolicy(Qt::TabFocus);
    connect(m_open, &QPushButton::clicked, this, [this] {
        const QUrl url = m_url;
        dismiss(); // It would lie over what opens.
        if (onOpen)
            onOpen(url);
    });
    auto *header = new QHBoxLayout;
    header->setContentsMargins(12, 8, 12, 8);
    header->setSpacing(8);
    header->addWidget(m_icon);
    header->addWidget(m_name, 1);
    header->addWidget(m_facts);
    header->addWidget(m_position);
    header->addWidget(m_open);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->addLayout(header);
    m_column->addWidget(new Hairline(this));
    m_column->addStretch(); // Gives way to a page; without one the header stays at the top.
    refreshTexts();
}

PreviewWindow::~PreviewWindow()
{
    onKeyboardFree = nullptr;
}

int PreviewWindow::numberOfPreviewItems() const
{
    return static_cast<int>(m_ql.urls.size());
}

QUrl PreviewWindow::previewItemAt(int index) const
{
    if (m_ql.urls.isEmpty())
        return FilePath::toUrl("/", FilePath::Kind::Directory);
    return m_ql.urls.value(index, m_ql.urls.first());
}

PreviewItem PreviewWindow::item() const
{
    return { m_url, m_ql.titles.value(m_url) };
}

void PreviewWindow::open(const QRect &panel)
{
    m_panel = panel;
    m_isUp = true;
    m_hasKeyboard = true;
    m_url = QUrl();
    m_patience = m_services.queue.after(patience, [this] { appear(); });
    const bool inRange = m_ql.startIndex >= 0 && m_ql.startIndex < numberOfPreviewItems();
    showItem(inRange ? m_ql.startIndex : 0);
    if (isVisible() && bringToFront)
        bringToFront(*this); // It may lie behind others.
}

void PreviewWindow::reloadData(Shown shown)
{
    if (!m_isUp)
        return;
    if (m_ql.urls.isEmpty()) {
        dismiss();
        return;
    }
    if (shown == Shown::StartIndex)
        return showItem(m_ql.startIndex);
    const auto kept = static_cast<int>(m_ql.urls.indexOf(m_url));
    showItem(kept >= 0 ? kept : std::min(m_index, numberOfPreviewItems() - 1));
}

void PreviewWindow::walk(int step)
{
    const int next = m_index + step;
    if (next < 0 || next >= numberOfPreviewItems())
        return;
    showItem(next);
}

void PreviewWindow::showItem(int index)
{
    const QUrl url = previewItemAt(index);
    m_index = index;
    if (url != m_url) {
        m_url = url;
        load(makePage(item(), m_services, this), Fallback::Allowed);
    }
    refreshHeader();
    prepareNeighbours();
}

/// The page on screen stays until the next one has something to show, but not for
/// long: it would pass for the other file's.
void PreviewWindow::load(PreviewPage *page, Fallback fallback)
{
    if (m_page && m_page != m_shown)
        m_page->deleteLater();
    m_page = page;
    page->hide();
    page->setMotion(m_motion);
    page->onReady = [this, page] {
        if (m_page == page)
            display(page);
    };
    page->onFailed = [this, page, fallback] {
        if (m_page == page && fallback == Fallback::Allowed)
            load(new CardPage(item(), m_services, this), Fallback::None);
    };
    m_hold = m_services.queue.after(longestHold, [this] {
        if (m_shown != m_page)
            letGo(m_shown);
    });
    page->load();
}

void PreviewWindow::letGo(PreviewPage *page)
{
    if (!page)
        return;
    if (focusWidget() && page->isAncestorOf(focusWidget()))
        setFocus(); // Else it would go to the button, and with it the space bar.
    page->hide();
    page->deleteLater();
}

void PreviewWindow::display(PreviewPage *page)
{
    letGo(m_shown);
    m_shown = page;
    m_column->addWidget(page, 1);
    page->show();
    refreshHeader();
    if (m_isUp && !isVisible())
        appear();
}

void PreviewWindow::appear()
{
    m_patience.reset();
    if (!m_isUp || isVisible())
        return;
    place();
    if (bringToFront)
        bringToFront(*this);
    setFocus();
}

/// Beside the panel where there is room for it, in the middle of that side, so that both are
/// seen; else in the middle of the screen.
void PreviewWindow::place()
{
    const QScreen *screen = QGuiApplication::screenAt(m_panel.center());
    const QRect work = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    QRect left = work;
    QRect right = work;
    left.setRight(std::min(work.right(), m_panel.left() - panelGap));
    right.setLeft(std::max(work.left(), m_panel.right() + panelGap));
    const QRect side = left.width() >= right.width() ? left : right;
    const QRect room
        = side.width() >= minimumSizeHint().expandedTo(smallestSize).width() ? side : work;

    const int chrome
        = m_column->itemAt(0)->sizeHint().height() + m_column->itemAt(1)->sizeHint().height();
    const QSize most = (work.size() * mostOfScreen).boundedTo(room.size()) - QSize(0, chrome);
    QSize size = usualSize.boundedTo(most);
    const auto content = m_page ? m_page->contentSize() : std::nullopt;
    if (content)
        size = content->width() > most.width() || content->height() > most.height()
            ? content->scaled(most, Qt::KeepAspectRatio)
            : *content;
    QRect frame({},
                (size + QSize(0, chrome)).expandedTo(minimumSizeHint()).expandedTo(smallestSize));
    frame.moveCenter(room.center());
    setGeometry(frame);
}

/// Those on both sides, so that walking shows them at once. What is shown, its page asks for.
void PreviewWindow::prepareNeighbours()
{
    QList<QUrl> wanted;
    for (const int index : { m_index + 1, m_index - 1 }) {
        if (index >= 0 && index < numberOfPreviewItems())
            wanted.append(m_ql.urls[index]);
    }
    m_services.cache.prepare(wanted);
}

void PreviewWindow::refreshHeader()
{
    const QString name = item().name();
    setTitle(*this, name);
    m_name->setText(name);
    ToolTip::set(*m_name, name);
    const bool isAddress = PreviewFiles::kindOf(m_url) == PreviewFiles::Kind::WebLocation;
    const QIcon icon
        = isAddress ? m_services.icons.forWebLocation() : m_services.icons.forFile(m_url);
    const int points = qRound(iconSize * Look::textScale);
    m_icon->setPixmap(icon.pixmap(QSize(points, points), devicePixelRatio()));
    const int count = numberOfPreviewItems();
    m_position->setText(QStringLiteral("%1 / %2").arg(m_index + 1).arg(count));
    m_position->setVisible(count > 1);
    m_facts->setText(m_shown && m_shown == m_page ? m_shown->facts() : QString());
    m_facts->setVisible(!m_facts->text().isEmpty());
}

void PreviewWindow::refreshTexts()
{
    m_open->setText(m_services.texts.text(QStringLiteral("open")));
    m_name->setFont(Look::font(font(), 13, QFont::DemiBold));
    for (QLabel *label : { m_facts, m_position })
        label->setFont(Look::font(font(), 11));
    refreshHeader();
    if (m_page)
        m_page->refreshTexts();
}

void PreviewWindow::setMotion(Motion motion)
{
    m_motion = motion;
    if (m_page)
        m_page->setMotion(motion);
}

bool PreviewWindow::event(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        refreshTexts();
    else if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
        m_hasKeyboard = event->type() == QEvent::WindowActivate;
    return QWidget::event(event);
}

void PreviewWindow::keyPressEvent(QKeyEvent *event)
{
    using Step = PreviewPage::Step;
    const bool isOnce = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return
        || event->key() == Qt::Key_Enter;
    if (isOnce && event->isAutoRepeat())
        return;
    const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
    const int forward = isRightToLeft() ? -1 : 1;
    const auto scroll = [this](Step step) {
        if (m_shown)
            m_shown->scroll(step);
    };
    const auto zoom = [this](PreviewPage::Zoom how) {
        if (m_shown)
            m_shown->zoom(how);
    };
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Escape:
        return dismiss();
    case Qt::Key_Up:
        return walk(-1);
    case Qt::Key_Down:
        return walk(1);
    case Qt::Key_Left:
        return walk(-forward);
    case Qt::Key_Right:
        return walk(forward);
    case Qt::Key_PageUp:
        return scroll(Step::PageUp);
    case Qt::Key_PageDown:
        return scroll(Step::PageDown);
    case Qt::Key_Home:
        return scroll(Step::Start);
    case Qt::Key_End:
        return scroll(Step::End);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoom(PreviewPage::Zoom::In);
    case Qt::Key_Minus:
        return zoom(PreviewPage::Zoom::Out);
    case Qt::Key_0:
        return zoom(PreviewPage::Zoom::Fit);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return m_open->click();
    case Qt::Key_W:
        if (control)
            return dismiss();
        break;
    case Qt::Key_C:
        if (control && m_shown)
            return m_shown->copy();
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void PreviewWindow::dismiss()
{
    const bool hadKeyboard = m_hasKeyboard; // Hiding takes it.
    if (isVisible())
        hide();
    else
        end();
    if (hadKeyboard && onKeyboardFree)
        onKeyboardFree();
}

void PreviewWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    dismiss();
}

void PreviewWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        end();
}

/// What it showed is let go.
void PreviewWindow::end()
{
    if (!std::exchange(m_isUp, false))
        return;
    m_patience.reset();
    m_hold.reset();
    letGo(m_page);
    letGo(m_shown);
    m_page = nullptr;
    m_shown = nullptr;
    m_url = QUrl();
}
