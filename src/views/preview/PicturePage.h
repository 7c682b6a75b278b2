#pragma once

#include "base/Ticket.h"
#include "platform/PictureDecoder.h"
#include "views/preview/PreviewPage.h"

/// An image: first as it is at hand, then as sharp as it is shown. The wheel comes
/// closer, a drag moves what is larger than the window, animations run.
class PicturePage final : public PreviewPage
{
public:
    PicturePage(QUrl url, PreviewServices services, QWidget *parent);

    void load() override;
    std::optional<QSize> contentSize() const override;
    void scroll(Step step) override;
    void zoom(Zoom zoom) override;
    QString facts() const override;
    void setMotion(Motion motion) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void decode();
    void take(const PictureDecoder::Picture &picture);
    void setImage(const QImage &image);
    double fitScale() const; // Points a pixel of the whole picture.
    double scale() const { return m_zoom.value_or(fitScale()); }
    QRectF target() const; // On the grid of the screen's pixels.
    void zoomTo(double scale, const QPointF &around);
    void keepInside();
    void sharpenSoon();
    void sharpen();
    void askForFrames();
    void showFrame();

    const QUrl m_url;
    PreviewServices m_services;
    QSize m_whole; // Pixels; empty until something is known.
    QImage m_image; // The best so far.
    bool m_isOpaque = true;
    bool m_isAnimated = false;
    bool m_isReady = false;
    Motion m_motion = Motion::Full;

    std::optional<double> m_zoom; // None: it fits.
    QPointF m_centre; // Of what is shown, from the picture's middle, in pixels of the whole.
    std::optional<QPointF> m_drag; // The pointer's last place.

    QList<PictureDecoder::Frame> m_frames;
    QList<PictureDecoder::Frame> m_nextFrames;
    int m_frameCount = 0;
    int m_firstFrame = 0; // Of m_frames.
    int m_frame = 0; // In m_frames.

    Ticket m_check; // Of what is there first.
    Ticket m_work; // For a sharper one.
    Ticket m_pause;
    Ticket m_frameWork;
    Ticket m_clock;
};
