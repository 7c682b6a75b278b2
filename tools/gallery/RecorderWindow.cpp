#include "RecorderWindow.h"

#include "platform/Modifiers.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <QDir>
#include <QFormLayout>
#include <QKeyEvent>
#include <QPushButton>

RecorderWindow::RecorderWindow(const QString &resources)
    : m_texts(Localizer::findBundle({ resources }).value_or(resources), {})
    , m_settings(m_preferences, m_autostart, m_texts, {})
    , m_recorder(new HotKeyRecorder(m_settings, m_texts, m_sounds, X11Keyboard::keyEvent))
{
    auto *form = new QFormLayout(this);
    form->addRow(QStringLiteral("Shortcut:"), m_recorder);
    setWindowTitle(QStringLiteral("Hot key"));
    resize(360, sizeHint().height());
}

void RecorderWindow::shoot(const QString &folder, const QString &scheme)
{
    setAttribute(Qt::WA_DontShowOnScreen);
    show();
    const auto save = [&](const char *state) {
        for (const int ratio : { 1, 2 }) {
            QImage image(size() * ratio, QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(ratio);
            render(&image);
            image.save(QStringLiteral("%1/recorder-%2-%3@%4x.png")
                           .arg(folder, QLatin1String(state), scheme, QString::number(ratio)));
        }
    };
    auto *field = m_recorder->findChild<QPushButton *>();
    save("default");
    field->click();
    save("recording");
    field->click();
    m_settings.setHotKey(49, HotKeyModifier::Control | HotKeyModifier::Option,
                         QStringLiteral("⌃⌥Space"));
    save("another");
}
