#pragma once

#include "views/Motion.h"

#include <QSize>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class Icons;
class Localizer;
class MainQueue;
class MediaPlayer;
class PictureDecoder;
class PreviewCache;
class QAbstractSlider;
class Workers;

/// What pages of the preview need. All of it outlives them.
struct PreviewServices
{
    PictureDecoder &decoder;
    PreviewCache &cache;
    Workers &workers;
    MainQueue &queue;
    Icons &icons;
    const Localizer &texts;
    /// Makes a player of that file; none where nothing can be played at all.
    std::function<std::unique_ptr<MediaPlayer>(const QUrl &)> play {};
};

/// What the preview shows of one file. It handles no keys and has no focus by itself:
/// the window tells it what a key means. Main thread.
class PreviewPage : public QWidget
{
public:
    enum class Step { LineUp, LineDown, PageUp, PageDown, Start, End };
    enum class Zoom { In, Out, Fit };

    using QWidget::QWidget;

    /// Something worth looking at is there. Told once, and not while load() runs
    /// unless it is there at once.
    std::function<void()> onReady;
    /// The file cannot be shown in this way.
    std::function<void()> onFailed;

    /// Begins to fetch what is shown.
    virtual void load() = 0;
    /// In points, where the content has a size of its own; told by onReady at the latest.
    virtual std::optional<QSize> contentSize() const { return std::nullopt; }
    virtual void scroll(Step) { }
    virtual void zoom(Zoom) { }
    /// Puts what is selected on the clipboard.
    virtual void copy() { }
    virtual void setMotion(Motion) { }
    /// In the language of the moment.
    virtual void refreshTexts() { }

protected:
    static void scrollBy(QAbstractSlider &bar, Step step);
};
