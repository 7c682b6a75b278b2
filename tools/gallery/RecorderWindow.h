#pragma once

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/Autostart.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "views/HotKeyRecorder.h"

/// A window with the hot key's recorder in it, as a form would show it.
class RecorderWindow final : public QWidget
{
public:
    explicit RecorderWindow(const QString &resources);

    /// Writes a picture of each of its states at one and two pixels a point;
    /// scheme is part of their names.
    void shoot(const QString &folder, const QString &scheme);

private:
    class NoAutostart final : public Autostart
    {
    public:
        bool enabled() const override { return false; }
        std::optional<QString> setEnabled(bool) override { return std::nullopt; }
    };

    FakePreferences m_preferences;
    NoAutostart m_autostart;
    FakeSounds m_sounds;
    Localizer m_texts;
    AppSettings m_settings;
    HotKeyRecorder *m_recorder;
};
