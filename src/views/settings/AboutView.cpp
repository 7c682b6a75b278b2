#include "views/settings/AboutView.h"

#include "app/settings/Localizer.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"
#include "views/settings/IconLabel.h"

#include <QEvent>
#include <QIcon>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

namespace {
constexpr int iconSize = 96;
constexpr int narrowest = 280;
}

AboutView::AboutView(const Localizer &texts, const QString &resources, QString version,
                     QWidget *parent)
    : QWidget(parent)
    , m_texts(texts)
    , m_version(std::move(version))
    , m_name(new PlainLabel(this))
    , m_versionLine(new PlainLabel(this))
    , m_credits(new PlainLabel(this))
{
    setAccessibleRole(*this, QAccessible::Window);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(32, 28, 32, 30);
    column->setSpacing(4);
    const QIcon icon(resources + QStringLiteral("/icons/app.vantleapp.Vantle.svg"));
    column->addWidget(new IconLabel(icon, iconSize, this), 0, Qt::AlignHCenter);
    column->addSpacing(10);
    for (auto *line : { m_name, m_versionLine, m_credits }) {
        line->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        line->setMinimumWidth(narrowest);
        column->addWidget(line);
    }
    column->insertSpacing(column->count() - 1, 8);
    // What a message about a fault should hold can be copied.
    m_versionLine->setTextInteractionFlags(Qt::TextSelectableByMouse
                                           | Qt::TextSelectableByKeyboard);
    for (const auto &key : { QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close) }) {
        auto *close = new QShortcut(key, this);
        connect(close, &QShortcut::activated, this, &QWidget::close);
    }
    setFonts();
    refreshTexts();
}

void AboutView::refreshTexts()
{
    m_name->setText(m_texts.text(QStringLiteral("app_name")));
    m_versionLine->setText(m_texts.text(QStringLiteral("version_label"), { m_version }));
    m_credits->setText(m_texts.text(QStringLiteral("app_tagline")));
    setTitle(*this, m_texts.text(QStringLiteral("menu_about")));
    setFixedSize(sizeHint());
}

void AboutView::setFonts()
{
    m_name->setFont(Look::font(font(), 22, QFont::DemiBold));
    m_versionLine->setFont(Look::font(font(), 12));
    m_credits->setFont(Look::font(font(), 11));
    QPalette soft = palette();
    soft.setColor(QPalette::WindowText,
                  Look::blended(Look::text(soft), soft.color(QPalette::Window),
                                Look::isHighContrast(soft) ? 1 : 0.7));
    m_credits->setPalette(soft);
}

void AboutView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        setFonts();
    if (event->type() == QEvent::FontChange)
        setFixedSize(sizeHint());
    QWidget::changeEvent(event);
}
