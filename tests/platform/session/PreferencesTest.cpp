#include "platform/linux/session/JsonPreferences.h"

#include "base/NativeFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString keyA = QStringLiteral("a");

struct World
{
    World() { NativeFile::makeFolder(path("Vantle")); }
    QByteArray path(const QByteArray &name) const { return config.path().toUtf8() + '/' + name; }
    void write(const QByteArray &name, const QByteArray &bytes) const
    {
        NativeFile::remove(path(name));
        ASSERT_TRUE(NativeFile::writeNew(path(name), bytes));
    }
    QByteArray read(const QByteArray &name) const
    {
        return NativeFile::read(path(name)).bytes.value_or(QByteArrayLiteral("missing"));
    }
    mode_t mode(const QByteArray &name) const
    {
        struct stat status = {};
        return ::lstat(path(name), &status) == 0 ? status.st_mode & 0777 : 0;
    }
    JsonPreferences start() const { return JsonPreferences(config.path().toUtf8()); }
    QTemporaryDir config;
};

}

TEST(JsonPreferencesTest, ValuesAreKeptWithTheirTypesAndUnknownKeysStay)
{
    const World w;
    w.write("Vantle/preferences.json", R"({"later":{"deep":[1,null]},"big":9007199254740993})");
    {
        auto preferences = w.start();
        EXPECT_TRUE(preferences.value(keyA).isUndefined());
        preferences.setValue(keyA, false);
        preferences.setValue(QStringLiteral("ö"), QStringLiteral("Ä\n"));
    }
    auto preferences = w.start();
    EXPECT_EQ(preferences.value(keyA), QJsonValue(false));
    EXPECT_EQ(preferences.value(QStringLiteral("ö")).toString(), QStringLiteral("Ä\n"));
    EXPECT_EQ(preferences.value(QStringLiteral("later")).toObject().size(), 1);
    EXPECT_EQ(preferences.value(QStringLiteral("big")).toInteger(), 9007199254740993);
}

TEST(JsonPreferencesTest, NothingIsWrittenBeforeTheFirstChangeAndThenForTheUserAlone)
{
    const World w;
    NativeFile::remove(w.path("Vantle"));
    auto preferences = w.start();
    EXPECT_EQ(w.mode("Vantle"), 0U);
    preferences.setValue(keyA, 1);
    EXPECT_EQ(w.mode("Vantle/preferences.json"), 0600U);
    EXPECT_EQ(w.mode("Vantle"), 0700U);
}

TEST(JsonPreferencesTest, WhatCannotBeReadCountsAsEmptyAndIsSetAside)
{
    for (const char *bytes : { "", "{\"a\":tru", "[1]", "\xff\xfe{}" }) {
        SCOPED_TRACE(bytes);
        const World w;
        w.write("Vantle/preferences.json", bytes);
        w.write("Vantle/preferences-broken.json", "an older one");
        auto preferences = w.start();
        EXPECT_TRUE(preferences.value(keyA).isUndefined());
        EXPECT_EQ(w.read("Vantle/preferences.json"), bytes);

        preferences.setValue(keyA, 1);
        preferences.setValue(keyA, 2);
        EXPECT_EQ(w.read("Vantle/preferences-broken.json"), "an older one");
        EXPECT_EQ(w.read("Vantle/preferences-broken 2.json"), bytes);
        EXPECT_EQ(w.read("Vantle/preferences-broken 3.json"), "missing");
        EXPECT_EQ(w.start().value(keyA).toInt(), 2);
    }
}

TEST(JsonPreferencesTest, AFolderOrPipeInItsPlaceIsSetAsideWithoutWaiting)
{
    for (const auto make : { ::mkdir, ::mkfifo }) {
        const World w;
        ASSERT_EQ(make(w.path("Vantle/preferences.json"), 0700), 0);
        w.start().setValue(keyA, 1);
        EXPECT_EQ(w.start().value(keyA).toInt(), 1);
        EXPECT_EQ(w.mode("Vantle/preferences-broken.json"), 0700U);
    }
}

TEST(JsonPreferencesTest, OfALinkTheTargetIsReplacedOrSetAside)
{
    const World w;
    w.write("dotfiles/vantle.json", "{\"a\":1}");
    ASSERT_EQ(::symlink("../dotfiles/vantle.json", w.path("Vantle/preferences.json")), 0);
    auto preferences = w.start();
    EXPECT_EQ(preferences.value(keyA).toInt(), 1);
    preferences.setValue(keyA, 2);
    EXPECT_TRUE(w.read("dotfiles/vantle.json").contains("2"));

    w.write("dotfiles/vantle.json", "oops");
    w.start().setValue(keyA, 3);
    EXPECT_EQ(w.read("dotfiles/preferences-broken.json"), "oops");
    EXPECT_TRUE(w.read("dotfiles/vantle.json").contains("3"));
    EXPECT_EQ(w.mode("Vantle/preferences.json"), 0777U) << "still a link";
}

TEST(JsonPreferencesTest, AFailedWriteHoldsForThisRunAndTheNextChangeTriesAgain)
{
    const World w;
    w.write("Vantle", "a file where the folder should be");
    auto preferences = w.start();
    preferences.setValue(keyA, 1);
    EXPECT_EQ(preferences.value(keyA).toInt(), 1);

    NativeFile::remove(w.path("Vantle"));
    preferences.setValue(keyA, 1);
    EXPECT_EQ(w.start().value(keyA).toInt(), 1);
}

TEST(JsonPreferencesTest, ThePredecessorsPreferencesAreReadIfTheyAreAnObject)
{
    const World w;
    const auto found = [&] { return JsonPreferences::predecessor(w.config.path().toUtf8()); };
    EXPECT_FALSE(found());
    w.write("me.ondra.app.json", "[]");
    EXPECT_FALSE(found());
    w.write("me.ondra.app.json", "{\"dockToEdge\":false}");
    ASSERT_TRUE(found());
    EXPECT_EQ(found()->value(QStringLiteral("dockToEdge")), QJsonValue(false));
}
