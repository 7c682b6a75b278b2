#include "app/settings/AppSettings.h"

#include "app/settings/Localizer.h"
#include "platform/Autostart.h"
#include "platform/fake/FakePreferences.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace {

class StubbornAutostart final : public Autostart
{
public:
    bool enabled() const override { return registered; }
    std::optional<QString> setEnabled(bool enabled) override
    {
        asked.push_back(enabled);
        return QStringLiteral("the session refuses");
    }
    bool registered = false;
    std::vector<bool> asked;
};

/// A store of preferences that outlives the settings, as over restarts.
struct World
{
    AppSettings start() { return AppSettings(preferences, autostart, texts, "/home/anna/Downloads"); }

    FakePreferences preferences;
    StubbornAutostart autostart;
    Localizer texts { QStringLiteral("/nonexistent"), { QStringLiteral("en") } };
};

}

TEST(AppSettingsTest, AFreshStoreGivesTheDefaultsAndStaysEmpty)
{
    World w;
    const auto settings = w.start();
    EXPECT_TRUE(settings.shakeToSummon.value());
    EXPECT_TRUE(settings.cornerToSummon.value());
    EXPECT_EQ(settings.saveFolderPath.value(), QStringLiteral("/home/anna/Downloads"));
    EXPECT_EQ(settings.language.value(), QStringLiteral("system"));
    EXPECT_FALSE(settings.launchAtLogin.value());
    EXPECT_EQ(settings.summonPosition.value(), QStringLiteral("topRight"));
    EXPECT_TRUE(settings.dockToEdge.value());
    EXPECT_EQ(settings.autoCleanup.value(), QStringLiteral("off"));
    EXPECT_FALSE(settings.removeAfterDragOut.value());
    EXPECT_EQ(settings.dragModifier.value(), QStringLiteral("none"));
    EXPECT_TRUE(settings.ignoredApps.value().isEmpty());
    EXPECT_TRUE(settings.watchedFolders.value().isEmpty());
    EXPECT_EQ(settings.doubleClickAction.value(), QStringLiteral("quicklook"));
    EXPECT_TRUE(settings.publicLinks.value());
    EXPECT_FALSE(settings.deleteCloudOnRemove.value());
    EXPECT_EQ(settings.hotKeyLabel.value(), QStringLiteral("⌥⌘S"));
    EXPECT_TRUE(settings.isDefaultHotKey());
    EXPECT_FALSE(settings.onboarded.value());
    EXPECT_EQ(w.preferences.writes, 0);
}

TEST(AppSettingsTest, WhatIsSetIsKeptOverARestart)
{
    World w;
    const QStringList folders { QStringLiteral("/a b"), QStringLiteral("/ö") };
    {
        auto settings = w.start();
        settings.shakeToSummon.set(false);
        settings.cornerToSummon.set(false);
        settings.saveFolderPath.set(QStringLiteral("/elsewhere"));
        settings.summonPosition.set(QStringLiteral("a word of a later version"));
        settings.dockToEdge.set(false);
        settings.autoCleanup.set(QStringLiteral("1d"));
        settings.removeAfterDragOut.set(true);
        settings.dragModifier.set(QStringLiteral("shift"));
        settings.ignoredApps.set({ QStringLiteral("org.gnome.Nautilus") });
        settings.watchedFolders.set(folders);
        settings.doubleClickAction.set(QStringLiteral("open"));
        settings.publicLinks.set(false);
        settings.deleteCloudOnRemove.set(true);
        settings.onboarded.set(true);
        EXPECT_EQ(w.preferences.writes, 14);
    }
    const auto settings = w.start();
    EXPECT_FALSE(settings.shakeToSummon.value());
    EXPECT_FALSE(settings.cornerToSummon.value());
    EXPECT_EQ(settings.saveFolderPath.value(), QStringLiteral("/elsewhere"));
    EXPECT_EQ(settings.summonPosition.value(), QStringLiteral("a word of a later version"));
    EXPECT_FALSE(settings.dockToEdge.value());
    EXPECT_EQ(settings.autoCleanup.value(), QStringLiteral("1d"));
    EXPECT_TRUE(settings.removeAfterDragOut.value());
    EXPECT_EQ(settings.dragModifier.value(), QStringLiteral("shift"));
    EXPECT_EQ(settings.ignoredApps.value(), QStringList { QStringLiteral("org.gnome.Nautilus") });
    EXPECT_EQ(settings.watchedFolders.value(), folders);
    EXPECT_EQ(settings.doubleClickAction.value(), QStringLiteral("open"));
    EXPECT_FALSE(settings.publicLinks.value());
    EXPECT_TRUE(settings.deleteCloudOnRemove.value());
    EXPECT_TRUE(settings.onboarded.value());
}

TEST(AppSettingsTest, AnotherTypeCountsAsAbsent)
{
    World w;
    w.preferences.object = {
        { QStringLiteral("shakeToSummon"), 0 },
        { QStringLiteral("dockToEdge"), QStringLiteral("no") },
        { QStringLiteral("hotKeyCode"), QStringLiteral("17") },
        { QStringLiteral("hotKeyModifiers"), 2304.5 },
        { QStringLiteral("autoCleanup"), true },
        { QStringLiteral("ignoredApps"), QJsonArray { QStringLiteral("one"), 2 } },
        { QStringLiteral("onboarded"), QJsonValue::Null },
    };
    const auto settings = w.start();
    EXPECT_TRUE(settings.shakeToSummon.value());
    EXPECT_TRUE(settings.dockToEdge.value());
    EXPECT_TRUE(settings.isDefaultHotKey());
    EXPECT_EQ(settings.autoCleanup.value(), QStringLiteral("off"));
    EXPECT_TRUE(settings.ignoredApps.value().isEmpty());
    EXPECT_FALSE(settings.onboarded.value());

    w.preferences.object = { { QStringLiteral("hotKeyCode"), 4294967297.0 } };
    EXPECT_EQ(w.start().hotKeyCode.value(), 1);
}

TEST(AppSettingsTest, TheHotKeysLabelIsAnnouncedWhenAllElseIsStored)
{
    World w;
    const QString label = QStringLiteral("⌃⌥Ä"); // Known only while the key is being pressed.
    {
        auto settings = w.start();
        int announced = 0;
        const auto ticket = settings.hotKeyLabel.subscribe(
            [&](const QString &next) {
                ++announced;
                EXPECT_EQ(next, label);
                EXPECT_EQ(settings.hotKeyCode.value(), 39);
                EXPECT_EQ(settings.hotKeyModifiers.value(), 0x1800);
                EXPECT_EQ(w.preferences.object.value(QStringLiteral("hotKeyLabel")), label);
            },
            Deliver::ChangesOnly);
        settings.setHotKey(39, 0x1800, label);
        EXPECT_EQ(announced, 1);
        EXPECT_EQ(w.preferences.object.size(), 3);
    }
    auto settings = w.start();
    EXPECT_EQ(settings.hotKeyLabel.value(), label);
    EXPECT_FALSE(settings.isDefaultHotKey());

    settings.resetHotKey();
    EXPECT_TRUE(settings.isDefaultHotKey());
    EXPECT_EQ(settings.hotKeyLabel.value(), QStringLiteral("⌥⌘S"));
    EXPECT_TRUE(w.start().isDefaultHotKey());
}

TEST(AppSettingsTest, TheLanguageReachesTheTextsAtOnceAndAtTheNextStart)
{
    World w;
    {
        auto settings = w.start();
        EXPECT_EQ(w.texts.currentCode(), QStringLiteral("en"));
        QString whenHeard;
        const auto ticket = settings.language.subscribe(
            [&](const QString &) { whenHeard = w.texts.currentCode(); }, Deliver::ChangesOnly);
        settings.language.set(QStringLiteral("fr"));
        EXPECT_EQ(whenHeard, QStringLiteral("fr"));
    }
    w.texts.setOverride(QStringLiteral("system"));
    const auto settings = w.start();
    EXPECT_EQ(w.texts.currentCode(), QStringLiteral("fr"));
}

TEST(AppSettingsTest, LaunchingAtLoginBelongsToTheSessionAndARefusalIsOnlyLogged)
{
    World w;
    auto settings = w.start();
    testing::internal::CaptureStderr();
    settings.launchAtLogin.set(true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "LoginItem error: the session refuses\n");
    EXPECT_TRUE(settings.launchAtLogin.value());
    EXPECT_EQ(w.autostart.asked, std::vector<bool> { true });
    EXPECT_TRUE(w.preferences.object.isEmpty());

    EXPECT_FALSE(w.start().launchAtLogin.value());
    w.autostart.registered = true;
    EXPECT_TRUE(w.start().launchAtLogin.value());
}

TEST(AppSettingsTest, ADownloadsFolderThatIsNoTextIsNoDefault)
{
    World w;
    const AppSettings settings(w.preferences, w.autostart, w.texts, "/home/\xff/Downloads");
    EXPECT_EQ(settings.saveFolderPath.value(), QString());
}
