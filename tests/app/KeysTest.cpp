#include "app/ApplicationWorld.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "store/DroppedImage.h"
#include "store/StateCoding.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr Modifiers command = EventModifier::Command;
constexpr Modifiers shift = EventModifier::Shift;

ShelfState savedState(const Application &app)
{
    const auto content = NativeFile::read(app.folder.path().toUtf8() + "/Vantle/shelves.json");
    return StateCoding::decodeState(content.bytes.value_or("")).value_or(ShelfState());
}

qsizetype currentIndex(const ShelfState &state)
{
    qsizetype index = 0;
    while (index < state.shelves.size() && state.shelves[index].id != state.current)
        ++index;
    return index;
}

QList<ShelfItem> savedItems(const Application &app)
{
    const ShelfState state = savedState(app);
    return state.shelves.value(currentIndex(state)).items;
}

/// What a user sees of it: which of the shelves, how many entries, the panel.
std::string described(const Application &app)
{
    const ShelfState state = savedState(app);
    return QStringLiteral("shelf %1 of %2, %3 entries, %4")
        .arg(currentIndex(state) + 1)
        .arg(state.shelves.size())
        .arg(savedItems(app).size())
        .arg(app.window.visible ? QStringLiteral("up") : QStringLiteral("hidden"))
        .toStdString();
}

std::shared_ptr<FakeItemProvider> file(const char *path)
{
    auto object = std::make_shared<FakeItemProvider>();
    object->isFile = true;
    object->url = FilePath::toUrl(path);
    return object;
}

std::shared_ptr<FakeItemProvider> object(const QStringList &types, const char *text,
                                         const std::optional<QByteArray> &data = {})
{
    auto made = std::make_shared<FakeItemProvider>();
    made->types = types;
    if (text)
        made->text = QString::fromUtf8(text);
    made->data = data;
    return made;
}

QByteArray picture()
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    return DroppedImage::pngFromImage(image).value();
}

}

TEST(KeysTest, EachKeyDoesWhatTheTableSays)
{
    enum { Return = 36, Backspace = 51, Escape = 53, Enter = 76, Delete = 117, Down = 125, Up };
    // NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of a story.
    struct Step
    {
        const char *what;
        int keyCode;
        Modifiers modifiers;
        const char *characters;
        bool consumed;
        const char *after;
        int copied = 0; // Files that copying puts on the clipboard afterwards.
        int opened = 0; // By this step.
    };
    // A story: each step begins where the one before ended.
    const Step steps[] = {
        { "copy nothing", 8, command, "c", false, "shelf 1 of 1, 3 entries, up" },
        { "delete nothing", Backspace, 0, "", false, "shelf 1 of 1, 3 entries, up" },
        { "open nothing", Return, 0, "", false, "shelf 1 of 1, 3 entries, up" },
        { "open nothing", 31, command, "o", false, "shelf 1 of 1, 3 entries, up" },
        { "paste nothing", 9, command, "v", false, "shelf 1 of 1, 3 entries, up" },
        { "undo nothing", 6, command, "z", false, "shelf 1 of 1, 3 entries, up" },
        { "down", Down, 0, "", true, "shelf 1 of 1, 3 entries, up", 1 },
        { "extend", Down, shift, "", true, "shelf 1 of 1, 3 entries, up", 2 },
        { "Command with an arrow", Down, command, "", false, "shelf 1 of 1, 3 entries, up", 2 },
        { "Command with Delete", Delete, command, "", false, "shelf 1 of 1, 3 entries, up", 2 },
        { "open two", Enter, 0, "", true, "shelf 1 of 1, 3 entries, up", 2, 2 },
        { "open two", 31, command, "o", true, "shelf 1 of 1, 3 entries, up", 2, 2 },
        { "up", Up, 0, "", true, "shelf 1 of 1, 3 entries, up", 1 },
        { "open one", Return, 0, "", true, "shelf 1 of 1, 3 entries, up", 1, 1 },
        { "a letter alone", 0, 0, "a", false, "shelf 1 of 1, 3 entries, up", 1 },
        { "another letter", 2, command, "d", false, "shelf 1 of 1, 3 entries, up", 1 },
        { "no character", 2, command, "", false, "shelf 1 of 1, 3 entries, up", 1 },
        { "a shelf that is not there", 19, command, "2", false, "shelf 1 of 1, 3 entries, up", 1 },
        { "new shelf", 17, command, "t", true, "shelf 2 of 2, 0 entries, up" },
        { "no shelf number", 29, command, "0", false, "shelf 2 of 2, 0 entries, up" },
        { "one of two", 18, command, "1", true, "shelf 1 of 2, 3 entries, up" },
        { "three of two", 20, command, "3", false, "shelf 1 of 2, 3 entries, up" },
        { "all", 0, command, "a", true, "shelf 1 of 2, 3 entries, up", 3 },
        { "delete", Delete, 0, "", true, "shelf 1 of 2, 0 entries, up" },
        { "Shift with undo", 6, command | shift, "z", false, "shelf 1 of 2, 0 entries, up" },
        { "undo", 6, command, "z", true, "shelf 1 of 2, 3 entries, up" },
        { "all", 0, command, "a", true, "shelf 1 of 2, 3 entries, up", 3 },
        { "Escape, the selection", Escape, 0, "", true, "shelf 1 of 2, 3 entries, up" },
        { "Escape, the panel", Escape, 0, "", true, "shelf 1 of 2, 3 entries, hidden" },
    };
    const Address link({}, "https://Example.org/%7e");
    Application app({ { QStringLiteral("dockToEdge"), false } }); // The story takes its time.
    for (const char *text : { "one", link.text.constData(), "three" })
        app.drop(text);
    app.delegate.activate();
    app.queue.advance(1);
    EXPECT_EQ(app.window.calls.last(), QStringLiteral("focus"));
    // A question has the keys, and the rows stay as they are.
    auto &view = static_cast<ShelfView &>(*app.window.rootView);
    view.rename();
    EXPECT_FALSE(app.press(0, command, "a") || app.press(Escape) || app.dropTarget.mayTake());
    QTest::keyClick(view.findChild<QLineEdit *>(), Qt::Key_Escape);
    EXPECT_TRUE(app.dropTarget.mayTake());
    for (const Step &step : steps) {
        SCOPED_TRACE(step.what);
        app.applications.opened.clear();
        app.clipboard.written.clear();
        EXPECT_EQ(app.press(step.keyCode, step.modifiers, step.characters), step.consumed);
        app.queue.advance(1);
        EXPECT_EQ(described(app), step.after);
        EXPECT_EQ(app.applications.opened.size(), step.opened);
        app.sounds.played.clear();
        EXPECT_EQ(app.window.visible && app.press(8, command, "c"), step.copied > 0);
        EXPECT_EQ(app.sounds.played, std::vector(step.copied > 0 ? 1U : 0U, Sound::Tink));
        EXPECT_EQ(app.clipboard.written.size(), step.copied);
        // A link goes out as its address, a snippet as its file.
        for (const auto &sent : { app.applications.opened, app.clipboard.written }) {
            EXPECT_TRUE(sent.isEmpty() || sent.first().isLocalFile());
            EXPECT_EQ(sent.value(1, link).text, link.text);
        }
    }
}

TEST(KeysTest, APasteTakesFilesThenTextThenAPicture)
{
    struct Case
    {
        const char *what;
        ItemProviders objects;
        QByteArrayList endings; // Of the entries' addresses.
        QStringList asked = {}; // Picture formats that were read.
    };
    const QString png = QStringLiteral("image/png");
    const QString odd = QStringLiteral("image/x-odd");
    const QString tiff = QStringLiteral("image/tiff");
    const auto refusing = object({ odd, png }, "");
    const Case cases[] = {
        { "files and text", { file("/a"), file("/b/c"), object({}, "text") }, { "/a", "/b/c" } },
        { "text and a picture", { object({ png }, "words", picture()) }, { ".txt" } },
        { "an address", { object({}, " https://example.org/x ") }, { ".webloc" } },
        { "empty text", { object({ odd, png }, "", picture()) }, { ".png" }, { png } },
        { "an odd type", { object({ odd }, nullptr, picture()) }, { ".png" }, { odd } },
        { "a TIFF", { object({ tiff }, nullptr, picture()) }, { ".png" }, { tiff } },
        { "a damaged TIFF", { object({ tiff }, nullptr, "no picture") }, {}, { tiff } },
        { "no picture after all", { object({ odd }, nullptr, "no picture") }, {}, { odd } },
        { "a picture that does not come", { refusing }, {}, { png, odd } },
        { "nothing that is known", { object({}, "") }, {} },
        { "an owner that does not answer", {}, {} },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        Application app;
        app.clipboard.holds = c.objects;
        EXPECT_TRUE(app.press(9, command, "v"));
        QStringList asked;
        for (int round = 0; round < 4; ++round) { // One form after the other.
            for (const auto &each : c.objects)
                static_cast<FakeItemProvider &>(*each).answer();
            app.queue.settle();
            app.pictures.decodeData();
        }
        for (const auto &each : c.objects)
            asked += static_cast<FakeItemProvider &>(*each).asked;
        EXPECT_EQ(asked, c.asked);
        const auto items = savedItems(app);
        ASSERT_EQ(items.size(), c.endings.size());
        const auto toast = static_cast<ShelfView *>(app.window.rootView)->toastText();
        EXPECT_EQ(toast.has_value(), items.isEmpty() && !asked.isEmpty());
        for (qsizetype i = 0; i < items.size(); ++i)
            EXPECT_TRUE(items.at(i).url.toEncoded().endsWith(c.endings.at(i)));
    }
}

TEST(ServicesTest, WhatNobodyHasMountedIsRefusedInWords)
{
    Application app;
    app.delegate.openUrls({ QUrl(QStringLiteral("smb://nowhere/share")) });
    app.queue.settle();
    EXPECT_TRUE(savedItems(app).isEmpty() && app.window.visible);
    EXPECT_EQ(static_cast<ShelfView *>(app.window.rootView)->toastText(),
              app.texts.text(QStringLiteral("nothing_taken")));
}
