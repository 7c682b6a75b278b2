#include "views/onboarding/WelcomeFooter.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QPainter>

namespace {

constexpr int margin = 24;

/// A button with a text; the one that leads on is filled.
class TourButton final : public QAbstractButton
{
public:
    enum class Kind { Plain, Filled };

    TourButton(Kind kind, QWidget *parent)
        : QAbstractButton(parent)
        , m_kind(kind)
    {
        setAccessibleRole(*this, QAccessible::Button, [this] { click(); });
        setFocusPolicy(Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
    }
    QSize sizeHint() const override
    {
        const QFontMetrics metrics(textFont());
        return { std::max(96, metrics.horizontalAdvance(text()) + 36), metrics.height() + 16 };
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor text = Look::text(palette());
        const QColor accent = palette().color(QPalette::Highlight);
        const double level = isDown() ? 0.16 : underMouse() ? 0.08 : 0;
        const bool filled = m_kind == Kind::Filled;
        painter.setPen(Qt::NoPen);
        painter.setBrush(filled ? Look::blended(Qt::black, accent, level)
                                : Look::faded(text, level));
        const QRectF shape = QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5);
        painter.drawRoundedRect(shape, 8, 8);
        if (hasFocus()) {
            painter.setPen(QPen(Look::ring(palette()), 1.5));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 9.5, 9.5);
        }
        painter.setFont(textFont());
        painter.setPen(filled ? palette().color(QPalette::HighlightedText) : text);
        painter.drawText(rect(), Qt::AlignCenter, this->text());
    }

private:
    QFont textFont() const
    {
        return Look::font(font(), 13, m_kind == Kind::Filled ? QFont::DemiBold : QFont::Normal);
    }

    Kind m_kind;
};

class Dot final : public QAbstractButton
{
public:
    explicit Dot(QWidget *parent)
        : QAbstractButton(parent)
    {
        setAccessibleRole(*this, QAccessible::RadioButton, [this] { click(); });
        setCheckable(true);
        setFocusPolicy(Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
        setFixedSize(18, 24);
    }

protected:
    /// The dots show the page; they do not choose it themselves.
    void nextCheckState() override { }
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPointF middle = QRectF(rect()).center();
        if (hasFocus()) {
            painter.setPen(QPen(Look::ring(palette()), 1.5));
            painter.drawEllipse(middle, 7.5, 7.5);
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChecked()        ? palette().color(QPalette::Highlight)
                             : underMouse() ? Look::shade(palette(), 0.7)
                                            : Look::edge(palette()));
        const double radius = isChecked() ? 4.5 : 3.5;
        painter.drawEllipse(middle, radius, radius);
    }
};

}

WelcomeFooter::WelcomeFooter(int count, QWidget *parent)
    : QWidget(parent)
    , m_left(new TourButton(TourButton::Kind::Plain, this))
    , m_right(new TourButton(TourButton::Kind::Filled, this))
{
    auto *row = new QGridLayout(this);
    row->setContentsMargins(margin, 8, margin, margin - 4);
    row->setHorizontalSpacing(12);
    row->addWidget(m_left, 0, 0, Qt::AlignLeading | Qt::AlignVCenter);
    auto *dots = new QHBoxLayout;
    dots->setSpacing(0);
    for (int i = 0; i < count; ++i) {
        auto *dot = new Dot(this);
        connect(dot, &QAbstractButton::clicked, this, [this, i] {
            if (onDot)
                onDot(i);
        });
        dots->addWidget(dot);
        m_dots.push_back(dot);
    }
    row->addLayout(dots, 0, 1, Qt::AlignCenter);
    row->addWidget(m_right, 0, 2, Qt::AlignTrailing | Qt::AlignVCenter);
    row->setColumnStretch(0, 1);
    row->setColumnStretch(2, 1);
}

void WelcomeFooter::setLabels(const QString &left, const QString &right)
{
    m_left->setText(left);
    m_right->setText(right);
    for (auto *button : { m_left, m_right })
        button->updateGeometry();
    layout()->activate();
}

void WelcomeFooter::setPageNames(const QStringList &names)
{
    for (size_t i = 0; i < m_dots.size(); ++i) {
        const QString &name = names[static_cast<qsizetype>(i)];
        m_dots[i]->setAccessibleName(name);
        ToolTip::set(*m_dots[i], name);
    }
}

void WelcomeFooter::setPage(int page)
{
    for (size_t i = 0; i < m_dots.size(); ++i)
        m_dots[i]->setChecked(static_cast<int>(i) == page);
}
