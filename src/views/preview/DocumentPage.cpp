#include "views/preview/DocumentPage.h"

#include "app/settings/Localizer.h"
#include "base/MainQueue.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"

#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int gap = 12; // Points between pages and around them.
constexpr int firstPixels = 1024;
constexpr int mostPixels = 3500; // Along the longer side of a page.
constexpr qsizetype mostBytes = 96 << 20; // Of rendered pages: two of the largest fit in.
constexpr double largestZoom = 4;
constexpr double zoomStep = 1.25;
constexpr double renderPause = 0.05; // Seconds.

}

DocumentPage::DocumentPage(QUrl url, PreviewServices services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(std::move(url))
    , m_services(std::move(services))
    , m_bar(new QScrollBar(Qt::Vertical, this))
    , m_across(new QScrollBar(Qt::Horizontal, this))
    , m_pages(mostBytes)
{
    setAccessibleRole(*this, QAccessible::Document);
    setAccessibleName(m_url.fileName());
    for (QScrollBar *bar : { m_bar, m_across }) {
        bar->setFocusPolicy(Qt::NoFocus);
        bar->hide();
        connect(bar, &QScrollBar::valueChanged, this, [this] {
            setAccessibleDescription(place()); // Tells of a turn of pages.
            renderSoon();
        });
    }
    refreshTexts();
}

void DocumentPage::refreshTexts()
{
    nameBar(*m_bar, m_services.texts);
    nameBar(*m_across, m_services.texts);
}

void DocumentPage::load()
{
    m_first
        = m_services.decoder.page(m_url, 0, firstPixels, PictureDecoder::Urgency::Preview,
                                  [this](const std::optional<PictureDecoder::Picture> &picture) {
                                      if (!picture || picture->whole.isEmpty())
                                          return onFailed();
                                      m_count = picture->count;
                                      m_size = picture->whole;
                                      layOut();
                                      take(0, *picture);
                                      onReady();
                                      renderVisible();
                                  });
}

void DocumentPage::take(int page, const PictureDecoder::Picture &picture)
{
    m_pages.insert(page, new QImage(picture.image), picture.image.sizeInBytes());
    update();
}

std::optional<QSize> DocumentPage::contentSize() const
{
    if (m_size.isEmpty())
        return std::nullopt;
    // Large enough to be read: most pages are larger than a window can be.
    return (m_size * 1.3).toSize() + QSize(2 * gap + m_bar->sizeHint().width(), 2 * gap);
}

QSizeF DocumentPage::cell() const
{
    const double room = std::max(50, width() - m_bar->sizeHint().width() - 2 * gap);
    // A page that lies on its side, or a single one, is seen whole at first.
    const double most = m_size.height() <= m_size.width() || m_count == 1
        ? std::max(50, height() - 2 * gap)
        : 1e6;
    QSizeF result = m_size.scaled(room, most, Qt::KeepAspectRatio);
    return result * m_zoom;
}

QRectF DocumentPage::pageRect(int page) const
{
    const QSizeF size = cell();
    const double room = width() - m_bar->sizeHint().width();
    const double left = isRightToLeft() ? m_bar->sizeHint().width() : 0;
    const double middle = m_across->value() - m_across->maximum() / 2.0;
    return { left + (room - size.width()) / 2 - middle,
             gap + page * (size.height() + gap) - m_bar->value(), size.width(), size.height() };
}

void DocumentPage::layOut()
{
    const int bar = m_bar->sizeHint().width();
    m_bar->setGeometry(isRightToLeft() ? 0 : width() - bar, 0, bar, height());
    const auto contents
        = static_cast<int>(std::min(1e8, std::ceil(gap + m_count * (cell().height() + gap))));
    // What is in the middle stays there.
    const double place
        = m_bar->maximum() > 0 ? static_cast<double>(m_bar->value()) / m_bar->maximum() : 0;
    m_bar->setRange(0, std::max(0, contents - height()));
    m_bar->setPageStep(height());
    m_bar->setSingleStep(40);
    m_bar->setValue(static_cast<int>(place * m_bar->maximum()));
    m_bar->setVisible(m_bar->maximum() > 0);

    const int room = width() - bar;
    const int high = m_across->sizeHint().height();
    m_across->setGeometry(isRightToLeft() ? bar : 0, height() - high, room, high);
    const int before = m_across->maximum();
    const auto beyond = std::max(0, static_cast<int>(cell().width()) + 2 * gap - room);
    const int value = m_across->value();
    m_across->setLayoutDirection(Qt::LeftToRight); // A page has its left side on the left.
    m_across->setRange(0, beyond);
    m_across->setPageStep(room);
    m_across->setSingleStep(40);
    m_across->setValue(before > 0 ? qRound(1.0 * value * beyond / before) : beyond / 2);
    m_across->setVisible(beyond > 0);
}

std::pair<int, int> DocumentPage::visiblePages() const
{
    const double pitch = cell().height() + gap;
    const int first = static_cast<int>((m_bar->value() - gap) / pitch);
    const int last = static_cast<int>((m_bar->value() + height()) / pitch);
    return { std::clamp(first, 0, m_count), std::min(m_count, last + 1) };
}

/// Pages that only fly by are not rendered.
void DocumentPage::renderSoon()
{
    update();
    if (m_count > 0)
        m_pause = m_services.queue.after(renderPause, [this] { renderVisible(); });
}

/// What left the view before its turn is not rendered any more.
void DocumentPage::renderVisible()
{
    const auto [first, end] = visiblePages();
    m_work.removeIf([first = first, end = end](const auto &entry) {
        return entry.key() < first || entry.key() >= end;
    });
    const QSizeF size = cell();
    const int wanted = std::min(
        mostPixels,
        static_cast<int>(std::ceil(std::max(size.width(), size.height()) * devicePixelRatio())));
    for (int page = first; page < end; ++page) {
        const QImage *known = m_pages.object(page);
        if ((known && std::max(known->width(), known->height()) >= wanted)
            || m_work.value(page).pixels == wanted)
            continue; // It is there, on its way, or could not be rendered.
        m_work[page] = { wanted,
                         m_services.decoder.page(
                             m_url, page, wanted, PictureDecoder::Urgency::Preview,
                             [this, page](const std::optional<PictureDecoder::Picture> &picture) {
                                 if (picture)
                                     take(page, *picture);
                             }) };
    }
}

void DocumentPage::paintEvent(QPaintEvent *)
{
    if (m_count == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const auto [first, end] = visiblePages();
    for (int page = first; page < end; ++page) {
        const QRectF area = pageRect(page);
        painter.fillRect(area, Qt::white);
        if (const QImage *image = m_pages.object(page)) {
            QRectF fitted({}, QSizeF(image->size()).scaled(area.size(), Qt::KeepAspectRatio));
            fitted.moveCenter(area.center());
            painter.drawImage(fitted, *image);
        }
        painter.setPen(QPen(Look::faded(Look::text(palette()), 0.2), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(area.adjusted(-0.5, -0.5, 0.5, 0.5));
    }
    const QString text = place();
    if (text.isEmpty())
        return;
    painter.setFont(Look::font(font(), 11));
    QRectF label = painter.fontMetrics().boundingRect(text).adjusted(-8, -4, 8, 4);
    label.moveCenter(QPointF(width() / 2.0, height() - label.height()));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::faded(palette().color(QPalette::Window), 0.9));
    painter.drawRoundedRect(label, label.height() / 2, label.height() / 2);
    painter.setPen(Look::text(palette()));
    painter.drawText(label, Qt::AlignCenter, text);
}

QString DocumentPage::place() const
{
    if (m_count < 2)
        return {};
    const int middle
        = std::clamp(static_cast<int>((m_bar->value() + height() / 2.0) / (cell().height() + gap)),
                     0, m_count - 1);
    return QStringLiteral("%1 / %2").arg(middle + 1).arg(m_count);
}

void DocumentPage::resizeEvent(QResizeEvent *)
{
    layOut();
    setAccessibleDescription(place());
    renderSoon();
}

void DocumentPage::wheelEvent(QWheelEvent *event)
{
    const QPoint turn = event->angleDelta(); // Of 120 a notch, which is as many points here.
    if ((event->modifiers() & Qt::ControlModifier) != 0) {
        if (turn.y() != 0)
            zoom(turn.y() > 0 ? Zoom::In : Zoom::Out);
        return;
    }
    const QPoint points = event->pixelDelta().isNull() ? turn : event->pixelDelta();
    m_bar->setValue(m_bar->value() - points.y());
    m_across->setValue(m_across->value() - points.x());
}

void DocumentPage::scroll(Step step)
{
    scrollBy(*m_bar, step);
}

void DocumentPage::zoom(Zoom zoom)
{
    if (zoom == Zoom::Fit)
        m_zoom = 1;
    else
        m_zoom
            = std::clamp(m_zoom * (zoom == Zoom::In ? zoomStep : 1 / zoomStep), 0.25, largestZoom);
    layOut();
    renderSoon();
}
