#pragma once

#include "views/Motion.h"

#include <QSize>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <optional>

class Icons;
class Localizer;
class MainQueue;
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
};

/// What the preview shows of one file. It handles no keys and takes no focus: the
/// window tells it what a key means. Main thread.
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

protected:
    static void scrollBy(QAbstractSlider &bar, Step step);
};
