#include "PictureWorld.h"

#include "platform/linux/pictures/PlayerProcess.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace {

/// A player of one file, and what it told.
struct PlayerWorld : PictureWorld
{
    static QString program() { return QStringLiteral(VANTLE_BINARY_DIR "/bin/vantle-player"); }

    explicit PlayerWorld(const QByteArray &path, const QString &of = program())
        : player(of, FilePath::toUrl(path), lanes, queue)
    {
        player.onOpened = [this](const MediaPlayer::Facts &told) { facts = told; };
        player.onPicture = [this](const QImage &told) { picture = told; };
        player.onState = [this](const MediaPlayer::State &told) {
            state = told;
            hasPlayed = hasPlayed || told.isPlaying;
        };
        player.onFailed = [this] { failed = true; };
    }

    bool isRed() const { return !picture.isNull() && picture.pixelColor(5, 5).red() > 150; }
    bool isBlue() const { return !picture.isNull() && picture.pixelColor(5, 5).blue() > 150; }

    std::optional<MediaPlayer::Facts> facts;
    QImage picture;
    MediaPlayer::State state;
    bool failed = false;
    bool hasPlayed = false; // A busy machine may skip any single picture of a film.
    PlayerProcess player;
};

class PlayerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QFileInfo(PlayerWorld::program()).isExecutable())
            GTEST_SKIP() << "built without Qt Multimedia";
    }
    PictureWorld files;
};

}

/// The first second of the film is red, the second one blue.
TEST_F(PlayerTest, AFilmWaitsPlaysToItsEndAndPlaysAgain)
{
    PlayerWorld w(PictureWorld::sample("film.avi"));
    w.player.setRoom({ 80, 80 });
    ASSERT_TRUE(w.waitFor([&w] { return w.isRed() && w.state.duration > 0; }));
    EXPECT_TRUE(w.facts && w.facts->hasPicture);
    EXPECT_EQ(w.facts->pixels, QSize(160, 120));
    EXPECT_EQ(w.picture.size(), QSize(80, 60));
    EXPECT_NEAR(w.state.duration, 2, 0.2);
    EXPECT_FALSE(w.state.isPlaying);

    w.player.setRoom({ 400, 400 });
    EXPECT_TRUE(w.waitFor([&w] { return w.picture.width() == 160; })) << "never enlarged";
    w.player.play();
    EXPECT_TRUE(w.waitFor([&w] { return w.isBlue() && w.hasPlayed; }));
    EXPECT_TRUE(w.waitFor([&w] { return !w.state.isPlaying; }));
    EXPECT_EQ(w.state.position, w.state.duration);
    w.hasPlayed = false;
    w.player.play();
    EXPECT_TRUE(w.waitFor([&w] { return w.hasPlayed; }));
    w.player.pause();
    EXPECT_TRUE(w.waitFor([&w] { return !w.state.isPlaying; }));
    w.player.seek(1.5);
    EXPECT_TRUE(w.waitFor([&w] { return w.isBlue() && w.state.position > 1.2; }));
    EXPECT_FALSE(w.failed);
}

TEST_F(PlayerTest, ASoundHasNoPicture)
{
    QByteArray wave(
        "RIFF\x24\x3f\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x08\0data"
        "\0\x3f\0\0",
        44);
    wave.append(QByteArray(0x3f00, '\x80')); // Two seconds of silence.
    PlayerWorld w(files.write("sound.wav", wave));
    ASSERT_TRUE(w.waitFor([&w] { return w.facts && w.state.duration > 0; }));
    EXPECT_FALSE(w.facts->hasPicture);
    EXPECT_NEAR(w.state.duration, 2, 0.2);
    EXPECT_FALSE(w.state.isPlaying);
    EXPECT_FALSE(w.failed);
}

TEST_F(PlayerTest, WhatCannotBePlayedFails)
{
    const QByteArray pipe = files.path("pipe.mp4");
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
    const std::pair<QByteArray, QString> cases[] = {
        { files.write("broken.mp4",
                      QByteArray("\0\0\0\x18"
                                 "ftypmp42",
                                 12)),
          PlayerWorld::program() },
        { files.write("list.mp4", "#EXTM3U\n#EXTINF:1,\nhttp://127.0.0.1:9/a.ts\n"),
          PlayerWorld::program() },
        { files.path("missing.mp4"), PlayerWorld::program() },
        { pipe, PlayerWorld::program() },
        { PictureWorld::sample("film.avi"), QStringLiteral("/nonexistent/vantle-player") },
        { PictureWorld::sample("film.avi"), QStringLiteral("/bin/false") },
    };
    for (const auto &[path, program] : cases) {
        SCOPED_TRACE(path.toStdString() + " by " + program.toStdString());
        PlayerWorld w(path, program);
        EXPECT_TRUE(w.waitFor([&w] { return w.failed; }));
        EXPECT_TRUE(w.picture.isNull());
    }
}
