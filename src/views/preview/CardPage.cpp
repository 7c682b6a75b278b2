#include "views/preview/CardPage.h"

#include "app/settings/Localizer.h"
#include "app/settings/Region.h"
#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/Icons.h"
#include "views/Look.h"
#include "views/PlainText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int iconSize = 96; // Points.
constexpr qsizetype longestWord = 24; // Characters.
constexpr QChar breakPlace(0x200b);

/// May be broken within words that would be wider than the window.
QString breakable(const QString &text)
{
    QString result;
    qsizetype word = 0;
    for (const QChar c : text) {
        word = c.isSpace() ? 0 : word + 1;
        if (word > longestWord && !c.isLowSurrogate() && !c.isMark())
            result += breakPlace;
        result += c;
    }
    return result;
}

}

CardPage::CardPage(QUrl url, PreviewServices services, QWidget *parent)
    : PreviewPage(parent)
    , m_url(std::move(url))
    , m_services(std::move(services))
    , m_icon(new PlainLabel(this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(24, 24, 24, 24);
    column->setSpacing(6);
    column->addStretch(2);
    m_icon->setAlignment(Qt::AlignCenter);
    column->addWidget(m_icon);
    column->addSpacing(8);
    m_name = addLine(15, true);
    m_kind = addLine(12, false);
    m_facts = addLine(12, false);
    column->addStretch(3);
}

QLabel *CardPage::addLine(double size, bool strong)
{
    auto *line = new PlainLabel(this);
    line->setAlignment(Qt::AlignCenter);
    line->setWordWrap(true);
    line->setFont(Look::font(font(), size, strong ? QFont::DemiBold : QFont::Normal));
    line->setTextInteractionFlags(Qt::TextSelectableByMouse);
    line->setFocusPolicy(Qt::NoFocus);
    layout()->addWidget(line);
    return line;
}

void CardPage::load()
{
    const bool isAddress = PreviewFiles::kindOf(m_url) == PreviewFiles::Kind::WebLocation;
    m_services.workers.run(WorkerPriority::UserInitiated,
                           [this, isAddress, path = FilePath::fromUrl(m_url),
                            &queue = m_services.queue, alive = std::weak_ptr(m_alive)] {
                               const Facts facts { PreviewFiles::status(path),
                                                   isAddress ? PreviewFiles::readAddress(path)
                                                             : std::nullopt };
                               queue.post([this, alive, facts] {
                                   if (alive.lock())
                                       show(facts);
                               });
                           });
}

void CardPage::show(const Facts &facts)
{
    const QLocale locale(m_services.texts.currentCode());
    const QIcon icon
        = facts.address ? m_services.icons.forWebLocation() : m_services.icons.forFile(m_url);
    m_icon->setPixmap(icon.pixmap(QSize(iconSize, iconSize), devicePixelRatio()));
    m_name->setText(
        breakable(FilePath::display(FilePath::lastComponent(FilePath::fromUrl(m_url)))));
    if (facts.address) {
        m_kind->setText(breakable(facts.address->toDisplayString()));
        m_facts->hide();
    } else if (facts.status) {
        m_kind->setText(PreviewFiles::typeName(m_url));
        m_kind->setVisible(!m_kind->text().isEmpty());
        const QString date
            = Region::dateTime(facts.status->modified, m_services.texts.currentCode());
        m_facts->setText(facts.status->folder
                             ? date
                             : QStringLiteral("%1 · %2").arg(
                                 PreviewFiles::sizeText(facts.status->size, locale), date));
    } else {
        m_kind->setText(m_services.texts.text(QStringLiteral("preview_gone")));
        m_facts->hide();
    }
    onReady();
}

void CardPage::copy()
{
    for (const QLabel *line : { m_name, m_kind, m_facts }) {
        if (line->hasSelectedText())
            QGuiApplication::clipboard()->setText(line->selectedText().remove(breakPlace));
    }
}
