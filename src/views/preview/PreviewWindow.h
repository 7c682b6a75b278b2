#pragma once

#include "base/Ticket.h"
#include "views/preview/PreviewPage.h"

#include <QPointer>
#include <QRect>

#include <functional>

class QLabel;
class QPushButton;
class QVBoxLayout;
struct QuickLookController;

/// Shows the shelf's files large, one at a time. It belongs to the keyboard: space
/// or escape closes it, the arrows walk. Made once and shown again. It executes
/// nothing and fetches nothing. Main thread.
class PreviewWindow final : public QWidget
{
public:
    PreviewWindow(const QuickLookController &ql, PreviewServices services);
    ~PreviewWindow() override;

    /// Shows the window in front, with the keyboard.
    std::function<void(QWidget &)> bringToFront;
    std::function<void(const QUrl &)> onOpen;
    /// It was closed while it had the keyboard.
    std::function<void()> onKeyboardFree;

    /// Comes up beside the panel, whose frame that is, with what the list says to
    /// begin with: as soon as there is something to see, or in a moment.
    void open(const QRect &panel);
    /// From the call of open() on.
    bool isUp() const { return m_isUp; }
    void dismiss();

    enum class Shown {
        StartIndex, // What the list says to begin with.
        Same, // What is shown already, or what has come into its place.
    };
    /// The list or its place has changed.
    void reloadData(Shown shown);
    int numberOfPreviewItems() const;
    /// An index out of range gives the first one; an empty list "/".
    QUrl previewItemAt(int index) const;
    int currentPreviewItemIndex() const { return m_index; }

    void setMotion(Motion motion);
    /// In the language of the moment.
    void refreshTexts();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    enum class Fallback { Allowed, None };

    PreviewItem item() const;
    void walk(int step);
    void showItem(int index);
    void load(PreviewPage *page, Fallback fallback);
    void display(PreviewPage *page);
    void letGo(PreviewPage *page);
    void appear();
    void place();
    void prepareNeighbours();
    void refreshHeader();
    void end();

    const QuickLookController &m_ql;
    PreviewServices m_services;
    QLabel *m_icon;
    QLabel *m_name;
    QLabel *m_facts;
    QLabel *m_position;
    QPushButton *m_open;
    QVBoxLayout *m_column;
    QPointer<PreviewPage> m_page; // Of what is chosen; maybe not ready yet.
    QPointer<PreviewPage> m_shown;
    QRect m_panel;
    QUrl m_url;
    int m_index = 0;
    bool m_isUp = false;
    bool m_hasKeyboard = false; // Or is about to have it.
    Motion m_motion = Motion::Full;
    Ticket m_hold; // Runs while another file's page is still on screen.
    Ticket m_patience; // Runs until the window shows whatever there is.
};
