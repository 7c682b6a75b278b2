#include "views/preview/CardPage.h"

#include "app/settings/Localizer.h"
#include "app/settings/Region.h"
#include "platform/Icons.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

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

CardPage::CardPage(PreviewItem item, PreviewServices services, QWidget *parent)
    : PreviewPage(parent)
    , m_item(std::move(item))
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
    line->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    line->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(line);
    return line;
}

void CardPage::load()
{
    const bool isAddress = PreviewFiles::kindOf(m_item.url) == PreviewFiles::Kind::WebLocation;
    const auto read = [isAddress](const QByteArray &path) {
        return Facts { PreviewFiles::status(path),
                       isAddress ? PreviewFiles::readAddress(path) : std::nullopt };
    };
    fetch(m_services, m_item.url, read, [this](const Facts &facts) { show(facts); });
}

void CardPage::show(const Facts &facts)
{
    const QLocale locale(m_services.texts.currentCode());
    const QIcon icon
        = facts.address ? m_services.icons.forWebLocation() : m_services.icons.forFile(m_item.url);
    m_icon->setPixmap(icon.pixmap(QSize(iconSize, iconSize), devicePixelRatio()));
    m_name->setText(breakable(m_item.name()));
    if (facts.address) {
        m_kind->setText(breakable(facts.address->toDisplayString()));
        m_facts->hide();
    } else if (facts.status) {
        m_kind->setText(PreviewFiles::typeName(m_item.url));
        m_kind->setVisible(!m_kind->text().isEmpty());
        const QString date
            = Region::dateTime(facts.status->modified, m_services.texts.currentCode());
        const QString size = facts.status->size == 0
            ? m_services.texts.text(QStringLiteral("preview_empty"))
            : PreviewFiles::sizeText(facts.status->size, locale);
        m_facts->setText(facts.status->folder ? date : QStringLiteral("%1 · %2").arg(size, date));
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
