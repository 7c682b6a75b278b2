#include "views/ShelfHeader.h"

#include "app/settings/Localizer.h"
#include "views/IconButton.h"
#include "views/Look.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {
constexpr int headerHeight = 38;
constexpr int headerLeading = 17; // In line with the icons of the rows.
constexpr int headerTrailing = 8;
constexpr int titleGap = 8;
}

ShelfHeader::ShelfHeader(Symbols &symbols, DragSession &session, Icons &icons,
                         const Localizer &texts, QWidget *parent)
    : QWidget(parent)
    , m_texts(texts)
    , m_handle(new DragHandle(symbols, session, icons, this))
    , m_clear(new IconButton(symbols, Symbol::Trash, 15, this))
    , m_close(new IconButton(symbols, Symbol::Close, 15, this))
{
    setFixedHeight(headerHeight);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(headerLeading, 0, headerTrailing, 0);
    row->setSpacing(0);
    row->addStretch();
    row->addWidget(m_handle);
    row->addSpacing(6);
    row->addWidget(m_clear);
    row->addWidget(m_close);
    connect(m_clear, &IconButton::clicked, this, [this] {
        if (onClear)
            onClear();
    });
    connect(m_close, &IconButton::clicked, this, [this] {
        if (onClose)
            onClose();
    });
}

void ShelfHeader::setContent(const Content &content)
{
    m_title = content.title;
    m_handle->setContent(content.carries, content.count);
    m_handle->setHelp(m_texts.text(content.carries == DragHandle::Carries::Selection
                                       ? QStringLiteral("drag_out_selected_help")
                                       : QStringLiteral("drag_out_all_help")));
    m_clear->setHelp(m_texts.text(QStringLiteral("clear")));
    m_close->setHelp(m_texts.text(QStringLiteral("panel_close")));
    // A button that goes away would hand the keyboard to its neighbour, the close button.
    if (content.empty && m_clear->hasFocus())
        parentWidget()->setFocus();
    m_handle->setVisible(!content.empty);
    m_clear->setVisible(!content.empty);
    setAccessibleName(m_title);
    update();
}

QRect ShelfHeader::titleArea() const
{
    const QWidget *next = m_handle->isHidden() ? static_cast<const QWidget *>(m_close) : m_handle;
    return isRightToLeft()
        ? QRect(QPoint(next->geometry().right() + 1 + titleGap, 0),
                QPoint(width() - 1 - headerLeading, headerHeight - 1))
        : QRect(QPoint(headerLeading, 0),
                QPoint(next->geometry().left() - 1 - titleGap, headerHeight - 1));
}

void ShelfHeader::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setFont(Look::font(font(), 13, QFont::DemiBold));
    painter.setPen(Look::text(palette()));
    const QRect area = titleArea();
    painter.drawText(area, Qt::AlignVCenter | Qt::AlignLeading,
                     painter.fontMetrics().elidedText(m_title, Qt::ElideRight, area.width()));
    painter.fillRect(0, headerHeight - 1, width(), 1, Look::faded(Look::text(palette()), 0.1));
}
