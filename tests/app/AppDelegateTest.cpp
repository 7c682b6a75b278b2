#include "app/AppDelegate.h"

#include "platform/Autostart.h"
#include "platform/DropTarget.h"
#include "platform/StatusItem.h"
#include "platform/fake/FakeDragSelection.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeFrontApplication.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePanelWindow.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "store/AppPaths.h"

#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class NoAutostart final : public Autostart
{
public:
    bool enabled() const override { return false; }
    std::optional<QString> setEnabled(bool) override { return {}; }
};

FakePreferences withValues(const QJsonObject &values)
{
    FakePreferences preferences;
    preferences.object = values;
    return preferences;
}

class MenuOnly final : public StatusItem
{
public:
    void setImage(const QIcon &, const QString &) override { }
    void setMenu(const QList<MenuEntry> &next) override { entries = next; }
    QList<MenuEntry> entries;
};

/// The whole program over a desktop that a test moves.
class Application
{
public:
    explicit Application(const QJsonObject &stored = {})
        : preferences(withValues(stored))
    {
        pointer.at = QPointF(400, 400);
        delegate.applicationDidFinishLaunching();
        queue.settle();
    }

    bool isUp() const { return window.visible && window.opacity > 0; }
    void beginFileDrag()
    {
        pointer.press({ 400, 400 });
        selection.announce();
        selection.answer(true);
        pointer.drag({ 410, 400 });
        queue.settle();
    }
    void endDrag()
    {
        pointer.release();
        queue.settle();
    }
    /// A drop of another program's text.
    void drop(const char *text)
    {
        class Provider final : public ItemProvider
        {
        public:
            explicit Provider(const char *text)
                : m_text(QString::fromUtf8(text))
            {
            }
            QStringList registeredTypes() const override { return {}; }
            bool hasFileUrl() const override { return false; }
            bool hasText() const override { return true; }
            bool hasUrl() const override { return false; }
            void loadUrl(std::function<void(std::optional<QUrl>)> done) override { done({}); }
            void loadText(std::function<void(std::optional<QString>)> done) override
            {
                done(m_text);
            }
            void loadData(const QString &,
                          std::function<void(std::optional<QByteArray>)> done) override
            {
                done({});
            }

        private:
            QString m_text;
        };
        dropTarget.onDrop({ std::make_shared<Provider>(text) });
        queue.settle();
    }
    bool press(int keyCode, Modifiers modifiers = 0, const char *characters = "")
    {
        return window.onKey({ keyCode, modifiers, QString::fromLatin1(characters) });
    }

    QTemporaryDir folder;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    FakeSounds sounds;
    FakePreferences preferences;
    NoAutostart autostart;
    FakeScreens screens;
    FakePointerMonitor pointer;
    FakeDragSelection selection;
    FakeFrontApplication front;
    FakeIcons icons;
    FakePanelWindow window;
    DropTarget dropTarget;
    FakeDragSession session;
    MenuOnly status;
    QString resources = QStringLiteral(VANTLE_SOURCE_DIR "/src/resources");
    Localizer texts { resources + QStringLiteral("/Vantle_Vantle.bundle"), {} };
    AppDelegate delegate { { queue, workers, sounds, preferences, autostart, screens, pointer,
                             selection, front, icons, window, dropTarget, session, status,
                             Directories { {}, folder.path().toUtf8(), {}, {}, {} }, resources },
                           texts };
};

}

TEST(AppDelegateTest, APanelThatADragSummonedGoesIfNothingWasDropped)
{
    for (const bool dropped : { false, true }) {
        SCOPED_TRACE(dropped);
        Application app;
        app.beginFileDrag();
        EXPECT_TRUE(app.window.visible);
        if (dropped)
            app.drop("a note");
        app.endDrag();
        app.queue.advance(0.39);
        EXPECT_TRUE(app.window.visible);
        app.queue.advance(0.5);
        EXPECT_EQ(app.window.visible, dropped);
    }
}

TEST(AppDelegateTest, APanelThatWasUpBeforeTheDragStays)
{
    Application app;
    app.delegate.toggle();
    app.queue.advance(1);
    app.beginFileDrag();
    app.endDrag();
    app.queue.advance(2);
    EXPECT_TRUE(app.isUp());
    app.delegate.toggle();
    app.queue.advance(1);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, ASecondDragWithinTheGraceOfTheFirstDoesNotKeepThePanel)
{
    Application app;
    app.beginFileDrag();
    app.endDrag();
    app.queue.advance(0.2);
    app.beginFileDrag();
    app.queue.advance(0.5);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, KeysRemoveBringBackAndHide)
{
    Application app;
    app.drop("one");
    app.drop("two");
    app.delegate.activate();
    app.queue.advance(1);
    EXPECT_EQ(app.window.calls.last(), QStringLiteral("focus"));

    constexpr int escape = 53;
    constexpr int backspace = 51;
    EXPECT_FALSE(app.press(backspace)); // Nothing is selected.
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "a"));
    EXPECT_TRUE(app.press(backspace));
    EXPECT_FALSE(app.press(-1, EventModifier::Command | EventModifier::Shift, "z"));
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "z"));
    EXPECT_FALSE(app.press(-1, EventModifier::Command, "z")); // The stash is spent.
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "a"));
    EXPECT_TRUE(app.press(escape)); // The selection first, then the panel.
    app.queue.advance(1);
    EXPECT_TRUE(app.isUp());
    EXPECT_TRUE(app.press(escape));
    app.queue.advance(1);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, WhatIsOlderThanTheSettingGoesWithTheNextCleanup)
{
    for (const char *age : { "off", "1h" }) {
        SCOPED_TRACE(age);
        Application app({ { QStringLiteral("autoCleanup"), QLatin1String(age) } });
        app.drop("soon old");
        const auto isSaved = [&] {
            QFile file(app.folder.path() + QStringLiteral("/Vantle/shelves.json"));
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("soon old");
        };
        app.queue.advance(3599);
        EXPECT_TRUE(isSaved());
        app.queue.advance(61);
        EXPECT_EQ(isSaved(), QLatin1String(age) == QLatin1String("off"));
    }
}
