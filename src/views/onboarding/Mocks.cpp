#include "views/onboarding/Mocks.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "platform/Icons.h"
#include "views/list/ItemRowDelegate.h"
#include "views/look/Brand.h"
#include "views/look/Look.h"
#include "views/shelf/DropOutline.h"
#include "views/shelf/ShelfHeader.h"

#include <QIconEngine>
#include <QLayout>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr double headerHeight = 38;
constexpr double listPadding = 8;
constexpr double rowSpacing = 5;
constexpr double panelRadius = 14;
constexpr double titleBar = 28;

constexpr std::array<const char *, Mocks::files> mockFiles {
    "/home/ada/Pictures/Lisbon.jpg",
    "/home/ada/Documents/Report.pdf",
    "/home/ada/Documents/Notes.txt",
    "/home/ada/Pictures/Sunrise.png",
};

class MockFileEngine final : public QIconEngine
{
public:
    explicit MockFileEngine(int index)
        : m_index(index)
    {
    }
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode, QIcon::State) override
    {
        painter->setRenderHint(QPainter::Antialiasing);
        Mocks::paintFile(*painter, rect, m_index);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }
    QIconEngine *clone() const override { return new MockFileEngine(*this); }

private:
    int m_index;
};

class MockIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &url) override
    {
        const auto found = std::find_if(mockFiles.begin(), mockFiles.end(), [&](const auto &each) {
            return FilePath::fromUrl(url) == each;
        });
        return QIcon(new MockFileEngine(static_cast<int>(found - mockFiles.begin())));
    }
    QIcon forWebLocation() override { return {}; }
};

/// What is drawn on a sheet, in a square of 100.
void paintDrawing(QPainter &painter, int index)
{
    const QColor ink(255, 255, 255, 215);
    painter.setBrush(ink);
    painter.setPen(Qt::NoPen);
    if (index == 0 || index == 3) {
        painter.drawEllipse(index == 0 ? QRectF(26, 40, 13, 13) : QRectF(42, 46, 17, 17));
        const double peak = index == 0 ? 50 : 62;
        painter.drawPolygon(
            QPolygonF({ { 22, 80 }, { 40, peak + 6 }, { 52, 72 }, { 62, peak }, { 78, 80 } }));
        return;
    }
    for (int i = 0; i < 4; ++i) {
        if (index == 1)
            painter.drawRoundedRect(QRectF(26 + i * 13, 72 - i * 8, 8, 10 + i * 8), 2, 2);
        else
            painter.drawRoundedRect(QRectF(26, 42 + i * 11, i == 3 ? 28 : 48, 5), 2.5, 2.5);
    }
}

}

Mocks::Mocks(QWidget &scene, const QString &resources, const Localizer &texts, DragSession &session)
    : m_scene(scene)
    , m_texts(texts)
    , m_symbols(resources + QStringLiteral("/icons"))
    , m_icons(std::make_unique<MockIcons>())
    , m_rows(new ItemRowDelegate(m_model, *m_icons, m_symbols, scene))
    , m_header(std::make_unique<ShelfHeader>(m_symbols, session, *m_icons, texts, nullptr))
{
    for (size_t i = 0; i < m_items.size(); ++i) {
        m_items[i].id = QUuid::createUuid();
        m_items[i].url = FilePath::toUrl(mockFiles[i]);
    }
}

Mocks::~Mocks() = default;

QPointF Mocks::mirrored(const QPointF &point) const
{
    return m_scene.isRightToLeft() ? QPointF(stage.width() - point.x(), point.y()) : point;
}

QRectF Mocks::mirrored(const QRectF &rect) const
{
    QRectF result = rect;
    if (m_scene.isRightToLeft())
        result.moveLeft(stage.width() - rect.right());
    return result;
}

/// Text of any size is painted so that a row comes out equally high.
double Mocks::rowScale()
{
    if (m_rowFont != m_scene.font()) {
        m_rowFont = m_scene.font();
        m_rows->refresh();
        m_headerKey.clear();
    }
    return rowHeight / m_rows->height();
}

QFont Mocks::fixedFont(double pixels, QFont::Weight weight) const
{
    QFont font = m_scene.font();
    font.setPixelSize(qRound(pixels));
    font.setWeight(weight);
    return font;
}

double Mocks::headerScale()
{
    return std::min(rowScale(), headerHeight / m_header->height());
}

const QPixmap &Mocks::header(int count, double width, double ratio)
{
    const QString key = QStringLiteral("%1 %2 %3 %4 %5 %6")
                            .arg(count)
                            .arg(width)
                            .arg(ratio)
                            .arg(m_scene.palette().cacheKey())
                            .arg(m_scene.layoutDirection())
                            .arg(m_texts.currentCode());
    if (key == m_headerKey)
        return m_headerPicture;
    m_headerKey = key;
    m_header->setLayoutDirection(m_scene.layoutDirection());
    m_header->setPalette(m_scene.palette());
    m_header->ensurePolished(); // Its height goes with its font.
    m_header->setContent({ m_texts.text(QStringLiteral("shelf_numbered"), { 1 }),
                           TitleButton::Pin::Absent, DragHandle::Carries::Everything, count,
                           count == 0 });
    m_header->resize(qRound(width / headerScale()), m_header->height());
    m_header->layout()->invalidate();
    m_header->layout()->activate();
    ratio *= headerScale();
    m_headerPicture = QPixmap((QSizeF(m_header->size()) * ratio).toSize());
    m_headerPicture.fill(Qt::transparent);
    // Not by the picture's own ratio, which may not be below one.
    QPainter painter(&m_headerPicture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(ratio, ratio);
    m_header->render(&painter, {}, {}, QWidget::DrawChildren);
    return m_headerPicture;
}

void Mocks::card(QPainter &painter, const QRectF &frame, double radius, const QColor &fill) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 4));
    for (const double spread : { 12.0, 10.0, 8.0, 6.0, 4.0, 2.0 })
        painter.drawRoundedRect(frame.adjusted(-spread, -spread, spread, spread).translated(0, 4),
                                radius + spread, radius + spread);
    painter.setPen(QPen(Look::shade(m_scene.palette(), 0.22), 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

void Mocks::shelf(QPainter &painter, const QPointF &topLeft, double height,
                  const std::vector<MockRow> &rows, double targeted)
{
    const QRectF frame = mirrored(QRectF(topLeft, QSizeF(shelfWidth, height)));
    card(painter, frame, panelRadius, m_scene.palette().color(QPalette::Window));
    painter.save();
    painter.translate(frame.topLeft());
    const auto count = std::count_if(rows.begin(), rows.end(),
                                     [](const MockRow &row) { return row.presence > 0.5; });
    const QPixmap &bar = header(static_cast<int>(count), frame.width(), Look::pixelRatio(painter));
    const double barHeight = m_header->height() * headerScale();
    painter.drawPixmap(QRectF(0, (headerHeight - barHeight) / 2, frame.width(), barHeight), bar,
                       bar.rect());
    painter.fillRect(QRectF(1, headerHeight - 1, frame.width() - 2, 1),
                     Look::shade(m_scene.palette(), 0.1));
    paintRows(painter, frame.width(), rows);
    painter.restore();
    if (targeted > 0) {
        painter.save();
        painter.setOpacity(painter.opacity() * targeted);
        DropOutline::paint(painter, frame, m_scene.layoutDirection(), m_scene.palette());
        painter.restore();
    }
}

void Mocks::paintRows(QPainter &painter, double shelf, const std::vector<MockRow> &rows)
{
    const double outer = painter.opacity();
    const double scale = rowScale();
    const int width = qRound((shelf - 2 * listPadding) / scale);
    double top = headerHeight + listPadding;
    for (const MockRow &row : rows) {
        painter.save();
        painter.setOpacity(outer * row.presence * row.opacity);
        painter.translate(listPadding, top + (1 - row.presence) * 8);
        painter.scale(scale, scale);
        m_rows->paintRow(painter, QRect(0, 0, width, m_rows->height()),
                         m_items[static_cast<size_t>(row.file)], {});
        painter.restore();
        top += (rowHeight + rowSpacing) * row.presence;
    }
}

QPointF Mocks::rowCentre(const QPointF &topLeft, int row)
{
    return { topLeft.x() + listPadding + 9 + 16,
             topLeft.y() + headerHeight + listPadding + (rowHeight + rowSpacing) * row
                 + rowHeight / 2 };
}

void Mocks::window(QPainter &painter, const QRectF &frame) const
{
    const QRectF rect = mirrored(frame);
    const QPalette palette = m_scene.palette();
    card(painter, rect, 10, palette.color(QPalette::Base));
    const QColor line = Look::shade(palette, 0.12);
    painter.fillRect(QRectF(rect.left() + 1, rect.top() + titleBar, rect.width() - 2, 1), line);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::shade(palette, 0.2));
    for (int i = 0; i < 3; ++i)
        painter.drawEllipse(mirrored(QRectF(frame.right() - 20 - i * 15, frame.top() + 10, 9, 9)));
    painter.setBrush(line);
    painter.drawRoundedRect(mirrored(QRectF(frame.left() + 14, frame.top() + 10, 74, 9)), 4.5, 4.5);
}

QRectF Mocks::gridCell(const QRectF &window, int index)
{
    const int row = index / 3;
    const double width = (window.width() - 24) / 3;
    const double height = (window.height() - titleBar - 20) / 2;
    return { window.left() + 12 + (index % 3) * width, window.top() + titleBar + 10 + row * height,
             width, height };
}

void Mocks::mail(QPainter &painter, const QRectF &frame, int file, double attached) const
{
    window(painter, frame);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::shade(m_scene.palette(), 0.13));
    const double left = frame.left() + 18;
    const double width = frame.width() - 36;
    const auto bar = [&](double y, double share, double thick) {
        painter.drawRoundedRect(mirrored(QRectF(left, frame.top() + y, width * share, thick)),
                                thick / 2, thick / 2);
    };
    bar(44, 0.5, 8);
    bar(62, 0.72, 8);
    painter.fillRect(mirrored(QRectF(left, frame.top() + 80, width, 1)),
                     Look::shade(m_scene.palette(), 0.1));
    bar(96, 1, 7);
    bar(111, 0.92, 7);
    bar(126, 0.6, 7);
    if (attached <= 0)
        return;
    const QPointF centre = attachmentCentre(frame);
    const double outer = painter.opacity();
    painter.setOpacity(outer * attached);
    painter.setPen(QPen(Look::faded(Brand::accent, 0.55), 1));
    painter.setBrush(Look::faded(Brand::accent, 0.12));
    painter.drawRoundedRect(mirrored(QRectF(centre.x() - 24, centre.y() - 26, 132, 52)), 9, 9);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::shade(m_scene.palette(), 0.3));
    painter.drawRoundedRect(mirrored(QRectF(centre.x() + 26, centre.y() - 11, 66, 8)), 4, 4);
    painter.setBrush(Look::shade(m_scene.palette(), 0.16));
    painter.drawRoundedRect(mirrored(QRectF(centre.x() + 26, centre.y() + 4, 42, 7)), 3.5, 3.5);
    this->file(painter, centre, 38, file);
    painter.setOpacity(outer);
}

QPointF Mocks::attachmentCentre(const QRectF &window)
{
    return { window.left() + 44, window.top() + 178 };
}

void Mocks::menuBar(QPainter &painter, const QRectF &frame)
{
    const QPalette palette = m_scene.palette();
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::shade(palette, 0.2));
    for (int i = 0; i < 3; ++i)
        painter.drawRoundedRect(
            mirrored(QRectF(frame.left() + 16 + i * 56, frame.center().y() - 4, 42, 8)), 4, 4);
    painter.setPen(Look::text(palette));
    painter.setFont(fixedFont(13, QFont::Medium));
    painter.drawText(mirrored(QRectF(frame.right() - 60, frame.top(), 48, frame.height())),
                     Qt::AlignCenter, QStringLiteral("9:41"));
    m_symbols.paint(painter, Symbol::Tray,
                    mirrored(QRectF(frame.right() - 88, frame.top(), 20, frame.height())), 17,
                    Look::text(palette));
}

double Mocks::keyCapWidth(const QString &label)
{
    return std::clamp(34.0 + 11.0 * static_cast<double>(label.size()), 58.0, 130.0);
}

void Mocks::keyCap(QPainter &painter, const QRectF &frame, const QString &label,
                   double pressed) const
{
    const QPalette palette = m_scene.palette();
    const double depth = 5 * (1 - pressed);
    const QRectF rect = mirrored(frame);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::blended(Look::text(palette), palette.color(QPalette::Window), 0.32));
    painter.drawRoundedRect(rect, 11, 11);
    const QRectF top = rect.adjusted(0, 0, 0, -5).translated(0, 5 - depth);
    const QColor face = palette.color(QPalette::Base);
    painter.setPen(QPen(Look::shade(palette, 0.25), 1));
    painter.setBrush(pressed > 0 ? Look::blended(Brand::accent, face, 0.22 * pressed) : face);
    painter.drawRoundedRect(top.adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
    painter.setPen(Look::text(palette));
    QFont font = fixedFont(18, QFont::Medium);
    while (QFontMetricsF(font).horizontalAdvance(label) > top.width() - 12 && font.pixelSize() > 9)
        font.setPixelSize(font.pixelSize() - 1);
    painter.setFont(font);
    painter.drawText(top, Qt::AlignCenter, label);
}

void Mocks::paintFile(QPainter &painter, const QRectF &square, int index)
{
    painter.save();
    painter.translate(square.topLeft());
    painter.scale(square.width() / 100, square.height() / 100);
    QPainterPath sheet;
    sheet.moveTo(22, 4);
    sheet.lineTo(64, 4);
    sheet.lineTo(88, 28);
    sheet.lineTo(88, 86);
    sheet.quadTo(88, 96, 78, 96);
    sheet.lineTo(22, 96);
    sheet.quadTo(12, 96, 12, 86);
    sheet.lineTo(12, 14);
    sheet.quadTo(12, 4, 22, 4);
    const QColor tint = Brand::tints[static_cast<size_t>(index) % Brand::tints.size()];
    QLinearGradient fill(0, 0, 0, 100);
    fill.setColorAt(0, tint.lighter(116));
    fill.setColorAt(1, tint);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(sheet);
    painter.setBrush(QColor(255, 255, 255, 130));
    painter.drawPolygon(QPolygonF({ { 64, 4 }, { 88, 28 }, { 64, 28 } }));
    paintDrawing(painter, index);
    painter.restore();
}

void Mocks::file(QPainter &painter, const QPointF &centre, double size, int index) const
{
    const QPointF middle = mirrored(centre);
    paintFile(painter, QRectF(middle.x() - size / 2, middle.y() - size / 2, size, size), index);
}

/// It looks the same in every language.
void Mocks::pointer(QPainter &painter, const QPointF &tip, double pressed) const
{
    const QPointF at = mirrored(tip);
    painter.save();
    painter.translate(at);
    if (pressed > 0) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Look::faded(Brand::accent, 0.35 * pressed));
        painter.drawEllipse(QPointF(0, 0), 13 * pressed, 13 * pressed);
    }
    const double scale = 1.15 - 0.1 * pressed;
    painter.scale(scale, scale);
    painter.setPen(QPen(Qt::white, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(24, 24, 28));
    painter.drawPolygon(QPolygonF({ { 0, 0 },
                                    { 0, 18 },
                                    { 4.2, 14.2 },
                                    { 7.1, 20.6 },
                                    { 10.2, 19.2 },
                                    { 7.4, 13 },
                                    { 13, 13 } }));
    painter.restore();
}
