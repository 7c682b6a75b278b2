#pragma once

#include "base/Ticket.h"
#include "platform/MediaPlayer.h"
#include "views/preview/PreviewPage.h"

#include <memory>

class QAbstractButton;
class QLabel;
class QSlider;

/// Sound and film: its first picture, played when the user says so. Its button and
/// its slider are reached by Tab.
class MediaPage final : public PreviewPage
{
public:
    MediaPage(QUrl url, PreviewServices services, QWidget *parent);
    ~MediaPage() override;

    void load() override;
    std::optional<QSize> contentSize() const override;
    void refreshTexts() override;

private:
    class Screen;

    void opened(const MediaPlayer::Facts &facts);
    void show(const QImage &picture);
    void show(const MediaPlayer::State &state);
    void becomeReady();
    void tellRoom();

    const QUrl m_url;
    PreviewServices m_services;
    std::unique_ptr<MediaPlayer> m_player;
    Screen *m_screen;
    QAbstractButton *m_button;
    QSlider *m_slider;
    QLabel *m_time;
    MediaPlayer::Facts m_facts;
    MediaPlayer::State m_state;
    bool m_isReady = false;
    Ticket m_limit; // Runs until the file is open.
    Ticket m_seek;
    Ticket m_room;
};
