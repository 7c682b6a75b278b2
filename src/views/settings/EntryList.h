#pragma once

#include <QIcon>
#include <QList>
#include <QString>
#include <QWidget>

#include <functional>

class Symbols;

/// A list of values that can be taken out one by one: each has a picture, a text,
/// and a button that removes it. Hidden while it is empty.
class EntryList final : public QWidget
{
public:
    struct Entry
    {
        QString value;
        QString text;
        QIcon icon;
    };

    /// fallback: gets the keyboard when the last entry is removed by key.
    EntryList(Symbols &symbols, QWidget *fallback, QWidget *parent = nullptr);

    void setEntries(const QList<Entry> &entries);
    /// The keyboard goes to the last entry, of which there is one.
    void focusLast();
    /// What the buttons say.
    void setRemoveText(const QString &text);

    std::function<void(const QString &value)> onRemove;

private:
    QWidget *makeRow(const Entry &entry);

    Symbols &m_symbols;
    QWidget *m_fallback;
    QString m_removeText;
    QList<QWidget *> m_rows;
};
