#include "views/onboarding/MockScenes.h"

#include "views/look/Look.h"

#include <QPainter>

#include <cmath>

namespace {

constexpr double introPeriod = 6.5;
constexpr double dragPeriod = 5.6;
constexpr double outPeriod = 5.6;
constexpr double hotkeyPeriod = 4.8;

/// Everything comes and goes softly where a round ends.
double presence(double time, double period)
{
    return progress(time, 0, 0.35) * (1 - progress(time, period - 0.4, period));
}

/// A way with a hill in it.
QPointF arc(const QPointF &from, const QPointF &to, double share, double height)
{
    return between(from, to, share) - QPointF(0, std::sin(share * M_PI) * height);
}

}

IntroScene::IntroScene(const MockSources &sources)
    : Scene(sources.queue, introPeriod, 2.75)
    , m_mocks(*this, sources.resources, sources.texts, sources.session)
{
}

void IntroScene::draw(QPainter &painter, double time)
{
    const QPointF shelf(207, 36);
    constexpr QPointF starts[Mocks::files]
        = { { 92, 104 }, { 548, 96 }, { 130, 232 }, { 520, 236 } };
    const double shown = presence(time, introPeriod);
    painter.setOpacity(shown);
    std::vector<MockRow> rows;
    double flights[Mocks::files];
    for (int i = 0; i < Mocks::files; ++i) {
        flights[i] = progress(time, 0.9 + i * 0.8, 1.7 + i * 0.8);
        rows.push_back({ i, progress(flights[i], 0.8, 1) });
    }
    m_mocks.shelf(painter, shelf, 256, rows);
    for (int i = 0; i < Mocks::files; ++i) {
        const double share = flights[i];
        const QPointF sway(0, 5 * std::sin(time * 1.9 + i * 1.7));
        const QPointF from = starts[i] + sway * (1 - share);
        painter.setOpacity(shown * (1 - progress(share, 0.88, 1)));
        m_mocks.file(painter, arc(from, Mocks::rowCentre(shelf, i), share, 46), 74 - 42 * share, i);
    }
}

DragScene::DragScene(const MockSources &sources)
    : Scene(sources.queue, dragPeriod, 2.2)
    , m_mocks(*this, sources.resources, sources.texts, sources.session)
{
}

void DragScene::draw(QPainter &painter, double time)
{
    constexpr int carried = 1;
    const QRectF window(52, 56, 292, 226);
    const QPointF shelf(372, 36);
    const QPointF file = Mocks::gridCell(window, carried).center();
    const QPointF target(478, 190);
    const double shown = presence(time, dragPeriod);
    const double taken = progress(time, 1.0, 1.15);
    const double dropped = progress(time, 2.75, 3.05);

    painter.setOpacity(shown);
    m_mocks.window(painter, window);
    for (int i = 0; i < 6; ++i) {
        painter.setOpacity(shown * (i == carried ? 1 - 0.55 * taken * (1 - dropped) : 1));
        m_mocks.file(painter, Mocks::gridCell(window, i).center(), 56, (i * 3 + 2) % Mocks::files);
    }
    const int kind = (carried * 3 + 2) % Mocks::files;
    const double up = progress(time, 1.25, 1.6);
    painter.setOpacity(shown * up);
    const double targeted = progress(time, 2.0, 2.2) * (1 - progress(time, 2.75, 2.95));
    m_mocks.shelf(painter, shelf + QPointF(18 * (1 - up), 0), 256, { { 3, 1 }, { kind, dropped } },
                  targeted);
    const QPointF start(250, 300);
    QPointF at = between(start, file, progress(time, 0.3, 0.9));
    at = between(at, target, progress(time, 1.15, 2.4));
    at = between(at, target + QPointF(34, 72), progress(time, 3.1, 3.9));
    if (taken > 0 && dropped < 1) {
        painter.setOpacity(shown * (1 - dropped));
        m_mocks.file(painter, at, 56, kind);
    }
    painter.setOpacity(shown);
    m_mocks.pointer(painter, at, taken * (1 - dropped));
}

OutScene::OutScene(const MockSources &sources)
    : Scene(sources.queue, outPeriod, 1.95)
    , m_mocks(*this, sources.resources, sources.texts, sources.session)
{
}

void OutScene::draw(QPainter &painter, double time)
{
    constexpr int carried = 1;
    const QPointF shelf(48, 36);
    const QRectF window(312, 50, 280, 236);
    const QPointF file = Mocks::rowCentre(shelf, 1);
    const QPointF target = Mocks::attachmentCentre(window);
    const double shown = presence(time, outPeriod);
    const double taken = progress(time, 1.0, 1.15);
    const double dropped = progress(time, 2.55, 2.85);

    painter.setOpacity(shown);
    m_mocks.mail(painter, window, carried, dropped);
    painter.setOpacity(shown);
    m_mocks.shelf(painter, shelf, 256,
                  { { 0, 1 }, { carried, 1, 1 - 0.55 * taken * (1 - dropped) }, { 2, 1 } });
    QPointF at = between({ 214, 296 }, file, progress(time, 0.3, 0.9));
    at = between(at, target, progress(time, 1.15, 2.3));
    at = between(at, target + QPointF(96, 58), progress(time, 3.0, 3.8));
    if (taken > 0 && dropped < 1) {
        painter.setOpacity(shown * (1 - dropped));
        m_mocks.file(painter, at, 48, carried);
    }
    painter.setOpacity(shown);
    m_mocks.pointer(painter, at, taken * (1 - dropped));
}

HotkeyScene::HotkeyScene(const MockSources &sources)
    : Scene(sources.queue, hotkeyPeriod, 1.5)
    , m_mocks(*this, sources.resources, sources.texts, sources.session)
{
}

void HotkeyScene::setShortcut(const QString &shortcut)
{
    m_keys = shortcut.split(u'+', Qt::SkipEmptyParts);
    if (shortcut.endsWith(u'+')) // The key itself.
        m_keys.append(QStringLiteral("+"));
    update();
}

void HotkeyScene::draw(QPainter &painter, double time)
{
    const QRectF screen(56, 22, 528, 286);
    const QRectF bar(screen.left(), screen.top(), screen.width(), 30);
    const QColor wall
        = Look::blended(palette().color(QPalette::Base), palette().color(QPalette::Window), 0.5);
    m_mocks.card(painter, m_mocks.mirrored(screen), 12, wall);
    painter.fillRect(QRectF(screen.left() + 1, bar.bottom(), screen.width() - 2, 1),
                     Look::shade(palette(), 0.12));
    m_mocks.menuBar(painter, bar);

    const auto press = [time](double at) {
        return progress(time, at, at + 0.12) * (1 - progress(time, at + 0.3, at + 0.42));
    };
    const double pressed = std::max(press(0.8), press(3.4));
    const double up = progress(time, 1.0, 1.3) * (1 - progress(time, 3.6, 3.85));
    if (up > 0) {
        painter.save();
        painter.setOpacity(up);
        m_mocks.shelf(painter, QPointF(344, 62 - 10 * (1 - up)), 200,
                      { { 0, 1 }, { 1, 1 }, { 2, 1 } });
        painter.restore();
    }
    constexpr double gap = 10;
    double width = -gap;
    for (const QString &key : m_keys)
        width += Mocks::keyCapWidth(key) + gap;
    painter.save();
    const double room = 262;
    const double scale = std::min(1.0, room / width);
    // Keys stand in their order from left to right on every keyboard.
    const double left = isRightToLeft() ? Mocks::stage.width() - 76 - room : 76;
    painter.translate(left + (room - width * scale) / 2, 178);
    painter.scale(scale, scale);
    double x = 0;
    for (const QString &key : m_keys) {
        const double cap = Mocks::keyCapWidth(key);
        m_mocks.keyCap(painter, m_mocks.mirrored(QRectF(x, -28, cap, 58)), key, pressed);
        x += cap + gap;
    }
    painter.restore();
}
