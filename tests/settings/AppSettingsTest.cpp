#include "app/settings/AppSettings.h"

#include "app/settings/Localizer.h"
#include "platform/Autostart.h"
#include "platform/fake/FakePreferences.h"

#include <QJsonArray>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class StubbornAutostart final : public Autostart
{
public:
    bool enabled() const override { return registered; }
    std::optional<QString> setEnabled(bool enabled) override
    {
        asked.push_back(enabled);
        return u"the session refuses"_s;
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
    Localizer texts { u"/nonexistent"_s, { u"en"_s } };
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
    const QStringList paths { u"/a b"_s, u"/ö"_s };
    expect(&AppSettings::shakeToSummon, true, false);
    expect(&AppSettings::cornerToSummon, true, false);
    expect(&AppSettings::saveFolderPath, u"/home/anna/Downloads"_s, u"/elsewhere"_s);
    expect(&AppSettings::summonPosition, u"topRight"_s, u"a word of a later version"_s);
    expect(&AppSettings::dockToEdge, true, false);
    expect(&AppSettings::autoCleanup, u"off"_s, u"1d"_s);
    expect(&AppSettings::removeAfterDragOut, false, true);
    expect(&AppSettings::dragModifier, u"none"_s, u"shift"_s);
    expect(&AppSettings::ignoredApps, QStringList(), paths);
    expect(&AppSettings::watchedFolders, QStringList(), paths);
    expect(&AppSettings::doubleClickAction, u"quicklook"_s, u"open"_s);
    expect(&AppSettings::publicLinks, true, false);
    expect(&AppSettings::deleteCloudOnRemove, false, true);
    expect(&AppSettings::onboarded, false, true);
}

TEST(AppSettingsTest, AnotherTypeCountsAsAbsent)
{
    World w;
    w.preferences.object = {
        { u"shakeToSummon"_s, 0 },
        { u"dockToEdge"_s, u"no"_s },
        { u"hotKeyCode"_s, 4294967298.0 }, // Beyond an int, where it would be 2.
        { u"hotKeyModifiers"_s, 2304.5 },
        { u"autoCleanup"_s, true },
        { u"ignoredApps"_s, QJsonArray { u"one"_s, 2 } },
        { u"onboarded"_s, QJsonValue::Null },
    };
    // Nor is a path a setting that is no text.
    const AppSettings settings(w.preferences, w.autostart, w.texts, "/home/\xff/Downloads");
    EXPECT_EQ(settings.saveFolderPath.value(), QString());
    EXPECT_TRUE(settings.shakeToSummon.value());
    EXPECT_TRUE(settings.dockToEdge.value());
    EXPECT_TRUE(settings.isDefaultHotKey());
    EXPECT_EQ(settings.autoCleanup.value(), u"off"_s);
    EXPECT_TRUE(settings.ignoredApps.value().isEmpty());
    EXPECT_FALSE(settings.onboarded.value());
}

TEST(AppSettingsTest, TheHotKeysLabelIsAnnouncedWhenAllElseIsStored)
{
    World w;
    const QString label = u"⌃⌥Ä"_s; // Known only while the key is being pressed.
    {
        auto settings = w.start();
        int announced = 0;
        const auto ticket = settings.hotKeyLabel.subscribe(
            [&](const QString &next) {
                ++announced;
                EXPECT_EQ(next, label);
                EXPECT_EQ(settings.hotKeyCode.value(), 39);
                EXPECT_EQ(settings.hotKeyModifiers.value(), 0x1800);
                EXPECT_EQ(w.preferences.object.value(u"hotKeyLabel"_s), label);
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
    EXPECT_EQ(settings.hotKeyLabel.value(), u"⌥⌘S"_s);
    EXPECT_TRUE(w.start().isDefaultHotKey());
}

TEST(AppSettingsTest, TheLanguageReachesTheTextsAtOnceAndAtTheNextStart)
{
    World w;
    {
        auto settings = w.start();
        EXPECT_EQ(settings.language.value(), u"system"_s);
        QString whenHeard;
        const auto ticket = settings.language.subscribe(
            [&](const QString &) { whenHeard = w.texts.currentCode(); }, Deliver::ChangesOnly);
        settings.language.set(u"fr"_s);
        EXPECT_EQ(whenHeard, u"fr"_s);
    }
    w.texts.setOverride(u"system"_s);
    const auto settings = w.start();
    EXPECT_EQ(w.texts.currentCode(), u"fr"_s);
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
