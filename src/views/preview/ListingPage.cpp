#include "views/preview/ListingPage.h"

#include "app/settings/Localizer.h"
#include "app/settings/Region.h"
#include "platform/Icons.h"
#include "platform/PictureDecoder.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int rowHeight = 24; // Points, at text of the usual size.
constexpr int sideRoom = 8; // Points beside each cell.

/// Rows with some air. None of them can be chosen.
class CellDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return { size.width() + 2 * sideRoom,
                 std::max(size.height(), qRound(rowHeight * Look::textScale)) };
    }
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyleOptionViewItem inner = option;
        inner.rect.adjust(sideRoom, 0, -sideRoom, 0);
        inner.state &= ~(QStyle::State_MouseOver | QStyle::State_HasFocus);
        QStyledItemDelegate::paint(painter, inner, index);
    }
};

/// Names of columns, in line with what stands below them.
class ColumnHeader final : public QHeaderView
{
public:
    explicit ColumnHeader(QWidget *parent)
        : QHeaderView(Qt::Horizontal, parent)
    {
    }

protected:
    void paintSection(QPainter *painter, const QRect &rect, int column) const override
    {
        const QVariant alignment
            = model()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole);
        const auto place = QStyle::visualAlignment(
            layoutDirection(),
            Qt::Alignment(alignment.isValid() ? alignment.toInt() : Qt::AlignLeading));
        const QRect inner = rect.adjusted(sideRoom, 0, -sideRoom, 0);
        const QString text = model()->headerData(column, Qt::Horizontal).toString();
        painter->fillRect(rect, palette().color(QPalette::Base));
        painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1),
                          Look::shade(palette(), 0.12));
        painter->setPen(Look::secondary(palette()));
        painter->drawText(inner, static_cast<int>(place | Qt::AlignVCenter),
                          fontMetrics().elidedText(text, Qt::ElideRight, inner.width()));
    }
    QSize sectionSizeFromContents(int column) const override
    {
        const QString text = model()->headerData(column, Qt::Horizontal).toString();
        return { fontMetrics().horizontalAdvance(text) + 2 * sideRoom + 1,
                 fontMetrics().height() + sideRoom };
    }
};

/// For its icon alone: nothing need be there.
QUrl named(const QString &name, bool folder)
{
    return FilePath::toUrl("/" + name.toUtf8(),
                           folder ? FilePath::Kind::Directory : FilePath::Kind::File);
}

}

ListingPage::ListingPage(const QUrl &url, PreviewFiles::Kind kind, PreviewServices services,
                         QWidget *parent)
    : PreviewPage(parent)
    , m_url(url)
    , m_kind(kind)
    , m_services(std::move(services))
    , m_list(new QTreeWidget(this))
    , m_note(new PlainLabel(this))
{
    const auto text = [this](const char *key) { return m_services.texts.text(QLatin1String(key)); };
    m_list->setHeader(new ColumnHeader(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setIconSize(QSize(16, 16) * Look::textScale);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setItemDelegate(new CellDelegate(m_list));
    m_list->setTextElideMode(Qt::ElideMiddle); // The end of a path names the file.
    m_list->setAllColumnsShowFocus(true);
    m_list->setAccessibleName(url.fileName());
    QStringList columns { text("preview_name"), text("preview_size") };
    if (m_kind == PreviewFiles::Kind::Folder)
        columns.append(text("preview_modified"));
    m_list->setHeaderLabels(columns);
    m_list->headerItem()->setTextAlignment(1, Qt::AlignTrailing | Qt::AlignVCenter);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionsMovable(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setMinimumSectionSize(60);
    m_note->setContentsMargins(12, 6, 12, 6);
    m_note->setWordWrap(true);
    m_note->hide();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_list, 1);
    column->addWidget(m_note);
    refreshTexts();
}

void ListingPage::load()
{
    if (m_kind == PreviewFiles::Kind::Archive) {
        m_work = m_services.decoder.archive(
            m_url, [this](const std::optional<PictureDecoder::Listing> &listing) {
                if (!listing)
                    return onFailed();
                PreviewFiles::Listing entries { {}, listing->whole };
                for (const auto &entry : listing->entries)
                    entries.entries.append({ entry.path, entry.size, {}, entry.folder });
                show(entries);
            });
        return;
    }
    fetch(m_services, m_url, PreviewFiles::list,
          [this](const std::optional<PreviewFiles::Listing> &listing) {
              if (listing)
                  show(*listing);
              else
                  onFailed();
          });
}

void ListingPage::show(const PreviewFiles::Listing &listing)
{
    const QLocale locale(m_services.texts.currentCode());
    QList<QTreeWidgetItem *> items;
    items.reserve(listing.entries.size());
    for (const PreviewFiles::Entry &entry : listing.entries) {
        auto *item = new QTreeWidgetItem;
        item->setText(0, entry.name);
        item->setData(0, Qt::ToolTipRole, ToolTip::plain(entry.name));
        item->setIcon(0, m_services.icons.forFile(named(entry.name, entry.folder)));
        if (!entry.folder)
            item->setText(1, PreviewFiles::sizeText(entry.size, locale));
        item->setTextAlignment(1, Qt::AlignTrailing | Qt::AlignVCenter);
        if (entry.modified.isValid())
            item->setText(2, Region::dateTime(entry.modified, m_services.texts.currentCode()));
        items.append(item);
    }
    m_list->addTopLevelItems(items);
    const bool empty = items.isEmpty();
    if (empty || !listing.whole) {
        m_note->setText(m_services.texts.text(empty && listing.whole
                                                  ? QStringLiteral("preview_empty")
                                                  : QStringLiteral("preview_cut")));
        m_note->show();
    }
    onReady();
}

void ListingPage::scroll(Step step)
{
    scrollBy(*m_list->verticalScrollBar(), step);
}

void ListingPage::refreshTexts()
{
    nameBar(*m_list->verticalScrollBar(), m_services.texts);
    nameBar(*m_list->horizontalScrollBar(), m_services.texts);
}
