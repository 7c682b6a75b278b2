#include "views/onboarding/TryScene.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "platform/Icons.h"
#include "store/ShelfStore.h"
#include "views/look/Brand.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"
#include "views/onboarding/DemoDragView.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {
constexpr double period = 2.4; // Of the pulse.
constexpr int hintGap = 26;
constexpr double ringRadius = 94; // In the picture.
constexpr double ringY = 132;
}

TryScene::TryScene(ShelfStore &store, const QUrl &demoURL, const Localizer &texts, MainQueue &queue,
                   DragSession &session, Icons &icons)
    : Scene(queue, period, period / 3)
    , m_texts(texts)
    , m_demoURL(demoURL)
    , m_file(new DemoDragView(session, icons.forFile(demoURL), this))
    , m_hint(new PlainLabel(this))
{
    m_file->url = demoURL;
    m_file->setName(FilePath::display(FilePath::lastComponent(FilePath::fromUrl(demoURL))));
    m_file->onBegin = [this] {
        setDragging(true);
        if (onBegin)
            onBegin();
    };
    m_file->onEnd = [this] {
        setDragging(false);
        if (onEnd)
            onEnd();
    };
    m_file->onPut = [this] {
        if (onPut)
            onPut();
    };
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_items = store.items.subscribe([this](const QList<ShelfItem> &items) { setDone(items); });
}

QWidget &TryScene::control() const
{
    return *m_file;
}

void TryScene::setDone(const QList<ShelfItem> &items)
{
    m_done = std::any_of(items.begin(), items.end(),
                         [this](const ShelfItem &item) { return item.url == m_demoURL; });
    runClock();
    refreshTexts();
}

void TryScene::setDragging(bool dragging)
{
    m_dragging = dragging;
    refreshTexts();
}

void TryScene::refreshTexts()
{
    const QString key = m_done ? QStringLiteral("try_done")
        : m_dragging           ? QStringLiteral("try_hint_drop")
                               : QStringLiteral("try_hint_drag");
    m_hint->setText(m_texts.text(key));
    m_file->setAccessibleDescription(m_hint->text());
    place();
    update();
}

void TryScene::resizeEvent(QResizeEvent *)
{
    place();
}

void TryScene::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        place();
    Scene::changeEvent(event);
}

void TryScene::place()
{
    const double scale = std::min(width() / Mocks::stage.width(), height() / Mocks::stage.height());
    const double top = (height() - Mocks::stage.height() * scale) / 2;
    m_hint->setFont(Look::font(font(), 15, QFont::DemiBold));
    const int hintWidth = std::max(0, width() - 80);
    const int hintHeight = m_hint->heightForWidth(hintWidth);
    const int ringEnd = qRound(top + (ringY + ringRadius) * scale);
    const int hintTop = std::min(ringEnd + qRound(hintGap * scale), height() - hintHeight - 8);
    m_hint->setGeometry((width() - hintWidth) / 2, hintTop, hintWidth, hintHeight);
    m_file->setReach(qRound(2 * ringRadius * scale));
    m_file->resize(m_file->sizeHint());
    m_file->move((width() - m_file->width()) / 2,
                 qRound(top + ringY * scale) - m_file->height() / 2);
}

void TryScene::draw(QPainter &painter, double time)
{
    const QPointF middle(Mocks::stage.width() / 2, ringY);
    painter.setBrush(Qt::NoBrush);
    const QRectF circle(middle - QPointF(ringRadius, ringRadius),
                        QSizeF(2 * ringRadius, 2 * ringRadius));
    painter.setPen(QPen(Brand::line(circle, layoutDirection(), palette()), 2.5));
    painter.setBrush(Look::faded(palette().color(QPalette::Base), 0.55));
    painter.drawEllipse(circle);
    painter.setBrush(Qt::NoBrush);
    if (!m_done) {
        for (const double offset : { 0.0, 0.5 }) {
            const double share = std::fmod(time / period + offset, 1.0);
            const double radius = ringRadius + 28 * share;
            painter.setPen(QPen(Look::faded(Brand::accent, 0.5 * (1 - share)), 2));
            painter.drawEllipse(middle, radius, radius);
        }
        return;
    }
    const QPointF badge = middle + QPointF(ringRadius * 0.71, ringRadius * 0.71);
    const QRectF disc(badge - QPointF(17, 17), QSizeF(34, 34));
    painter.setPen(QPen(palette().color(QPalette::Base), 3));
    painter.setBrush(Brand::gradient(disc, layoutDirection()));
    painter.drawEllipse(disc);
    QPainterPath tick(badge + QPointF(-7, 0.5));
    tick.lineTo(badge + QPointF(-2, 6));
    tick.lineTo(badge + QPointF(7.5, -5.5));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(tick);
}
