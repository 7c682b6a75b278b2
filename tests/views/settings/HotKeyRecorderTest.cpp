#include "views/settings/HotKeyRecorder.h"

#include "views/ViewWorld.h"

#include <QPushButton>

namespace {

constexpr Modifiers control = EventModifier::Control;
constexpr Modifiers option = EventModifier::Option;
constexpr Modifiers command = EventModifier::Command;
constexpr Modifiers shift = EventModifier::Shift;

/// A recorder in a window beside a text field that wants the keys too.
class WindowWorld
{
public:
    WindowWorld()
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
    QuietPlatform m_quiet;
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
    enum Then { Recorded, GoesOn, Ends };
    const QString s = u"s"_s;
    const struct
    {
        const char *what;
        KeyEvent key;
        Then then;
        size_t beeps = 0;
        const char *label = "⌥⌘S"; // As it is stored.
        const char *shown = "";
    } cases[] = {
        { "letter", { 1, control | option, s }, Recorded, 0, "⌃⌥S", "key_super+key_alt+S" },
        { "space", { 49, command, {} }, Recorded, 0, "⌘Space", "key_control+key_space" },
        { "unnamed", { 115, command, {} }, Recorded, 0, "⌘#115", "key_control+key_home" },
        { "Shift and F1", { 122, shift, {} }, GoesOn, 1 },
        { "plain letter", { 1, 0, s }, GoesOn, 1 },
        { "key without a code", { -1, command, {} }, GoesOn, 1 },
        { "Ctrl alone", { 55, 0, {} }, GoesOn },
        { "Shift after Ctrl", { 60, command, {} }, GoesOn },
        { "Escape", { 53, 0, {} }, Ends },
        { "Escape with modifiers", { 53, command, {} }, Ends },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        WindowWorld w;
        w.click(w.field());
        ASSERT_TRUE(w.isRecording());
        w.press(c.key);
        EXPECT_EQ(w.isRecording(), c.then == GoesOn);
        EXPECT_EQ(w.settings.hotKeyLabel.value().toStdString(), c.label);
        EXPECT_EQ(w.field().text().toStdString(),
                  c.then == GoesOn ? "hotkey_press"
                      : *c.shown   ? c.shown
                                   : "key_control+key_alt+S");
        EXPECT_EQ(w.sounds.played.size(), c.beeps);
        EXPECT_EQ(w.reset().isVisible(), c.then == Recorded);
        EXPECT_EQ(QWidget::keyboardGrabber() != nullptr, c.then == GoesOn);
    }
}

TEST(HotKeyRecorderTest, KeysGoTheirOwnWayUnlessItRecords)
{
    WindowWorld w;
    const KeyEvent combination { 49, EventModifier::Command, u" "_s };
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
    EXPECT_EQ(w.field().text(), u"key_control+key_alt+S"_s);
    EXPECT_FALSE(w.reset().isVisible());
}
