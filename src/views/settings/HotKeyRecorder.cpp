#include "views/settings/HotKeyRecorder.h"

#include "app/settings/AppSettings.h"
#include "app/settings/HotKeyNames.h"
#include "app/settings/Localizer.h"
#include "app/settings/ShortcutText.h"
#include "panel/HotKeyCenter.h"
#include "platform/Sounds.h"
#include "views/look/AccessibleRole.h"
#include "views/look/TextButton.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace {

// Virtual key codes.
constexpr int keyNone = -1;
constexpr int keyEscape = 53;
constexpr int firstModifierKey = 54; // Both keys of Ctrl, Shift, Alt and Super, and Caps Lock.
constexpr int lastModifierKey = 62;

// Shift alone makes no hot key: its combinations are what people type.
constexpr Modifiers needed
    = EventModifier::Control | EventModifier::Option | EventModifier::Command;

}

HotKeyRecorder::HotKeyRecorder(AppSettings &settings, const Localizer &texts, Sounds &sounds,
                               KeyReader readKey, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_texts(texts)
    , m_sounds(sounds)
    , m_readKey(std::move(readKey))
    , m_field(new QPushButton(this))
    , m_reset(new TextButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_field);
    layout->addWidget(m_reset);
    layout->addStretch();
    m_field->setCheckable(true);
    // Its state shows that it listens; nothing is switched on or off.
    setAccessibleRole(*m_field, QAccessible::Button, [this] { m_field->click(); });
    for (auto *button : { m_field, m_reset })
        button->setAutoDefault(false); // Return in a dialog is not for them.
    QObject::connect(m_field, &QPushButton::clicked, this, [this](bool down) {
        if (down)
            start();
        else
            stop();
    });
    QObject::connect(m_reset, &QPushButton::clicked, this, [this] { m_settings.resetHotKey(); });
    // The label is announced last: all else of the hot key is stored by then.
    m_subscriptions.push_back(
        settings.hotKeyLabel.subscribe([this](const QString &label) { refresh(label); }));
    m_subscriptions.push_back(settings.language.subscribe(
        [this](const QString &) { refresh(m_settings.hotKeyLabel.value()); },
        Deliver::ChangesOnly));
}

void HotKeyRecorder::start()
{
    m_recording = true;
    refresh(m_settings.hotKeyLabel.value());
    grabKeyboard();
}

void HotKeyRecorder::stop()
{
    if (!std::exchange(m_recording, false))
        return;
    releaseKeyboard();
    refresh(m_settings.hotKeyLabel.value());
}

bool HotKeyRecorder::event(QEvent *event)
{
    if (!m_recording)
        return QWidget::event(event);
    switch (event->type()) {
    case QEvent::ShortcutOverride: // Makes a key press of what would be a shortcut.
        event->accept();
        return true;
    case QEvent::KeyPress: {
        const auto &press = static_cast<const QKeyEvent &>(*event);
        if (!press.isAutoRepeat())
            record(m_readKey(press));
        return true;
    }
    case QEvent::KeyRelease:
        return true;
    case QEvent::WindowDeactivate: // Whoever is in another window types there.
        stop();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void HotKeyRecorder::hideEvent(QHideEvent *event)
{
    stop();
    QWidget::hideEvent(event);
}

void HotKeyRecorder::record(const KeyEvent &key)
{
    if (key.keyCode >= firstModifierKey && key.keyCode <= lastModifierKey)
        return;
    if (key.keyCode == keyEscape) {
        stop();
        return;
    }
    if (key.keyCode == keyNone || (key.modifiers & needed) == 0) {
        m_sounds.play(Sound::Beep);
        return;
    }
    const int modifiers = HotKeyCenter::carbonModifiers(key.modifiers & EventModifier::All);
    m_settings.setHotKey(key.keyCode, modifiers,
                         HotKeyNames::label(key.keyCode, modifiers, key.characters));
    stop();
}

void HotKeyRecorder::refresh(const QString &label)
{
    const QString prompt = m_texts.text(QStringLiteral("hotkey_press"));
    m_field->setChecked(m_recording);
    m_field->setText(m_recording ? prompt : shortcutText(label, m_texts));
    // What changes beside it must not move with the texts.
    const int border = 2 * fontMetrics().averageCharWidth() + 12;
    const int widest = std::max(fontMetrics().horizontalAdvance(prompt),
                                fontMetrics().horizontalAdvance(m_field->text()));
    m_field->setMinimumWidth(widest + border);
    m_reset->setText(m_texts.text(QStringLiteral("hotkey_reset")));
    m_reset->setVisible(!m_settings.isDefaultHotKey());
}
