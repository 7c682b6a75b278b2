#include "platform/linux/JsonPreferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString keyA = QStringLiteral("a");

struct World
{
    World() { QDir(config.path()).mkdir(QStringLiteral("Vantle")); }
    QString path(const char *name) const { return config.filePath(QLatin1String(name)); }
    void write(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("missing");
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
    ASSERT_TRUE(QDir(w.config.path()).rmdir(QStringLiteral("Vantle")));
    auto preferences = w.start();
    EXPECT_FALSE(QFileInfo::exists(w.path("Vantle")));

    preferences.setValue(keyA, 1);
    struct stat status
    {
    };
    ASSERT_EQ(::stat(qPrintable(w.path("Vantle/preferences.json")), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(qPrintable(w.path("Vantle")), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
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
    for (const bool folder : { true, false }) {
        SCOPED_TRACE(folder);
        const World w;
        const QByteArray path = w.path("Vantle/preferences.json").toUtf8();
        ASSERT_EQ(folder ? ::mkdir(path, 0700) : ::mkfifo(path, 0600), 0);
        w.start().setValue(keyA, 1);
        EXPECT_EQ(w.start().value(keyA).toInt(), 1);
        EXPECT_TRUE(QFileInfo::exists(w.path("Vantle/preferences-broken.json")));
    }
}

TEST(JsonPreferencesTest, OfALinkTheTargetIsReplacedOrSetAside)
{
    const World w;
    QDir(w.config.path()).mkdir(QStringLiteral("dotfiles"));
    ASSERT_EQ(::symlink("../dotfiles/vantle.json", qPrintable(w.path("Vantle/preferences.json"))),
              0);
    w.write("dotfiles/vantle.json", "{\"a\":1}");
    auto preferences = w.start();
    EXPECT_EQ(preferences.value(keyA).toInt(), 1);
    preferences.setValue(keyA, 2);
    EXPECT_TRUE(w.read("dotfiles/vantle.json").contains("2"));

    w.write("dotfiles/vantle.json", "oops");
    w.start().setValue(keyA, 3);
    EXPECT_EQ(w.read("dotfiles/preferences-broken.json"), "oops");
    EXPECT_TRUE(w.read("dotfiles/vantle.json").contains("3"));
    EXPECT_TRUE(QFileInfo(w.path("Vantle/preferences.json")).isSymLink());
}

TEST(JsonPreferencesTest, AFailedWriteHoldsForThisRunAndTheNextChangeTriesAgain)
{
    const World w;
    ASSERT_TRUE(QDir(w.config.path()).rmdir(QStringLiteral("Vantle")));
    w.write("Vantle", "a file where the folder should be");
    auto preferences = w.start();
    preferences.setValue(keyA, 1);
    EXPECT_EQ(preferences.value(keyA).toInt(), 1);

    ASSERT_TRUE(QFile::remove(w.path("Vantle")));
    preferences.setValue(keyA, 1);
    EXPECT_EQ(w.start().value(keyA).toInt(), 1);
}

TEST(JsonPreferencesTest, ThePredecessorsPreferencesAreReadIfTheyAreAnObject)
{
    const World w;
    EXPECT_FALSE(JsonPreferences::predecessor(w.config.path().toUtf8()));
    w.write("me.ondra.app.json", "[]");
    EXPECT_FALSE(JsonPreferences::predecessor(w.config.path().toUtf8()));
    w.write("me.ondra.app.json", "{\"dockToEdge\":false}");
    const auto object = JsonPreferences::predecessor(w.config.path().toUtf8());
    ASSERT_TRUE(object);
    EXPECT_EQ(object->value(QStringLiteral("dockToEdge")), QJsonValue(false));
}
