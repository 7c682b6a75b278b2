#include "views/shelf/ShelfHeader.h"

#include "app/settings/Localizer.h"
#include "views/look/AccessibleRole.h"
#include "views/look/IconButton.h"
#include "views/look/Look.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {
constexpr int headerHeight = 38; // Grows with large text.
constexpr int headerLeading = 17; // In line with the icons of the rows.
constexpr int headerTrailing = 8;
constexpr int titleGap = 2; // Beside the empty margin of the title.
}

ShelfHeader::ShelfHeader(Symbols &symbols, DragSession &session, Icons &icons,
                         const Localizer &texts, QWidget *parent)
    : QWidget(parent)
    , m_texts(texts)
    , m_title(new TitleButton(symbols, this))
    , m_handle(new DragHandle(symbols, session, icons, this))
    , m_clear(new IconButton(symbols, Symbol::Trash, 15, this))
    , m_close(new IconButton(symbols, Symbol::Close, 15, this))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(headerLeading - TitleButton::padding, 0, headerTrailing, 0);
    row->setSpacing(0);
    row->addWidget(m_title);
    row->addStretch();
    row->addSpacing(titleGap);
    row->addWidget(m_handle);
    row->addSpacing(6);
    row->addWidget(m_clear);
    row->addWidget(m_close);
    setFixedHeight(headerHeight);
    setAccessibleRole(*this, QAccessible::ToolBar);
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
    m_title->setTitle(content.title, content.pin);
    m_title->setHelp(m_texts.text(QStringLiteral("shelf_menu_help")),
                     m_texts.text(QStringLiteral("shelf_pinned")));
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
    setAccessibleName(content.title);
    shareWidth();
}

/// Before it is first shown nothing here may need a font: finding the first one takes
/// 3 of the 26 milliseconds of the program's start.
void ShelfHeader::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (std::exchange(m_isMeasured, true))
        return;
    fitText();
    shareWidth();
    parentWidget()->layout()->activate(); // Its height is right in the first picture.
}

void ShelfHeader::fitText()
{
    if (!m_isMeasured)
        return;
    setFixedHeight(
        std::max({ headerHeight, m_title->sizeHint().height(), m_handle->sizeHint().height() + 8,
                   m_close->sizeHint().height() + 4 }));
}

/// The title comes first: with large text in a narrow panel the handle gives way.
void ShelfHeader::shareWidth()
{
    if (!m_isMeasured)
        return;
    using Room = DragHandle::Room;
    m_handle->setRoom(Room::Enough);
    if (layout()->minimumSize().width() - m_title->minimumSizeHint().width()
            + m_title->sizeHint().width()
        > width())
        m_handle->setRoom(Room::Scarce);
}

void ShelfHeader::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    shareWidth();
}

void ShelfHeader::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        fitText();
        shareWidth();
    }
}

void ShelfHeader::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(0, height() - 1, width(), 1, Look::shade(palette(), 0.1));
}
