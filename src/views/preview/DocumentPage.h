#pragma once

#include "base/Ticket.h"
#include "platform/PictureDecoder.h"
#include "views/preview/PreviewPage.h"

#include <QCache>
#include <QHash>

class QScrollBar;

/// The pages of a PDF document, one below the other; those in view are rendered,
/// and few are kept.
class DocumentPage final : public PreviewPage
{
public:
    DocumentPage(QUrl url, PreviewServices services, QWidget *parent);

    void load() override;
    std::optional<QSize> contentSize() const override;
    void scroll(Step step) override;
    void zoom(Zoom zoom) override;
    void refreshTexts() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void take(int page, const PictureDecoder::Picture &picture);
    void layOut();
    QSizeF cell() const; // A page as it is shown, points.
    QRectF pageRect(int page) const; // In this widget.
    std::pair<int, int> visiblePages() const; // First and one past the last.
    QString place() const; // Which page is in the middle of the view; empty for a single one.
    void renderSoon();
    void renderVisible();

    const QUrl m_url;
    PreviewServices m_services;
    QScrollBar *m_bar;
    QScrollBar *m_across; // Where the pages are wider than the view.
    int m_count = 0;
    QSizeF m_size; // Of the first page, points; the others are fitted into its place.
    double m_zoom = 1; // Of the width that there is.
    QCache<int, QImage> m_pages; // In bytes.
    struct Work
    {
        int pixels = 0;
        Ticket ticket;
    };
    QHash<int, Work> m_work; // By page.
    Ticket m_first;
    Ticket m_pause;
};
