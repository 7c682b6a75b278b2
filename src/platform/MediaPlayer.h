#pragma once

#include <QImage>
#include <QSize>

#include <functional>

/// Plays one local file's sound and film, apart from the program, so that a hostile
/// file costs nothing but itself. It stands at its beginning until it is told to
/// play. Main thread; callbacks come later, never from within a call.
class MediaPlayer
{
public:
    struct Facts
    {
        bool hasPicture = false;
        QSize pixels; // Of the picture; empty where the file does not tell.
    };
    struct State
    {
        bool isPlaying = false;
        double position = 0; // Seconds, as is the duration.
        double duration = 0; // 0 where the file does not tell.
    };

    virtual ~MediaPlayer() = default;

    /// Once, before the first picture.
    std::function<void(const Facts &)> onOpened;
    std::function<void(const QImage &)> onPicture;
    /// On each change, and some times a second while it plays.
    std::function<void(const State &)> onState;
    /// Once: the file cannot be played, or not any more.
    std::function<void()> onFailed;

    /// From the beginning again where it is at the end.
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void seek(double seconds) = 0;
    /// No picture need be larger than that, in pixels.
    virtual void setRoom(const QSize &room) = 0;
};
