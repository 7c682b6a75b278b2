#pragma once

#include <QScrollBar>

#include <optional>

/// A narrow scroll bar without a track or arrows: a rounded handle that grows
/// clearer under the pointer. A press beside the handle brings it there.
class SlimScrollBar final : public QScrollBar
{
public:
    explicit SlimScrollBar(QWidget *parent = nullptr);
    static constexpr int thickness = 8;

    QSize sizeHint() const override { return { thickness, thickness }; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    QRectF handle() const;
    void moveHandle(double top);

    std::optional<double> m_grip; // Where in the handle it is held.
};
