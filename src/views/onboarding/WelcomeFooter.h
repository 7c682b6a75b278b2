#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;

/// The buttons below the tour's pages, with one dot for each page between them.
class WelcomeFooter final : public QWidget
{
public:
    WelcomeFooter(int count, QWidget *parent);

    void setLabels(const QString &left, const QString &right);
    /// What screen readers call the dots.
    void setPageNames(const QStringList &names);
    void setPage(int page);
    QAbstractButton &left() const { return *m_left; }
    QAbstractButton &right() const { return *m_right; }
    QAbstractButton &dot(int page) const { return *m_dots[static_cast<size_t>(page)]; }

    std::function<void(int)> onDot;

private:
    QAbstractButton *m_left;
    QAbstractButton *m_right;
    std::vector<QAbstractButton *> m_dots;
};
