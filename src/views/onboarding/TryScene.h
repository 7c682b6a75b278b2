#pragma once

#include "base/Ticket.h"
#include "store/ShelfItem.h"
#include "views/onboarding/Scene.h"

#include <QUrl>

class DemoDragView;
class DragSession;
class Icons;
class Localizer;
class QLabel;
class ShelfStore;

/// The sample file, to be dragged onto the shelf: the shelf tells when it is there.
class TryScene final : public Scene
{
public:
    TryScene(ShelfStore &store, const QUrl &demoURL, const Localizer &texts, MainQueue &queue,
             DragSession &session, Icons &icons);

    std::function<void()> onBegin;
    std::function<void()> onEnd;
    /// Puts it on the shelf without a drag.
    std::function<void()> onPut;

    /// What the keyboard goes to.
    QWidget &control() const;

    /// In the language of the moment.
    void refreshTexts();

protected:
    bool moves() const override { return !m_done; }
    void draw(QPainter &painter, double time) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void setDone(const QList<ShelfItem> &items);
    void setDragging(bool dragging);
    void place();

    const Localizer &m_texts;
    QUrl m_demoURL;
    DemoDragView *m_file;
    QLabel *m_hint;
    bool m_dragging = false;
    bool m_done = false;
    Ticket m_items;
};
