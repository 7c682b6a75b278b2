#pragma once

#include <QAbstractButton>
#include <QIcon>
#include <QUrl>

#include <functional>
#include <optional>

class DragSession;

/// The sample file, which can really be dragged. For who cannot drag it is a
/// button. A click of the pointer does nothing.
class DemoDragView final : public QAbstractButton
{
public:
    DemoDragView(DragSession &session, QIcon icon, QWidget *parent);

    std::optional<QUrl> url;
    std::function<void()> onBegin;
    /// Whether it was dropped somewhere or not.
    std::function<void()> onEnd;
    /// The button was pressed.
    std::function<void()> onPut;

    void setName(const QString &name);
    /// A press counts anywhere within a circle of that diameter round the middle.
    void setReach(int diameter);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool hitButton(const QPoint &position) const override;
    void beginDrag(const QPointF &at);
    QFont nameFont() const;

    DragSession &m_session;
    QIcon m_icon;
    int m_reach = 0;
    std::optional<QPointF> m_downEvent; // Where the press was, until the drag begins.
};
