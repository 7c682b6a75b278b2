#include "views/settings/ApplicationPicker.h"

#include "app/settings/Localizer.h"
#include "views/look/DialogTitle.h"
#include "views/look/Look.h"
#include "views/look/TextButton.h"
#include "views/settings/AppBadge.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace {

constexpr int identifierRole = Qt::UserRole;

}

ApplicationPicker::ApplicationPicker(const QList<InstalledApplication> &applications,
                                     const Localizer &texts, QWidget *parent)
    : QDialog(parent)
    , m_shown(new QSortFilterProxyModel(this))
    , m_search(new QLineEdit(this))
    , m_list(new QListView(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(dialogTitle(texts.text(QStringLiteral("ignored_add"))));
    auto *model = new QStandardItemModel(this);
    for (const auto &application : applications) {
        const AppBadge badge(application);
        auto *item = new QStandardItem(badge.icon, badge.name);
        item->setData(application.identifier, identifierRole);
        item->setEditable(false);
        model->appendRow(item);
    }
    m_shown->setSourceModel(model);
    m_shown->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_shown->setSortLocaleAware(true);
    m_shown->sort(0);
    m_list->setModel(m_shown);
    m_list->setIconSize(QSize(24, 24) * Look::symbolScale());
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setAccessibleName(windowTitle());
    m_search->setPlaceholderText(texts.text(QStringLiteral("ignored_search")));
    m_search->setAccessibleName(m_search->placeholderText());
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    auto *buttons = new QDialogButtonBox(this);
    m_add = new TextButton(texts.text(QStringLiteral("add")));
    buttons->addButton(m_add, QDialogButtonBox::AcceptRole);
    buttons->addButton(new TextButton(texts.text(QStringLiteral("cancel"))),
                       QDialogButtonBox::RejectRole);
    m_add->setDefault(true);
    auto *layout = new QVBoxLayout(this);
    for (auto *part : std::initializer_list<QWidget *> { m_search, m_list, buttons })
        layout->addWidget(part);
    resize(QSize(380, 420) * Look::symbolScale());

    QObject::connect(m_search, &QLineEdit::textChanged, this,
                     [this](const QString &part) { filter(part); });
    QObject::connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                     [this] { m_add->setEnabled(m_list->selectionModel()->hasSelection()); });
    QObject::connect(m_list, &QListView::doubleClicked, this, [this] { pick(); });
    QObject::connect(buttons, &QDialogButtonBox::accepted, this, [this] { pick(); });
    QObject::connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_add->setEnabled(false);
}

/// What is found first is what return adds.
void ApplicationPicker::filter(const QString &part)
{
    m_shown->setFilterFixedString(part);
    if (!part.isEmpty())
        m_list->setCurrentIndex(m_shown->index(0, 0));
    else
        m_list->clearSelection();
}

void ApplicationPicker::pick()
{
    QStringList identifiers;
    for (const auto &index : m_list->selectionModel()->selectedIndexes())
        identifiers.append(index.data(identifierRole).toString());
    accept();
    if (!identifiers.isEmpty())
        onPicked(identifiers);
}

/// The arrows walk the list while the keyboard stays with the search.
bool ApplicationPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            const int step = key == Qt::Key_Up ? -1 : 1;
            const auto next = m_shown->index(m_list->currentIndex().row() + step, 0);
            if (next.isValid())
                m_list->setCurrentIndex(next);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
