#pragma once

#include "base/Ticket.h"
#include "platform/KeyEvent.h"

#include <QWidget>

#include <functional>
#include <vector>

class AppSettings;
class Localizer;
class QKeyEvent;
class QPushButton;
class Sounds;

/// Shows the hot key, and takes a new one from the keyboard after a press on it.
/// While it records it holds the keyboard, so that combinations that belong to
/// somebody, the hot key itself too, come here and do nothing else. Main thread.
class HotKeyRecorder final : public QWidget
{
public:
    using KeyReader = std::function<KeyEvent(const QKeyEvent &)>;

    HotKeyRecorder(AppSettings &settings, const Localizer &texts, Sounds &sounds, KeyReader readKey,
                   QWidget *parent = nullptr);

protected:
    bool event(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void start();
    void stop();
    void record(const KeyEvent &key);
    void refresh(const QString &label);

    AppSettings &m_settings;
    const Localizer &m_texts;
    Sounds &m_sounds;
    KeyReader m_readKey;
    bool m_recording = false; // Before the children, whose coming is an event already.
    QPushButton *m_field; // Down while recording.
    QPushButton *m_reset;
    std::vector<Ticket> m_subscriptions;
};
