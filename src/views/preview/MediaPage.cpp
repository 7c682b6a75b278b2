#include "views/preview/MediaPage.h"

#include "app/settings/Localizer.h"
#include "base/MainQueue.h"
#include "platform/Icons.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr double longestOpening = 10; // Seconds.
constexpr double settling = 0.05; // Seconds in which a slider or a window may still move.
constexpr int iconSize = 96; // Points.
constexpr int buttonSize = 32; // Points.
constexpr QSize soundSize(440, 240); // Of the page of what has no picture, points.

/// A triangle, or two bars while it plays.
class PlayButton final : public QAbstractButton
{
public:
    explicit PlayButton(QWidget *parent)
        : QAbstractButton(parent)
    {
        setCheckable(true); // Checked while it plays.
        setFocusPolicy(Qt::TabFocus);
        // What it does is its name; that it is checked would say it twice.
        setAccessibleRole(*this, QAccessible::Button, [this] { click(); });
    }
    QSize sizeHint() const override { return { buttonSize, buttonSize }; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QRectF circle({}, QSizeF(buttonSize - 2, buttonSize - 2));
        circle.moveCenter(QRectF(rect()).center());
        painter.setPen(hasFocus() ? QPen(Look::ring(palette()), 2) : QPen(Qt::NoPen));
        painter.setBrush(Look::shade(palette(), isDown() ? 0.2 : underMouse() ? 0.13 : 0.08));
        painter.drawEllipse(circle);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Look::text(palette()));
        painter.translate(circle.center());
        if (isChecked()) {
            painter.drawRoundedRect(QRectF(-5, -6, 3.5, 12), 1, 1);
            painter.drawRoundedRect(QRectF(1.5, -6, 3.5, 12), 1, 1);
        } else {
            painter.drawPolygon(QPolygonF { { -4, -6.5 }, { 7, 0 }, { -4, 6.5 } });
        }
    }
    void enterEvent(QEnterEvent *) override { update(); }
    void leaveEvent(QEvent *) override { update(); }
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() >= Qt::Key_Left && event->key() <= Qt::Key_Down)
            event->ignore(); // They walk.
        else
            QAbstractButton::keyPressEvent(event);
    }
};

class SeekSlider final : public QSlider
{
public:
    using QSlider::QSlider;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
            event->ignore(); // They walk.
        else
            QSlider::keyPressEvent(event);
    }
};

/// "1:02:03", without hours where there are none.
QString clockText(double seconds, const QLocale &locale)
{
    const auto whole = static_cast<qint64>(seconds);
    const auto two = [&](qint64 value) {
        return (value < 10 ? locale.toString(0) : QString()) + locale.toString(value);
    };
    const qint64 hours = whole / 3600;
    const qint64 minutes = whole / 60 % 60;
    const QString start
        = hours > 0 ? locale.toString(hours) + u':' + two(minutes) : locale.toString(minutes);
    return start + u':' + two(whole % 60);
}

}

/// The film's picture as large as it fits and is; for a sound the file's icon.
class MediaPage::Screen final : public QWidget
{
public:
    using QWidget::QWidget;

    std::function<void()> onResize;

    void setPicture(const QImage &picture)
    {
        m_picture = picture;
        update();
    }
    void setWhole(const QSize &whole) { m_whole = whole; }
    void setIcon(const QIcon &icon) { m_icon = icon; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        if (m_picture.isNull()) {
            QRect place(0, 0, iconSize, iconSize);
            place.moveCenter(rect().center());
            return m_icon.paint(&painter, place);
        }
        painter.fillRect(rect(), Qt::black);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const QSize whole = m_whole.isEmpty() ? m_picture.size() : m_whole;
        const bool fits = whole.width() <= width() && whole.height() <= height();
        QRect place({}, fits ? whole : whole.scaled(size(), Qt::KeepAspectRatio));
        place.moveCenter(rect().center());
        painter.drawImage(place, m_picture);
    }
    void resizeEvent(QResizeEvent *) override { onResize(); }

private:
    QImage m_picture;
    QSize m_whole; // Pixels, as many points.
    QIcon m_icon;
};

MediaPage::MediaPage(QUrl url, PreviewServices services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(std::move(url))
    , m_services(std::move(services))
    , m_screen(new Screen(this))
    , m_button(new PlayButton(this))
    , m_slider(new SeekSlider(Qt::Horizontal, this))
    , m_time(new PlainLabel(this))
{
    m_slider->setFocusPolicy(Qt::TabFocus);
    m_slider->setSingleStep(5000);
    m_slider->setPageStep(15000);
    m_slider->setEnabled(false);
    m_time->setFont(Look::font(font(), 11));
    m_time->setAlignment(Qt::AlignCenter);
    m_screen->setIcon(m_services.icons.forFile(m_url));
    m_screen->onResize
        = [this] { m_room = m_services.queue.after(settling, [this] { tellRoom(); }); };
    auto *controls = new QWidget(this);
    controls->setLayoutDirection(Qt::LeftToRight); // Films run to the right everywhere.
    auto *row = new QHBoxLayout(controls);
    row->setContentsMargins(12, 8, 12, 8);
    row->setSpacing(12);
    row->addWidget(m_button);
    row->addWidget(m_slider, 1);
    row->addWidget(m_time);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_screen, 1);
    column->addWidget(controls);
    refreshTexts();

    connect(m_button, &QAbstractButton::clicked, this, [this](bool play) {
        if (play)
            m_player->play();
        else
            m_player->pause();
        refreshTexts();
    });
    connect(m_slider, &QSlider::valueChanged, this, [this](int milliseconds) {
        m_seek = m_services.queue.after(settling, [this, milliseconds] {
            m_seek.reset();
            m_player->seek(milliseconds / 1000.0);
        });
    });
}

MediaPage::~MediaPage() = default;

void MediaPage::refreshTexts()
{
    m_button->setAccessibleName(m_services.texts.text(
        m_button->isChecked() ? QStringLiteral("preview_pause") : QStringLiteral("preview_play")));
    ToolTip::set(*m_button, m_button->accessibleName());
    m_slider->setAccessibleName(m_services.texts.text(QStringLiteral("preview_position")));
}

void MediaPage::load()
{
    m_player = m_services.play(m_url);
    m_player->onOpened = [this](const MediaPlayer::Facts &facts) { opened(facts); };
    m_player->onPicture = [this](const QImage &picture) { show(picture); };
    m_player->onState = [this](const MediaPlayer::State &state) { show(state); };
    m_player->onFailed = [this] { onFailed(); };
    m_limit = m_services.queue.after(longestOpening, [this] { onFailed(); });
}

void MediaPage::opened(const MediaPlayer::Facts &facts)
{
    m_limit.reset();
    m_facts = facts;
    m_screen->setWhole(facts.pixels);
    if (!facts.hasPicture)
        becomeReady();
}

void MediaPage::show(const QImage &picture)
{
    if (m_facts.pixels.isEmpty())
        m_facts.pixels = picture.size();
    m_screen->setPicture(picture);
    becomeReady();
}

void MediaPage::becomeReady()
{
    if (!std::exchange(m_isReady, true))
        onReady();
}

std::optional<QSize> MediaPage::contentSize() const
{
    if (!m_isReady)
        return std::nullopt;
    const int controls = layout()->itemAt(1)->sizeHint().height();
    return m_facts.pixels.isEmpty() ? soundSize : m_facts.pixels + QSize(0, controls);
}

void MediaPage::show(const MediaPlayer::State &state)
{
    m_state = state;
    if (m_button->isChecked() != state.isPlaying) {
        m_button->setChecked(state.isPlaying);
        refreshTexts();
    }
    const QLocale locale(m_services.texts.currentCode());
    const QString whole = clockText(state.duration, locale);
    m_time->setText(state.duration > 0
                        ? clockText(state.position, locale) + QStringLiteral(" / ") + whole
                        : clockText(state.position, locale));
    // As wide from the beginning as it will be.
    m_time->setMinimumWidth(
        m_time->fontMetrics().horizontalAdvance(whole + QStringLiteral(" / ") + whole));
    if (m_slider->isSliderDown() || m_seek)
        return; // The user is moving it.
    const QSignalBlocker blocker(m_slider);
    m_slider->setEnabled(state.duration > 0);
    m_slider->setRange(0, static_cast<int>(std::min(state.duration * 1000, 2e9)));
    m_slider->setValue(static_cast<int>(std::min(state.position * 1000, 2e9)));
}

void MediaPage::tellRoom()
{
    if (m_player)
        m_player->setRoom(m_screen->size() * devicePixelRatio());
}
