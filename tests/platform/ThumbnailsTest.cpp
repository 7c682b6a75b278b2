#include "PictureWorld.h"

#include "platform/linux/DesktopThumbnails.h"

#include <QCryptographicHash>
#include <QDir>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Representation = ThumbnailGenerator::Representation;

/// A desktop with a cache and with thumbnailers that are scripts of the test.
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
        script("exit 1");
    }
    void script(const QByteArray &commands)
    {
        write("thumbnailer", "#!/bin/sh\necho x >> " + path("runs") + "\n" + commands + "\n");
        ::chmod(path("thumbnailer").constData(), 0700);
    }
    qsizetype runs() const { return read(path("runs")).count('x'); }

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
        const QDir notes(QFile::decodeName(path("cache/fail")));
        const QStringList programs = notes.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        return programs.size() == 1
            && FilePath::exists(cached(file, "fail/" + programs[0].toLatin1()));
    }
    /// As another program of the desktop puts it there.
    QByteArray put(const QByteArray &file, const QByteArray &folder, int edge, qint64 modified)
    {
        QImage image(edge, edge / 2, QImage::Format_RGB32);
        image.fill(Qt::green);
        image.setText(QStringLiteral("Thumb::URI"), FilePath::toUrl(file).toString());
        image.setText(QStringLiteral("Thumb::MTime"), QString::number(modified));
        const QByteArray place = cached(file, folder);
        EXPECT_TRUE(NativeFile::makeFolder(FilePath::parent(place)));
        EXPECT_TRUE(image.save(QFile::decodeName(place)));
        return place;
    }
    static qint64 modified(const QByteArray &file)
    {
        struct stat status = {};
        ::stat(file.constData(), &status);
        return status.st_mtim.tv_sec;
    }

    DesktopThumbnails thumbnails {
        { path("cache"), { path("none"), path("data") } }, decoder, lanes, queue
    };
};

/// What a script does that makes a thumbnail.
QByteArray copying(const QByteArray &picture)
{
    return "cp " + picture + " \"$3\"";
}

}

TEST(DesktopThumbnails, TakesWhatTheSharedCacheHasOfTheFileAsItIs)
{
    const struct
    {
        const char *folder;
        int edge;
        QSize shown; // 64 pixels are wanted.
    } classes[] = { { "normal", 128, { 64, 32 } },
                    { "large", 256, { 64, 32 } },
                    { "x-large", 512, { 64, 32 } },
                    { "xx-large", 1024, { 64, 32 } } };
    ThumbnailDesktop d;
    const QByteArray file = d.write("ein Bild & mehr.ogv", "video");
    for (const auto &c : classes) {
        SCOPED_TRACE(c.folder);
        const QByteArray thumbnail = d.put(file, c.folder, c.edge, d.modified(file));
        const auto shown = d.generate(file, 5);
        EXPECT_EQ(shown.count, 1);
        EXPECT_EQ(shown.quality, Representation::Thumbnail);
        EXPECT_EQ(shown.image.size(), c.shown);
        EXPECT_TRUE(isNear(shown.image.pixelColor(5, 5), Qt::green));
        ::unlink(thumbnail.constData());
    }
    EXPECT_EQ(d.runs(), 0);
    const QByteArray stale = d.put(file, "large", 256, d.modified(file) - 1);
    EXPECT_EQ(d.generate(file).count, 0);
    EXPECT_EQ(d.runs(), 1) << "the file changed since";
    EXPECT_EQ(d.generate(stale).count, 0) << "no thumbnails of thumbnails";
    EXPECT_EQ(d.generate(d.path("vanished.ogv")).count, 0);
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
    EXPECT_EQ(kept.text(QStringLiteral("Thumb::MTime")).toLongLong(), d.modified(file));
    struct stat status = {};
    ASSERT_EQ(::stat(thumbnail.constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    ASSERT_EQ(::stat(FilePath::parent(thumbnail).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    EXPECT_EQ(d.generate(d.write("broken.pdf", "%PDF")).count, 0);
}

TEST(DesktopThumbnails, RunsTheProgramThatIsInstalledForTheType)
{
    ThumbnailDesktop d;
    QImage picture(256, 128, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const QByteArray file = d.write("with 'quotes' $HOME.ogv", "video");
    d.script("printf '%s\\n' \"$@\" > " + d.path("arguments") + "; [ -f \"$2\" ] && "
             + copying(d.save("picture.png", picture)));
    const auto shown = d.generate(file, 5);
    EXPECT_EQ(shown.quality, Representation::Thumbnail);
    EXPECT_EQ(shown.image.size(), QSize(64, 32));
    EXPECT_TRUE(isNear(shown.image.pixelColor(5, 5), Qt::red));
    const auto arguments = d.read(d.path("arguments")).split('\n');
    ASSERT_EQ(arguments.size(), 6);
    EXPECT_EQ(arguments[0], "256");
    EXPECT_EQ(arguments[1], file);
    EXPECT_EQ(arguments[3], FilePath::toUrl(file).toEncoded());
    EXPECT_EQ(arguments[4], "%");
    EXPECT_EQ(d.runs(), 1);
    EXPECT_EQ(d.generate(file, 5).count, 1);
    EXPECT_EQ(d.runs(), 1) << "from the cache";
    EXPECT_EQ(d.generate(d.write("a.txt", "words"), 0.3).count, 0);
}

TEST(DesktopThumbnails, AProgramThatFailsIsEndedAndNotTriedUntilTheFileChanges)
{
    const struct
    {
        const char *what;
        QByteArray commands;
    } cases[] = {
        { "fails", "exit 1" },
        { "writes nothing", "exit 0" },
        { "writes garbage", "echo garbage > \"$3\"" },
        { "is killed", "kill -9 $$" },
        { "hangs with a child", "sleep 611 & echo $! > $(dirname $0)/child; sleep 611" },
        { "eats memory", "exec /usr/bin/python3 -c 'a = bytearray(3 << 30)'" },
        { "writes without end", "exec cat /dev/zero > \"$3\"" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        ThumbnailDesktop d;
        d.queue.haste = 10;
        d.script(c.commands);
        const QByteArray file = d.write("a.ogv", "video");
        int updates = 0;
        const Ticket ticket
            = d.thumbnails.generate(FilePath::toUrl(file), 32, 2, [&](auto &&...) { ++updates; });
        ASSERT_TRUE(d.waitFor([&] { return d.isNoted(file); }, 5));
        EXPECT_EQ(updates, 0);
        const auto child = static_cast<pid_t>(d.read(d.path("child")).trimmed().toInt());
        EXPECT_TRUE(child == 0 || d.waitFor([&] { return ::kill(child, 0) != 0; }, 2));
        EXPECT_EQ(d.generate(file, 0.3).count, 0);
        EXPECT_EQ(d.runs(), 1);
        d.write("a.ogv", "another video");
        d.generate(file, 0.5);
        EXPECT_EQ(d.runs(), 2);
    }
}

TEST(DesktopThumbnails, OneThatNobodyWaitsForIsEndedAndTheNextBegins)
{
    ThumbnailDesktop d;
    QImage picture(256, 128, QImage::Format_RGB32);
    picture.fill(Qt::red);
    d.script("case \"$2\" in */slow.ogv) dirname \"$3\" > $(dirname $0)/folder; echo $$ > "
             "$(dirname $0)/slow; sleep 611;; esac\n"
             + copying(d.save("picture.png", picture)));
    Ticket slow = d.thumbnails.generate(FilePath::toUrl(d.write("slow.ogv", "video")), 32, 2,
                                        [](auto &&...) { ADD_FAILURE() << "cancelled"; });
    ASSERT_TRUE(d.waitFor([&] { return d.read(d.path("slow")).endsWith('\n'); }, 3));
    const auto process = static_cast<pid_t>(d.read(d.path("slow")).trimmed().toInt());
    int updates = 0;
    Ticket next = d.thumbnails.generate(FilePath::toUrl(d.write("next.ogv", "video")), 32, 2,
                                        [&](auto &&...) {
                                            ++updates;
                                            next.reset();
                                        });
    d.waitFor([] { return false; }, 0.2);
    EXPECT_EQ(d.runs(), 1) << "one at a time";
    slow.reset();
    EXPECT_TRUE(d.waitFor([&] { return updates == 1; }, 3));
    EXPECT_TRUE(d.waitFor([&] { return ::kill(process, 0) != 0; }, 2));
    EXPECT_FALSE(FilePath::exists(d.read(d.path("folder")).trimmed()));
}
