#pragma once

#include "dragdrop/FileDrag.h"

#include <QWidget>

class Symbols;

/// The capsule in the header from which the selection, or everything, is dragged.
class DragHandle final : public QWidget
{
public:
    DragHandle(Symbols &symbols, DragSession &session, Icons &icons, QWidget *parent);

    enum class Carries { Everything, Selection };
    void setContent(Carries carries, int count);
    /// Where room is scarce it shows the count alone.
    enum class Room { Enough, Scarce };
    void setRoom(Room room);
    void setHelp(const QString &text);

    HandleDrag &drag() { return m_drag; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QFont countFont() const;
    int digitWidth() const;
    int symbolWidth() const;

    Symbols &m_symbols;
    HandleDrag m_drag;
    Carries m_carries = Carries::Everything;
    Room m_room = Room::Enough;
    QString m_count = QStringLiteral("0");
};
