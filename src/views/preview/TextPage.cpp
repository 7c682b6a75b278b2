#include "views/preview/TextPage.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/Workers.h"
#include "views/Look.h"
#include "views/PlainText.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>

TextPage::TextPage(const QUrl &url, const PreviewServices &services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(url)
    , m_services(services)
    , m_text(new QPlainTextEdit(this))
    , m_cut(new PlainLabel(services.texts.text(QStringLiteral("preview_cut")), this))
{
    const bool code = PreviewFiles::isCode(url);
    if (code)
        m_text->setLayoutDirection(Qt::LeftToRight);
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setFocusPolicy(Qt::NoFocus);
    m_text->setLineWrapMode(code ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    m_text->document()->setDocumentMargin(12);
    m_text->setAccessibleName(url.fileName());
    QFont font = code ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : this->font();
    font.setPointSizeF(Look::font(this->font(), 12.5).pointSizeF());
    m_text->setFont(font);
    m_cut->setContentsMargins(12, 6, 12, 6);
    m_cut->setWordWrap(true);
    m_cut->hide();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_text, 1);
    column->addWidget(m_cut);
}

void TextPage::load()
{
    m_services.workers.run(WorkerPriority::UserInitiated,
                           [this, path = FilePath::fromUrl(m_url), &queue = m_services.queue,
                            alive = std::weak_ptr(m_alive)] {
                               auto text = PreviewFiles::readText(path);
                               queue.post([this, alive, text = std::move(text)] {
                                   if (!alive.lock())
                                       return;
                                   if (text)
                                       show(*text);
                                   else
                                       onFailed();
                               });
                           });
}

void TextPage::show(const PreviewFiles::Text &text)
{
    m_text->setPlainText(text.text);
    m_cut->setVisible(!text.whole);
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
