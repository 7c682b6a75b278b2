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
        return u"the session refuses"_qs;
    }
    bool registered = false;
    std::vector<bool> asked;
};

/// A store of preferences that outlives the settings, as over restarts.
struct World
{
    AppSettings start() { return { preferences, autostart, texts, "/home/anna/Downloads" }; }

    FakePreferences preferences;
    StubbornAutostart autostart;
    Localizer texts { u"/nonexistent"_qs, { u"en"_qs } };
};

}

TEST(AppSettingsTest, EverySettingHasItsDefaultUntilItIsSetAndThenKeepsItsValue)
{
    const auto expect = [](auto AppSettings::*property, const auto &byDefault, const auto &other) {
        World w;
        {
            auto settings = w.start();
            EXPECT_EQ((settings.*property).value(), byDefault);
            EXPECT_EQ(w.preferences.writes, 0);
            (settings.*property).set(other);
            EXPECT_EQ(w.preferences.writes, 1);
        }
        EXPECT_EQ((w.start().*property).value(), other);
    };
    const QStringList paths { u"/a b"_qs, u"/ö"_qs };
    expect(&AppSettings::shakeToSummon, true, false);
    expect(&AppSettings::cornerToSummon, true, false);
    expect(&AppSettings::saveFolderPath, u"/home/anna/Downloads"_qs, u"/elsewhere"_qs);
    expect(&AppSettings::summonPosition, u"topRight"_qs, u"a word of a later version"_qs);
    expect(&AppSettings::dockToEdge, true, false);
    expect(&AppSettings::autoCleanup, u"off"_qs, u"1d"_qs);
    expect(&AppSettings::removeAfterDragOut, false, true);
    expect(&AppSettings::dragModifier, u"none"_qs, u"shift"_qs);
    expect(&AppSettings::ignoredApps, QStringList(), paths);
    expect(&AppSettings::watchedFolders, QStringList(), paths);
    expect(&AppSettings::doubleClickAction, u"quicklook"_qs, u"open"_qs);
    expect(&AppSettings::publicLinks, true, false);
    expect(&AppSettings::deleteCloudOnRemove, false, true);
    expect(&AppSettings::onboarded, false, true);
}

TEST(AppSettingsTest, AnotherTypeCountsAsAbsent)
{
    World w;
    w.preferences.object = {
        { u"shakeToSummon"_qs, 0 },
        { u"dockToEdge"_qs, u"no"_qs },
        { u"hotKeyCode"_qs, 4294967298.0 }, // Beyond an int, where it would be 2.
        { u"hotKeyModifiers"_qs, 2304.5 },
        { u"autoCleanup"_qs, true },
        { u"ignoredApps"_qs, QJsonArray { u"one"_qs, 2 } },
        { u"onboarded"_qs, QJsonValue::Null },
    };
    // Nor is a path a setting that is no text.
    const AppSettings settings(w.preferences, w.autostart, w.texts, "/home/\xff/Downloads");
    EXPECT_EQ(settings.saveFolderPath.value(), QString());
    EXPECT_TRUE(settings.shakeToSummon.value());
    EXPECT_TRUE(settings.dockToEdge.value());
    EXPECT_TRUE(settings.isDefaultHotKey());
    EXPECT_EQ(settings.autoCleanup.value(), u"off"_qs);
    EXPECT_TRUE(settings.ignoredApps.value().isEmpty());
    EXPECT_FALSE(settings.onboarded.value());
}

TEST(AppSettingsTest, TheHotKeysLabelIsAnnouncedWhenAllElseIsStored)
{
    World w;
    const QString label = u"⌃⌥Ä"_qs; // Known only while the key is being pressed.
    {
        auto settings = w.start();
        int announced = 0;
        const auto ticket = settings.hotKeyLabel.subscribe(
            [&](const QString &next) {
                ++announced;
                EXPECT_EQ(next, label);
                EXPECT_EQ(settings.hotKeyCode.value(), 39);
                EXPECT_EQ(settings.hotKeyModifiers.value(), 0x1800);
                EXPECT_EQ(w.preferences.object.value(u"hotKeyLabel"_qs), label);
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
    EXPECT_EQ(settings.hotKeyLabel.value(), u"⌥⌘S"_qs);
    EXPECT_TRUE(w.start().isDefaultHotKey());
}

TEST(AppSettingsTest, TheLanguageReachesTheTextsAtOnceAndAtTheNextStart)
{
    World w;
    {
        auto settings = w.start();
        EXPECT_EQ(settings.language.value(), u"system"_qs);
        QString whenHeard;
        const auto ticket = settings.language.subscribe(
            [&](const QString &) { whenHeard = w.texts.currentCode(); }, Deliver::ChangesOnly);
        settings.language.set(u"fr"_qs);
        EXPECT_EQ(whenHeard, u"fr"_qs);
    }
    w.texts.setOverride(u"system"_qs);
    const auto settings = w.start();
    EXPECT_EQ(w.texts.currentCode(), u"fr"_qs);
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
    w.autostart.registered = true;
    EXPECT_TRUE(w.start().launchAtLogin.value());
}
