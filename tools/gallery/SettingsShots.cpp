#include "SettingsShots.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/Autostart.h"
#include "platform/Icons.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "views/SettingsView.h"
#include "views/settings/ApplicationPicker.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>

namespace {

class NoAutostart final : public Autostart
{
public:
    bool enabled() const override { return false; }
    std::optional<QString> setEnabled(bool) override { return std::nullopt; }
};

class FolderIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &) override { return QIcon::fromTheme(QStringLiteral("folder")); }
    QIcon forWebLocation() override { return {}; }
};

QList<InstalledApplication> applications()
{
    QList<InstalledApplication> result;
    for (const auto &name : { QStringLiteral("Calculator"), QStringLiteral("Files"),
                              QStringLiteral("Image Viewer"), QStringLiteral("Text Editor") })
        result.append({ name, name, QStringLiteral("system-file-manager"), true });
    return result;
}

void save(QWidget &widget, const QString &folder, const QString &name)
{
    for (const int ratio : { 1, 2 }) {
        QImage image(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        widget.render(&image);
        image.save(QStringLiteral("%1/%2@%3x.png").arg(folder, name, QString::number(ratio)));
    }
}

struct Form
{
    explicit Form(const QString &resources)
        : texts(Localizer::findBundle({ resources }).value_or(resources), {})
        , settings(preferences, autostart, texts, {})
        , view(settings, texts,
               SettingsDesktop { queue, workers, sounds, icons, resources,
                                 [](const QKeyEvent &) { return KeyEvent {}; }, applications,
                                 [] { return QByteArray("/home/ada/Pictures/Screenshots"); } })
    {
        settings.ignoredApps.set({ QStringLiteral("Files"), QStringLiteral("org.example.Gone") });
        settings.watchedFolders.set(
            { QStringLiteral("/home/ada/Scans"),
              QStringLiteral("/home/ada/Documents/Incoming/From the office in Lisbon/2023") });
        view.setAttribute(Qt::WA_DontShowOnScreen);
        view.resize(view.sizeHint());
        view.show();
        queue.settle();
        QApplication::processEvents();
    }

    FakePreferences preferences;
    NoAutostart autostart;
    FakeSounds sounds;
    FolderIcons icons;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    Localizer texts;
    AppSettings settings;
    SettingsView view;
};

}

void shootSettings(const QString &resources, const QString &folder, const QString &scheme)
{
    for (const auto direction : { Qt::LeftToRight, Qt::RightToLeft }) {
        QApplication::setLayoutDirection(direction);
        const QString side = direction == Qt::RightToLeft ? QStringLiteral("-rtl") : QString();
        Form form(resources);
        save(form.view, folder, QStringLiteral("settings-top%1-%2").arg(side, scheme));
        auto *bar = form.view.verticalScrollBar();
        bar->setValue(bar->maximum());
        QApplication::processEvents();
        save(form.view, folder, QStringLiteral("settings-bottom%1-%2").arg(side, scheme));
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }
    QFont large = QApplication::font();
    const QFont usual = large;
    large.setPointSizeF(large.pointSizeF() * 2);
    QApplication::setFont(large);
    Form form(resources);
    form.settings.shakeToSummon.set(false);
    save(form.view, folder, QStringLiteral("settings-large-%1").arg(scheme));
    QApplication::setFont(usual);
    ApplicationPicker picker(applications(), form.texts, &form.view);
    picker.findChild<QLineEdit *>()->setText(QStringLiteral("e"));
    save(picker, folder, QStringLiteral("settings-applications-%1").arg(scheme));
}
