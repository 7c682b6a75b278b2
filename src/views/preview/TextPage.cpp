#include "views/preview/TextPage.h"

#include "app/settings/Localizer.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>

namespace {

/// Takes the keys that move and select, and leaves the window its own.
class TextView final : public QPlainTextEdit
{
public:
    using QPlainTextEdit::QPlainTextEdit;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Space)
            event->ignore(); // It closes.
        else
            QPlainTextEdit::keyPressEvent(event);
    }
};

}

TextPage::TextPage(const QUrl &url, const PreviewServices &services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(url)
    , m_services(services)
    , m_text(new TextView(this))
    , m_note(new PlainLabel(this))
{
    const bool code = PreviewFiles::isCode(url);
    if (code)
        m_text->setLayoutDirection(Qt::LeftToRight);
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setFocusPolicy(Qt::TabFocus);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setTabChangesFocus(true);
    m_text->setLineWrapMode(code ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    m_text->document()->setDocumentMargin(12);
    m_text->setAccessibleName(url.fileName());
    QFont font = code ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : this->font();
    font.setPointSizeF(Look::font(this->font(), 12.5).pointSizeF());
    m_text->setFont(font);
    m_note->setContentsMargins(12, 6, 12, 6);
    m_note->setWordWrap(true);
    m_note->hide();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_text, 1);
    column->addWidget(m_note);
    refreshTexts();
}

void TextPage::load()
{
    fetch(m_services, m_url, PreviewFiles::readText,
          [this](const std::optional<PreviewFiles::Text> &text) {
              if (text)
                  show(*text);
              else
                  onFailed();
          });
}

void TextPage::show(const PreviewFiles::Text &text)
{
    m_text->setPlainText(text.text);
    const bool empty = text.text.isEmpty();
    m_note->setText(m_services.texts.text(empty ? QStringLiteral("preview_empty")
                                                : QStringLiteral("preview_cut")));
    m_note->setVisible(empty || !text.whole);
    onReady();
}

void TextPage::scroll(Step step)
{
    scrollBy(*m_text->verticalScrollBar(), step);
}

void TextPage::copy()
{
    m_text->copy();
}

void TextPage::refreshTexts()
{
    nameBar(*m_text->verticalScrollBar(), m_services.texts);
    nameBar(*m_text->horizontalScrollBar(), m_services.texts);
}
