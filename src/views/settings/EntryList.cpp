#include "views/settings/EntryList.h"

#include "views/look/ElidedLabel.h"
#include "views/look/IconButton.h"
#include "views/look/PlainText.h"
#include "views/settings/IconLabel.h"

#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace {

constexpr int iconSize = 20;

}

EntryList::EntryList(Symbols &symbols, QWidget *fallback, QWidget *parent)
    : QWidget(parent)
    , m_symbols(symbols)
    , m_fallback(fallback)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
}

void EntryList::setEntries(const QList<Entry> &entries)
{
    qsizetype focused = -1;
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row]->isAncestorOf(window()->focusWidget()))
            focused = row;
        m_rows[row]->hide();
        m_rows[row]->deleteLater(); // Its button may be what removes it.
    }
    m_rows.clear();
    for (const Entry &entry : entries) {
        auto *row = makeRow(entry);
        layout()->addWidget(row);
        // The keyboard goes through the entries, as they lie, before the button below them.
        setTabOrder(m_fallback->previousInFocusChain(), row->findChild<IconButton *>());
        row->show();
        m_rows.append(row);
    }
    setVisible(!entries.isEmpty());
    if (focused < 0)
        return;
    if (m_rows.isEmpty())
        m_fallback->setFocus();
    else
        m_rows[std::min(focused, m_rows.size() - 1)]->findChild<IconButton *>()->setFocus();
}

void EntryList::focusLast()
{
    m_rows.last()->findChild<IconButton *>()->setFocus();
}

void EntryList::setRemoveText(const QString &text)
{
    m_removeText = text;
    for (auto *row : m_rows)
        row->findChild<IconButton *>()->setHelp(text);
}

QWidget *EntryList::makeRow(const Entry &entry)
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    if (!entry.icon.isNull())
        layout->addWidget(new IconLabel(entry.icon, iconSize, row));
    auto *label = new ElidedLabel(entry.text, row);
    ToolTip::set(*label, entry.text);
    auto *button = new IconButton(m_symbols, Symbol::Remove, 16, row);
    button->setHelp(m_removeText);
    button->setAccessibleDescription(entry.text);
    layout->addWidget(label, 1);
    layout->addWidget(button);
    QObject::connect(button, &QAbstractButton::clicked, this,
                     [this, value = entry.value] { onRemove(value); });
    return row;
}
