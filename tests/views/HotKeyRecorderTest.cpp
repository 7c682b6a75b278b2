#include "views/HotKeyRecorder.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr Modifiers control = EventModifier::Control;
constexpr Modifiers option = EventModifier::Option;
constexpr Modifiers command = EventModifier::Command;
constexpr Modifiers shift = EventModifier::Shift;

/// The platform without a screen cannot grab the keyboard, and says so.
class GrabsQuietly
{
public:
    GrabsQuietly()
        : m_before(qInstallMessageHandler([](QtMsgType, const QMessageLogContext &,
                                             const QString &text) {
            EXPECT_TRUE(text.contains(QLatin1String("grabbing the keyboard"))) << qPrintable(text);
        }))
    {
    }
    ~GrabsQuietly() { qInstallMessageHandler(m_before); }

private:
    QtMessageHandler m_before;
};

/// A recorder in a window beside a text field that wants the keys too.
class World
{
public:
    World()
    {
        window.resize(300, 60);
        recorder.move(0, 0);
        recorder.adjustSize();
        window.show();
        window.activateWindow();
        QApplication::processEvents();
    }
    QPushButton &field() const { return *recorder.findChildren<QPushButton *>().at(0); }
    QPushButton &reset() const { return *recorder.findChildren<QPushButton *>().at(1); }
    bool isRecording() const { return field().text() == QLatin1String("hotkey_press"); }
    void click(QPushButton &button) { QTest::mouseClick(&button, Qt::LeftButton); }
    /// The key that the reader tells of; what the toolkit makes of it does not
    /// count.
    void press(const KeyEvent &event, Qt::Key key = Qt::Key_A)
    {
        next = event;
        QTest::keyClick(window.windowHandle(), key);
    }

private:
    GrabsQuietly m_quiet;
    FakePreferences m_preferences;
    FakeAutostart m_autostart;

public:
    Localizer texts { QString(), {} }; // Every text shows as its key.
    AppSettings settings { m_preferences, m_autostart, texts, {} };
    FakeSounds sounds;
    KeyEvent next;
    QWidget window;
    HotKeyRecorder recorder { settings, texts, sounds, [this](const QKeyEvent &) { return next; },
                              &window };
};

} // namespace

TEST(HotKeyRecorderTest, APressWhileItRecordsIsTakenRefusedOrEndsIt)
{
    enum class Then { Recorded, Goes_on, Ends };
    struct Case
    {
        const char *what;
        KeyEvent key;
        Then then;
        size_t beeps;
        const char *label; // As it is stored.
        const char *shown;
    };
    const QString s = QStringLiteral("s");
    const Case cases[] = {
        { "letter", { 1, control | option, s }, Then::Recorded, 0, "⌃⌥S", "key_super+key_alt+S" },
        { "space",
          { 49, command, QStringLiteral(" ") },
          Then::Recorded,
          0,
          "⌘Space",
          "key_control+key_space" },
        { "unnamed key",
          { 115, command | shift, {} },
          Then::Recorded,
          0,
          "⇧⌘#115",
          "key_control+key_shift+key_home" },
        { "Shift and F1", { 122, shift, {} }, Then::Goes_on, 1, "⌥⌘S", "hotkey_press" },
        { "plain letter", { 1, 0, s }, Then::Goes_on, 1, "⌥⌘S", "hotkey_press" },
        { "key without a code", { -1, command, {} }, Then::Goes_on, 1, "⌥⌘S", "hotkey_press" },
        { "Ctrl alone", { 55, 0, {} }, Then::Goes_on, 0, "⌥⌘S", "hotkey_press" },
        { "Shift after Ctrl", { 60, command, {} }, Then::Goes_on, 0, "⌥⌘S", "hotkey_press" },
        { "Escape", { 53, 0, {} }, Then::Ends, 0, "⌥⌘S", "key_control+key_alt+S" },
        { "Escape with modifiers",
          { 53, command, {} },
          Then::Ends,
          0,
          "⌥⌘S",
          "key_control+key_alt+S" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.click(w.field());
        ASSERT_TRUE(w.isRecording());
        w.press(c.key);
        EXPECT_EQ(w.isRecording(), c.then == Then::Goes_on);
        EXPECT_EQ(w.settings.hotKeyLabel.value().toStdString(), c.label);
        EXPECT_EQ(w.field().text().toStdString(), c.shown);
        EXPECT_EQ(w.sounds.played.size(), c.beeps);
        EXPECT_EQ(w.reset().isVisible(), c.then == Then::Recorded);
        EXPECT_EQ(QWidget::keyboardGrabber() != nullptr, c.then == Then::Goes_on);
    }
}

TEST(HotKeyRecorderTest, KeysGoTheirOwnWayUnlessItRecords)
{
    World w;
    const KeyEvent combination { 49, EventModifier::Command, QStringLiteral(" ") };
    const std::pair<const char *, std::function<void()>> ends[] = {
        { "a second press", [&] { w.click(w.field()); } },
        { "gone from the screen",
          [&] {
              w.recorder.hide();
              w.recorder.show();
          } },
        { "another window",
          [&] {
              QEvent left(QEvent::WindowDeactivate);
              QApplication::sendEvent(&w.recorder, &left);
          } },
    };
    for (const auto &[what, end] : ends) {
        SCOPED_TRACE(what);
        w.click(w.field());
        ASSERT_TRUE(w.isRecording());
        end();
        EXPECT_FALSE(w.isRecording());
        EXPECT_EQ(QWidget::keyboardGrabber(), nullptr);
        w.press(combination);
        EXPECT_TRUE(w.settings.isDefaultHotKey());
    }
    w.click(w.field());
    w.press(combination,
            Qt::Key_Tab); // Nor does the toolkit go to the next field.
    EXPECT_FALSE(w.settings.isDefaultHotKey());
    w.click(w.reset());
    EXPECT_TRUE(w.settings.isDefaultHotKey());
    EXPECT_EQ(w.field().text(), QStringLiteral("key_control+key_alt+S"));
    EXPECT_FALSE(w.reset().isVisible());
}
