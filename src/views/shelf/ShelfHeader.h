#pragma once

#include "views/look/TitleButton.h"
#include "views/shelf/DragHandle.h"

#include <QWidget>

class IconButton;
class Localizer;

/// The panel's upper edge: the shelf's title, which is the button of its menu, the
/// drag handle, and the buttons that clear the shelf and close the panel.
class ShelfHeader final : public QWidget
{
public:
    ShelfHeader(Symbols &symbols, DragSession &session, Icons &icons, const Localizer &texts,
                QWidget *parent);

    struct Content
    {
        QString title;
        TitleButton::Pin pin = TitleButton::Pin::Absent;
        DragHandle::Carries carries = DragHandle::Carries::Everything;
        int count = 0; // What the handle would drag.
        bool empty = true; // Then neither the handle nor the clear button shows.
    };
    /// Also takes the texts anew, in the language of the moment.
    void setContent(const Content &content);

    TitleButton &title() { return *m_title; }
    HandleDrag &drag() { return m_handle->drag(); }

    std::function<void()> onClear;
    std::function<void()> onClose;

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitText();
    void shareWidth();

    const Localizer &m_texts;
    TitleButton *m_title;
    DragHandle *m_handle;
    IconButton *m_clear;
    IconButton *m_close;
    bool m_isMeasured = false; // From its first showing on.
};
