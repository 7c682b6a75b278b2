#pragma once

#include "platform/InstalledApplication.h"

#include <QDialog>
#include <QStringList>

#include <functional>

class Localizer;
class QLineEdit;
class QListView;
class QPushButton;
class QSortFilterProxyModel;

/// Asks for one or several applications by name. Shown by open(), answers by
/// callback, and deletes itself when it is closed.
class ApplicationPicker final : public QDialog
{
    Q_OBJECT

public:
    ApplicationPicker(const QList<InstalledApplication> &applications, const Localizer &texts,
                      QWidget *parent);

    std::function<void(const QStringList &identifiers)> onPicked;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void filter(const QString &part);
    void pick();

    QSortFilterProxyModel *m_shown;
    QLineEdit *m_search;
    QListView *m_list;
    QPushButton *m_add;
};
