#include "WelcomeShots.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/Autostart.h"
#include "platform/Icons.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "store/ShelfStore.h"
#include "views/AboutView.h"
#include "views/Look.h"
#include "views/onboarding/WelcomeView.h"

#include <QApplication>
#include <QTemporaryDir>

namespace {

class NoAutostart final : public Autostart
{
public:
    bool enabled() const override { return false; }
    std::optional<QString> setEnabled(bool) override { return std::nullopt; }
};

class TextIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &) override
    {
        return QIcon::fromTheme(QStringLiteral("text-x-generic"));
    }
    QIcon forWebLocation() override { return {}; }
};

void save(QWidget &widget, const QString &folder, const QString &name)
{
    for (const int ratio : { 1, 2 }) {
        QImage image(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        widget.render(&image);
        image.save(QStringLiteral("%1/%2@%3x.png").arg(folder, name, QString::number(ratio)));
    }
}

struct Tour
{
    Tour(const QString &resources, const QString &language)
        : texts(Localizer::findBundle({ resources }).value_or(resources), {})
        , settings(preferences, autostart, texts, {})
        , store(AppPaths(Directories { {}, home.path().toUtf8(), {}, {}, {}, {}, {} }), queue,
                workers, bookmarks, sounds, texts)
    {
        texts.setOverride(language);
        view = std::make_unique<WelcomeView>(settings, store, texts, store.makeDemoFile(),
                                             WelcomeDesktop { queue, session, icons, resources });
        view->setMotion(Motion::Reduced);
        view->setAttribute(Qt::WA_DontShowOnScreen);
        view->resize(view->sizeHint());
        view->show();
        QApplication::processEvents();
    }

    void shoot(const QString &folder, const QString &name)
    {
        for (int page = 0; page < WelcomeView::count; ++page) {
            view->go(page);
            save(*view, folder, name.arg(page + 1));
        }
    }

    QTemporaryDir home;
    FakePreferences preferences;
    NoAutostart autostart;
    FakeBookmarks bookmarks;
    FakeSounds sounds;
    FakeDragSession session;
    TextIcons icons;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    Localizer texts;
    AppSettings settings;
    ShelfStore store;
    std::unique_ptr<WelcomeView> view;
};

}

void shootWelcome(const QString &resources, const QString &folder, const QString &scheme)
{
    for (const char *code : { "en", "de", "ja" }) {
        const QString language = QLatin1String(code);
        Tour tour(resources, language);
        tour.shoot(folder, QStringLiteral("welcome-%1-") + language + u'-' + scheme);
        if (language != QLatin1String("en"))
            continue;
        tour.store.add({ tour.store.makeDemoFile() });
        save(*tour.view, folder, QStringLiteral("welcome-done-") + scheme);
    }
    QApplication::setLayoutDirection(Qt::RightToLeft);
    Tour(resources, QStringLiteral("en")).shoot(folder, QStringLiteral("welcome-%1-rtl-") + scheme);
    QApplication::setLayoutDirection(Qt::LeftToRight);
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(large.pointSizeF() * 2);
    QApplication::setFont(large);
    Look::textScale = 2;
    Tour(resources, QStringLiteral("de"))
        .shoot(folder, QStringLiteral("welcome-%1-large-") + scheme);
    QApplication::setFont(usual);
    Look::textScale = 1;
}

void shootAbout(const QString &resources, const QString &folder, const QString &scheme)
{
    for (const char *code : { "en", "de", "ja" }) {
        Localizer texts(Localizer::findBundle({ resources }).value_or(resources), {});
        texts.setOverride(QLatin1String(code));
        AboutView view(texts, resources, QStringLiteral("0.1.0 (1)"));
        view.setAttribute(Qt::WA_DontShowOnScreen);
        view.show();
        QApplication::processEvents();
        save(view, folder, QStringLiteral("about-%1-%2").arg(QLatin1String(code), scheme));
    }
}
