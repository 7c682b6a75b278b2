#pragma once

#include <QCheckBox>

/// A row that is on or off: its text, which may take several lines, and a switch
/// at the row's end. A press anywhere on it counts.
class Switch final : public QCheckBox
{
public:
    explicit Switch(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void paintEvent(QPaintEvent *event) override;

private:
    QSize trackSize() const;
};
