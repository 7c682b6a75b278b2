#pragma once

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/Workers.h"
#include "views/look/Motion.h"

#include <QSize>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class Icons;
class Localizer;
class MediaPlayer;
class PictureDecoder;
class PreviewCache;
class QAbstractSlider;

/// What a page shows.
struct PreviewItem
{
    QUrl url;
    QString title; // As its row has it; empty where that is the file's name.

    QString name() const;
};

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
    /// What the header tells of the file beside its name, once the page is ready.
    virtual QString facts() const { return {}; }
    virtual void scroll(Step) { }
    virtual void zoom(Zoom) { }
    /// Puts what is selected on the clipboard.
    virtual void copy() { }
    virtual void setMotion(Motion) { }
    /// In the language of the moment.
    virtual void refreshTexts() { }

protected:
    static void scrollBy(QAbstractSlider &bar, Step step);
    /// Assistive programs tell which of the bars they are at.
    static void nameBar(QAbstractSlider &bar, const Localizer &texts);

    /// Reads on a thread that may wait for that file, and takes the result here,
    /// unless the page has gone by then.
    template<typename Read, typename Take>
    void fetch(const PreviewServices &services, const QUrl &url, Read read, Take take)
    {
        const QByteArray path = FilePath::fromUrl(url);
        services.workers.runAt(path,
                               [path, read = std::move(read), take = std::move(take),
                                &queue = services.queue, alive = std::weak_ptr(m_alive)] {
                                   queue.post([result = read(path), take, alive] {
                                       if (alive.lock())
                                           take(result);
                                   });
                               });
    }

private:
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
