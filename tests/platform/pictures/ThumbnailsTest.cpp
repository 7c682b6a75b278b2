#include "PictureWorld.h"

#include "confined/FileTree.h"
#include "platform/linux/pictures/DesktopThumbnails.h"

#include <QCryptographicHash>
#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using Representation = ThumbnailGenerator::Representation;

/// A desktop with a cache and with a thumbnailer that is a script of the test.
class ThumbnailDesktop : public PictureWorld
{
public:
    ThumbnailDesktop()
    {
        // As an application installs it; the type of "a.ogv" and no other.
        write("data/thumbnailers/test.thumbnailer",
              "[Thumbnailer Entry]\nTryExec=sh\nExec=" + path("thumbnailer")
                  + " %s %i %o %u %%\nMimeType=video/x-none;video/ogg;\n");
        write("data/thumbnailers/absent.thumbnailer",
              "[Thumbnailer Entry]\nExec=/nowhere/program %i %o\nMimeType=video/ogg;\n");
        write("data/thumbnailers/broken.thumbnailer", "not an entry");
        // From in there nothing can be told.
        program("confined",
                "echo x >> " + path("runs") + "; printf '%s\\n' \"$@\" > " + path("arguments")
                    + "; exec " VANTLE_BINARY_DIR "/bin/vantle-confined \"$@\"");
        script("exit 1");
    }
    void program(const QByteArray &name, const QByteArray &commands)
    {
        ::chmod(write(name, "#!/bin/sh\n" + commands + "\n").constData(), 0700);
    }
    void script(const QByteArray &commands) { program("thumbnailer", commands); }
    qsizetype runs() const { return read(path("runs")).count('x'); }
    /// The input, the folder for the output, the program and its own.
    QByteArrayList arguments() const { return read(path("arguments")).split('\n'); }
    /// A "video" that its thumbnailer has but to copy.
    QByteArray video(const QByteArray &name)
    {
        QImage picture(256, 128, QImage::Format_RGB32);
        picture.fill(Qt::red);
        return write(name, read(save("picture.png", picture)));
    }

    struct Shown
    {
        int count = 0;
        Representation quality = Representation::Icon;
        QImage image;
    };
    /// What came within that time; what does not come at all is waited for as well.
    Shown generate(const QByteArray &file, double timeout = 0.4)
    {
        Shown shown;
        const Ticket ticket = thumbnails.generate(
            FilePath::toUrl(file), 32, 2,
            [&](Representation quality, const QImage &image, const QByteArray &of) {
                ++shown.count;
                shown.quality = quality;
                shown.image = image;
                EXPECT_FALSE(of.isEmpty());
            });
        waitFor([&] { return shown.count > 0; }, timeout);
        return shown;
    }

    QByteArray cached(const QByteArray &file, const QByteArray &folder) const
    {
        const QByteArray name
            = QCryptographicHash::hash(FilePath::toUrl(file).toEncoded(), QCryptographicHash::Md5);
        return path("cache/" + folder + '/' + name.toHex() + ".png");
    }
    /// Whether it is noted that the file, as it is, cannot be shown.
    bool isNoted(const QByteArray &file) const
    {
        const QStringList programs = QDir(QFile::decodeName(path("cache/fail")))
                                         .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        return programs.size() == 1
            && FilePath::exists(cached(file, "fail/" + programs[0].toLatin1()));
    }
    /// As another program of the desktop puts it there.
    QByteArray put(const QByteArray &file, const QByteArray &folder, int edge, qint64 modified)
    {
        QImage image(edge, edge / 2, QImage::Format_RGB32);
        image.fill(Qt::green);
        image.setText(QStringLiteral("Thumb::MTime"), QString::number(modified));
        const QByteArray place = cached(file, folder);
        EXPECT_TRUE(NativeFile::makeFolder(FilePath::parent(place)));
        EXPECT_TRUE(image.save(QFile::decodeName(place)));
        return place;
    }
    static struct stat status(const QByteArray &file)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(file.constData(), &status), 0);
        return status;
    }

    DesktopThumbnails thumbnails {
        { path("cache"), { path("none"), path("data") }, QFile::decodeName(path("confined")) },
        decoder,
        lanes,
        queue
    };
};

}

TEST(DesktopThumbnails, TakesWhatTheSharedCacheHasOfTheFileAsItIs)
{
    ThumbnailDesktop d;
    const QByteArray file = d.write("ein Bild & mehr.ogv", "video");
    const qint64 modified = d.status(file).st_mtim.tv_sec;
    for (const auto &[folder, edge] :
         { std::pair("normal", 128), { "large", 256 }, { "x-large", 512 }, { "xx-large", 1024 } }) {
        SCOPED_TRACE(folder);
        const QByteArray thumbnail = d.put(file, folder, edge, modified);
        const auto shown = d.generate(file, 5);
        EXPECT_EQ(shown.count, 1);
        EXPECT_EQ(shown.quality, Representation::Thumbnail);
        EXPECT_EQ(shown.image.size(), QSize(64, 32));
        EXPECT_TRUE(isNear(shown.image.pixelColor(5, 5), Qt::green));
        ::unlink(thumbnail.constData());
    }
    EXPECT_EQ(d.runs(), 0);
    const QByteArray stale = d.put(file, "large", 256, modified - 1);
    EXPECT_EQ(d.generate(stale).count, 0) << "no thumbnails of thumbnails";
    EXPECT_EQ(d.generate(d.path("vanished.ogv")).count, 0);
    EXPECT_EQ(d.generate(file).count, 0) << "the file changed since";
}

TEST(DesktopThumbnails, ADocumentsPageGoesIntoTheCache)
{
    ThumbnailDesktop d;
    const QByteArray file = d.savePdf("Übersicht 100%.pdf", { Qt::yellow });
    const auto shown = d.generate(file, 5);
    EXPECT_EQ(shown.quality, Representation::Thumbnail);
    EXPECT_EQ(shown.image.size(), QSize(32, 64));
    EXPECT_TRUE(isNear(shown.image.pixelColor(2, 2), Qt::yellow));

    const QByteArray thumbnail = d.cached(file, "large");
    const QImage kept(QFile::decodeName(thumbnail));
    EXPECT_EQ(kept.size(), QSize(128, 256));
    EXPECT_EQ(kept.text(QStringLiteral("Thumb::URI")).toLatin1(),
              FilePath::toUrl(file).toEncoded());
    EXPECT_EQ(kept.text(QStringLiteral("Thumb::MTime")).toLongLong(),
              d.status(file).st_mtim.tv_sec);
    EXPECT_EQ(d.status(thumbnail).st_mode & 0777, 0600U);
    EXPECT_EQ(d.status(FilePath::parent(thumbnail)).st_mode & 0777, 0700U);
    EXPECT_EQ(d.generate(d.write("broken.pdf", "%PDF")).count, 0);
}

/// The program reaches its own file, that one and the folder for its output, and cannot run where
/// the kernel does not keep it from others.
class ThumbnailProgram : public testing::Test
{
protected:
    void SetUp() override
    {
        if (Confined::landlockVersion() == 0)
            GTEST_SKIP() << "without Landlock none is run";
    }
    ThumbnailDesktop d;
};

TEST_F(ThumbnailProgram, IsTheOneThatIsInstalledForTheType)
{
    const QByteArray file = d.video("with 'quotes' $HOME.ogv");
    d.script("cp \"$2\" \"$3\"");
    const auto shown = d.generate(file, 5);
    EXPECT_EQ(shown.quality, Representation::Thumbnail);
    EXPECT_EQ(shown.image.size(), QSize(64, 32));
    EXPECT_TRUE(isNear(shown.image.pixelColor(5, 5), Qt::red));
    const auto arguments = d.arguments();
    const QByteArrayList expected { file,
                                    arguments[1],
                                    d.path("thumbnailer"),
                                    "256",
                                    file,
                                    arguments[1] + "/thumbnail.png",
                                    FilePath::toUrl(file).toEncoded(),
                                    "%",
                                    "" };
    EXPECT_EQ(arguments, expected);
    EXPECT_FALSE(FilePath::exists(arguments[1])) << "what it wrote is cleared away";
    EXPECT_EQ(d.generate(file, 5).count, 1);
    EXPECT_EQ(d.generate(d.write("a.txt", "words"), 0.3).count, 0);
    EXPECT_EQ(d.runs(), 1) << "from the cache";
}

TEST_F(ThumbnailProgram, ThatFailsIsEndedAndNotTriedUntilTheFileChanges)
{
    const QByteArray sleep = "sleep 611." + QByteArray::number(::getpid());
    const QByteArray cases[] = {
        "exit 1",
        "exit 0", // And nothing is written.
        "echo garbage > \"$3\"",
        "cat \"$0.other\" > \"$3\"", // Another file of the user's.
        "ln -s \"$0.other\" \"$3\"",
        "(setsid " + sleep + " || " + sleep + ") & " + sleep, // Hangs with a child.
        "exec perl -e '$a = \"x\" x (3 << 30)'",
        "exec cat /dev/zero > \"$3\"",
    };
    d.queue.haste = 5;
    const QByteArray other = d.video("thumbnailer.other");
    for (const QByteArray &commands : cases) {
        SCOPED_TRACE(commands.constData());
        d.script(commands);
        const auto before = d.runs();
        const QByteArray file = d.write(QByteArray::number(before) + ".ogv", "video");
        int updates = 0;
        const Ticket ticket
            = d.thumbnails.generate(FilePath::toUrl(file), 32, 2, [&](auto &&...) { ++updates; });
        ASSERT_TRUE(d.waitFor([&] { return d.isNoted(file); }, 8));
        EXPECT_EQ(updates, 0);
        EXPECT_TRUE(d.waitFor([&] { return processes(sleep).isEmpty(); }, 3));
        EXPECT_EQ(d.generate(file, 0.2).count, 0);
        EXPECT_EQ(d.runs(), before + 1);
    }
    const QByteArray file = d.write("0.ogv", "another video");
    const auto before = d.runs();
    const Ticket ticket = d.thumbnails.generate(FilePath::toUrl(file), 32, 2, [](auto &&...) {});
    EXPECT_TRUE(d.waitFor([&] { return d.runs() > before; }, 5));
}

TEST_F(ThumbnailProgram, ThatNobodyWaitsForIsEndedAndTheNextBegins)
{
    const QByteArray sleep = "sleep 612." + QByteArray::number(::getpid());
    d.script("case \"$2\" in */slow.ogv) " + sleep + ";; esac\ncp \"$2\" \"$3\"");
    Ticket slow = d.thumbnails.generate(FilePath::toUrl(d.video("slow.ogv")), 32, 2,
                                        [](auto &&...) { ADD_FAILURE() << "cancelled"; });
    ASSERT_TRUE(d.waitFor([&] { return !processes(sleep).isEmpty(); }, 5));
    const QByteArray folder = d.arguments().value(1);
    int updates = 0;
    Ticket next
        = d.thumbnails.generate(FilePath::toUrl(d.video("next.ogv")), 32, 2, [&](auto &&...) {
              ++updates;
              next.reset();
          });
    d.waitFor([] { return false; }, 0.2);
    EXPECT_EQ(d.runs(), 1) << "one at a time";
    slow.reset();
    EXPECT_TRUE(d.waitFor([&] { return updates == 1; }, 5));
    EXPECT_TRUE(d.waitFor([&] { return processes(sleep).isEmpty(); }, 3));
    EXPECT_FALSE(FilePath::exists(folder));
}
