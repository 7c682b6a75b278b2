#include "views/preview/PicturePage.h"

#include "app/settings/Localizer.h"
#include "base/MainQueue.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/preview/PreviewCache.h"

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int mostPixels = 6000; // Along the longer side of what is decoded.
constexpr int mostAnimatedPixels = 1024;
constexpr double closest = 8; // Points a pixel.
constexpr double zoomStep = 1.25;
constexpr double sharpenPause = 0.12; // Seconds in which nothing may change.
constexpr int shortestFrame = 20; // Milliseconds, as browsers have it.
constexpr int checker = 8; // Points.
constexpr double panStep = 60; // Points.

/// Shows what is transparent as such.
void paintChecker(QPainter &painter, const QRectF &area, const QPalette &palette)
{
    const QColor base = palette.color(QPalette::Base);
    const QColor other = Look::blended(Look::text(palette), base, 0.08);
    painter.fillRect(area, base);
    painter.save();
    painter.setClipRect(area);
    for (int y = 0; y * checker < area.height(); ++y) {
        for (int x = y % 2; x * checker < area.width(); x += 2)
            painter.fillRect(
                QRectF(area.left() + x * checker, area.top() + y * checker, checker, checker),
                other);
    }
    painter.restore();
}

/// Decoded pictures have an alpha channel, whatever is in it.
bool isOpaque(const QImage &image)
{
    if (!image.hasAlphaChannel())
        return true;
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(pixels.constScanLine(y));
        if (!std::all_of(line, line + pixels.width(),
                         [](QRgb pixel) { return qAlpha(pixel) == 255; }))
            return false;
    }
    return true;
}

}

PicturePage::PicturePage(QUrl url, PreviewServices services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(std::move(url))
    , m_services(std::move(services))
{
    setAccessibleRole(*this, QAccessible::Graphic);
    setAccessibleName(m_url.fileName());
    setCursor(Qt::ArrowCursor);
}

void PicturePage::load()
{
    const auto *known = m_services.cache.find(m_url);
    if (!known)
        return decode();
    m_check = m_services.decoder.version(
        m_url, [this, was = known->version](const std::optional<QByteArray> &now) {
            if (now != was)
                decode();
        });
    take(*known);
}

void PicturePage::decode()
{
    m_check
        = m_services.decoder.image(m_url, PreviewCache::maxPixel, PictureDecoder::Urgency::Preview,
                                   [this](const std::optional<PictureDecoder::Picture> &picture) {
                                       if (!picture)
                                           return onFailed();
                                       m_services.cache.keep(m_url, *picture);
                                       take(*picture);
                                   });
}

void PicturePage::take(const PictureDecoder::Picture &picture)
{
    m_frames.clear();
    m_nextFrames.clear();
    m_frame = 0;
    m_firstFrame = 0;
    m_frameWork.reset();
    m_clock.reset();
    m_whole = picture.whole;
    setImage(picture.image);
    const QString name = m_url.path().toLower();
    m_isAnimated = picture.count > 1
        && (name.endsWith(QLatin1String(".gif")) || name.endsWith(QLatin1String(".webp")));
    m_frameCount = picture.count;
    keepInside();
    update();
    if (!std::exchange(m_isReady, true))
        onReady();
    if (m_isAnimated)
        askForFrames();
    sharpenSoon();
}

void PicturePage::setImage(const QImage &image)
{
    m_image = image;
    // Of a larger one the smaller one has told: looking at it takes too long for a frame.
    if (std::max(image.width(), image.height()) <= mostAnimatedPixels)
        m_isOpaque = isOpaque(image);
}

QString PicturePage::facts() const
{
    QLocale locale(m_services.texts.currentCode());
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return QStringLiteral("%1 × %2").arg(locale.toString(m_whole.width()),
                                         locale.toString(m_whole.height()));
}

std::optional<QSize> PicturePage::contentSize() const
{
    return m_whole.isEmpty() ? std::nullopt : std::optional(m_whole);
}

/// The whole picture, and no larger than it is.
double PicturePage::fitScale() const
{
    if (m_whole.isEmpty())
        return 1;
    return std::min({ 1.0, static_cast<double>(width()) / m_whole.width(),
                      static_cast<double>(height()) / m_whole.height() });
}

QRectF PicturePage::target() const
{
    const double pixels = devicePixelRatio(); // For each point.
    const QSizeF size = (QSizeF(m_whole) * scale() * pixels).toSize().expandedTo({ 1, 1 });
    const QPointF middle = QRectF(rect()).center() - m_centre * scale();
    const QPointF origin(mapTo(window(), QPoint()));
    const QPointF corner = (origin + middle) * pixels - QPointF(size.width(), size.height()) / 2;
    return { corner.toPoint().toPointF() / pixels - origin, size / pixels };
}

void PicturePage::paintEvent(QPaintEvent *)
{
    if (m_image.isNull())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, scale() < 4);
    const QRectF area = target();
    if (!m_isOpaque)
        paintChecker(painter, area.intersected(rect()), palette());
    painter.drawImage(area, m_image);
}

void PicturePage::resizeEvent(QResizeEvent *)
{
    keepInside();
    sharpenSoon();
}

void PicturePage::sharpenSoon()
{
    if (m_image.isNull() || !m_frames.isEmpty())
        return;
    m_pause = m_services.queue.after(m_zoom ? sharpenPause : 0, [this] { sharpen(); });
}

/// As many pixels as the screen shows of it.
void PicturePage::sharpen()
{
    const int whole = std::max(m_whole.width(), m_whole.height());
    const auto shown = static_cast<int>(std::ceil(whole * scale() * devicePixelRatio()));
    const int wanted = std::min({ shown, whole, mostPixels });
    if (std::max(m_image.width(), m_image.height()) >= wanted)
        return;
    m_work
        = m_services.decoder.image(m_url, wanted, PictureDecoder::Urgency::Preview,
                                   [this](const std::optional<PictureDecoder::Picture> &picture) {
                                       if (!picture || !m_frames.isEmpty())
                                           return; // What is there stays.
                                       m_whole = picture->whole; // The file may have changed.
                                       setImage(picture->image);
                                       keepInside();
                                       update();
                                   });
}

void PicturePage::askForFrames()
{
    if (m_motion == Motion::Reduced || m_frameWork || !m_nextFrames.isEmpty())
        return;
    const int longest = std::max(m_whole.width(), m_whole.height());
    const int next = m_frames.isEmpty()
        ? 0
        : (m_firstFrame + static_cast<int>(m_frames.size())) % m_frameCount;
    m_frameWork = m_services.decoder.frames(
        m_url, next, std::min(longest, mostAnimatedPixels),
        [this](const std::optional<QList<PictureDecoder::Frame>> &frames) {
            m_frameWork.reset();
            if (!frames || frames->isEmpty())
                return;
            m_nextFrames = *frames;
            if (!m_clock)
                showFrame();
        });
}

/// All of a short animation are kept; a longer one comes piece by piece, and goes.
void PicturePage::showFrame()
{
    if (m_frame >= m_frames.size()) {
        m_frame = 0;
        if (m_frames.size() < m_frameCount) {
            if (m_nextFrames.isEmpty()) {
                m_clock.reset(); // Goes on when they come.
                return askForFrames();
            }
            m_firstFrame = (m_firstFrame + static_cast<int>(m_frames.size())) % m_frameCount;
            m_frames = std::exchange(m_nextFrames, {});
        }
    }
    const PictureDecoder::Frame &frame = m_frames[m_frame++];
    setImage(frame.image);
    update();
    if (m_frames.size() < m_frameCount)
        askForFrames();
    m_clock = m_services.queue.after(std::max(frame.milliseconds, shortestFrame) / 1000.0,
                                     [this] { showFrame(); });
}

void PicturePage::setMotion(Motion motion)
{
    m_motion = motion;
    if (motion == Motion::Reduced)
        m_clock.reset();
    else if (m_isAnimated && !m_clock)
        m_frames.isEmpty() ? askForFrames() : showFrame();
}

void PicturePage::zoomTo(double scale, const QPointF &around)
{
    const double before = this->scale();
    const double smallest = std::min(fitScale(), 1.0);
    const double next = std::clamp(scale, smallest, closest);
    // What lies under that place stays under it.
    const QPointF from = around - QRectF(rect()).center();
    m_centre += from / before - from / next;
    m_zoom = next <= smallest ? std::nullopt : std::optional(next);
    keepInside();
    update();
    sharpenSoon();
}

void PicturePage::keepInside()
{
    const QSizeF shown = QSizeF(m_whole) * scale();
    const auto most = [&](double content, double room) {
        return std::max(0.0, (content - room) / 2 / scale());
    };
    const double x = most(shown.width(), width());
    const double y = most(shown.height(), height());
    m_centre = { std::clamp(m_centre.x(), -x, x), std::clamp(m_centre.y(), -y, y) };
    setCursor(x > 0 || y > 0 ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void PicturePage::zoom(Zoom zoom)
{
    const QPointF middle = QRectF(rect()).center();
    if (zoom == Zoom::Fit)
        zoomTo(fitScale(), middle);
    else
        zoomTo(scale() * (zoom == Zoom::In ? zoomStep : 1 / zoomStep), middle);
}

void PicturePage::scroll(Step step)
{
    const double page = height() * 0.8;
    const double far = 1e9;
    const double distance = step == Step::LineUp ? -panStep
        : step == Step::LineDown                 ? panStep
        : step == Step::PageUp                   ? -page
        : step == Step::PageDown                 ? page
        : step == Step::Start                    ? -far
                                                 : far;
    m_centre.ry() += distance / scale();
    keepInside();
    update();
}

void PicturePage::wheelEvent(QWheelEvent *event)
{
    const double turns = event->angleDelta().y() / 120.0;
    zoomTo(scale() * std::pow(zoomStep, turns), event->position());
}

void PicturePage::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && m_zoom) {
        m_drag = event->position();
        setCursor(Qt::ClosedHandCursor);
    }
}

void PicturePage::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag)
        return;
    m_centre -= (event->position() - *m_drag) / scale();
    m_drag = event->position();
    keepInside();
    setCursor(Qt::ClosedHandCursor);
    update();
}

void PicturePage::mouseReleaseEvent(QMouseEvent *)
{
    m_drag.reset();
    keepInside();
}

/// To its own size, and back.
void PicturePage::mouseDoubleClickEvent(QMouseEvent *event)
{
    zoomTo(m_zoom ? fitScale() : 1, event->position());
}
