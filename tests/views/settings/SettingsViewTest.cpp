#include "views/settings/SettingsView.h"

#include "views/ViewWorld.h"
#include "views/settings/ApplicationPicker.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

namespace {

/// The settings' window; every text shows as its key.
class WindowWorld
{
public:
    WindowWorld()
    {
        view.setWindowFlag(Qt::Window);
        view.resize(view.sizeHint());
        view.show();
        view.activateWindow();
        settle();
    }
    void settle()
    {
        queue.settle();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }
    QCheckBox *toggle(const char *text) const { return withText<QCheckBox>(text); }
    QPushButton *button(const char *text) const { return withText<QPushButton>(text); }
    QComboBox *picker(const char *text) const
    {
        for (auto *label : view.findChildren<QLabel *>()) {
            if (label->text() == QLatin1String(text) && label->buddy())
                return dynamic_cast<QComboBox *>(label->buddy());
        }
        return nullptr;
    }
    /// The texts of the entries with remove buttons, from top to bottom.
    QStringList entries() const
    {
        QStringList result;
        for (auto *each : removeButtons())
            result.append(each->accessibleDescription());
        return result;
    }
    QList<QAbstractButton *> removeButtons() const
    {
        QList<QAbstractButton *> result;
        for (auto *each : view.findChildren<QAbstractButton *>()) {
            if (each->accessibleName() == QLatin1String("remove") && each->isVisible())
                result.append(each);
        }
        return result;
    }
    void press(QWidget *control, Qt::Key key)
    {
        ASSERT_NE(control, nullptr);
        control->setFocus();
        QTest::keyClick(view.windowHandle(), key);
        settle();
    }
    ApplicationPicker *applications() const { return view.findChild<ApplicationPicker *>(); }

private:
    template<typename Widget>
    Widget *withText(const char *text) const
    {
        for (auto *widget : view.template findChildren<Widget *>()) {
            if (widget->text() == QLatin1String(text))
                return widget;
        }
        return nullptr;
    }

    QuietPlatform m_quiet;
    FakePreferences m_preferences;
    FakeAutostart m_autostart;
    FakeIcons m_icons;

public:
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    QTemporaryDir home;
    QList<InstalledApplication> installed {
        { u"org.one"_s, u"One"_s, {}, true },
        { u"org.two"_s, u"Two"_s, {}, true },
        { u"org.hidden"_s, u"Hidden"_s, {}, false },
    };
    Localizer texts { QString(), {} };
    AppSettings settings { m_preferences, m_autostart, texts, {} };
    FakeSounds sounds;
    SettingsView view { settings, texts,
                        SettingsDesktop { queue, workers, sounds, m_icons,
                                          QStringLiteral(VANTLE_SOURCE_DIR "/src/resources"),
                                          [](const QKeyEvent &) { return KeyEvent {}; },
                                          [this] { return installed; },
                                          [this] { return screenshots(); },
                                          [this](QWidget &, const QString &title,
                                                 const std::function<void(const QUrl &)> &chosen,
                                                 const std::function<void()> &unavailable) {
                                              titles.append(title);
                                              if (portal.isValid())
                                                  chosen(portal);
                                              else
                                                  unavailable();
                                          } } };
    QStringList titles; // Of the questions for a folder.
    QUrl portal; // What the desktop's own dialog answers; without an answer there is none.
    QByteArray screenshots() const { return home.path().toUtf8() + "/Pictures/Screenshots"; }
};

}

TEST(SettingsViewTest, EachControlSetsItsPreferenceAndFollowsIt)
{
    WindowWorld w;
    for (const auto &[text, property] :
         { std::pair("launch_at_login", &w.settings.launchAtLogin),
           { "toggle_drag_summon", &w.settings.shakeToSummon },
           { "toggle_corner_summon", &w.settings.cornerToSummon },
           { "toggle_dock_edge", &w.settings.dockToEdge },
           { "remove_after_drag", &w.settings.removeAfterDragOut } }) {
        SCOPED_TRACE(text);
        auto *toggle = w.toggle(text);
        const bool before = property->value();
        int announced = 0;
        const Ticket ticket = property->subscribe([&](bool) { ++announced; }, Deliver::ChangesOnly);
        w.press(toggle, Qt::Key_Space);
        EXPECT_EQ(property->value(), !before);
        property->set(before);
        EXPECT_EQ(toggle->isChecked(), before);
        EXPECT_EQ(announced, 2);
    }
    for (const auto &[text, property, words] :
         { std::tuple("drag_modifier", &w.settings.dragModifier,
                      "none command option control shift"),
           { "summon_position", &w.settings.summonPosition, "topRight cursor last" },
           { "auto_cleanup", &w.settings.autoCleanup, "off 1h 1d 1w" },
           { "double_click", &w.settings.doubleClickAction, "quicklook open reveal" } }) {
        SCOPED_TRACE(text);
        auto *picker = w.picker(text);
        ASSERT_NE(picker, nullptr);
        const auto choices = QString::fromLatin1(words).split(u' ');
        property->set(choices.first());
        for (const auto &word : choices.mid(1)) {
            w.press(picker, Qt::Key_Down);
            EXPECT_EQ(property->value(), word);
        }
        property->set(choices[1]);
        EXPECT_EQ(picker->currentData(), choices[1]);
        property->set(u"unknown"_s);
        EXPECT_EQ(picker->currentIndex(), 0);
    }
    w.settings.shakeToSummon.set(false);
    EXPECT_FALSE(w.picker("drag_modifier")->isEnabled());
}

TEST(SettingsViewTest, EntriesAreRemovedByKeyOneAfterTheOther)
{
    WindowWorld w;
    w.settings.ignoredApps.set({ u"org.two"_s, u"org.gone"_s, u"org.hidden"_s });
    w.settings.watchedFolders.set({ u"/a"_s });
    w.settle();
    EXPECT_EQ(w.entries(), QStringList({ u"Two"_s, u"org.gone"_s, u"Hidden"_s, u"/a"_s }));
    auto *add = w.button("ignored_add");
    add->setFocus();
    QTest::keyClick(w.view.windowHandle(), Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(w.view.focusWidget(), w.removeButtons()[2]);
    w.press(w.removeButtons()[1], Qt::Key_Space);
    EXPECT_EQ(w.settings.ignoredApps.value(), QStringList({ u"org.two"_s, u"org.hidden"_s }));
    EXPECT_EQ(w.view.focusWidget(), w.removeButtons()[1]);
    for (int i = 0; i < 2; ++i)
        w.press(w.view.focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(w.settings.ignoredApps.value().isEmpty());
    EXPECT_EQ(w.view.focusWidget(), add);
    EXPECT_EQ(w.settings.watchedFolders.value(), QStringList { u"/a"_s });
}

TEST(SettingsViewTest, ApplicationsAreFoundByNameAndAddedOnce)
{
    WindowWorld w;
    w.settings.ignoredApps.set({ u"org.one"_s });
    w.press(w.button("ignored_add"), Qt::Key_Space);
    auto *dialog = w.applications();
    ASSERT_TRUE(dialog && dialog->isVisible());
    auto *list = dialog->findChild<QListView *>();
    EXPECT_EQ(list->model()->rowCount(), 1); // Neither what is there nor what menus hide.
    QTest::keyClicks(dialog->findChild<QLineEdit *>(), u"tW"_s);
    w.settings.ignoredApps.set({ u"org.one"_s, u"org.two"_s });
    QTest::keyClick(dialog, Qt::Key_Return);
    w.settle();
    EXPECT_EQ(w.settings.ignoredApps.value(), QStringList({ u"org.one"_s, u"org.two"_s }));
    EXPECT_EQ(w.applications(), nullptr);
}

TEST(SettingsViewTest, TheScreenshotFolderIsMadeAndOfferedWhileItIsNotWatched)
{
    WindowWorld w;
    auto *add = w.button("watch_add_screenshots");
    ASSERT_TRUE(add && add->isVisible());
    QScrollBar &bar = *w.view.verticalScrollBar();
    bar.setValue(bar.maximum() - 80);
    const int place = bar.value();
    w.press(add, Qt::Key_Space);
    EXPECT_EQ(bar.value(), place);
    EXPECT_TRUE(QDir(QString::fromUtf8(w.screenshots())).exists());
    EXPECT_EQ(w.settings.watchedFolders.value(),
              QStringList { QString::fromUtf8(w.screenshots()) });
    EXPECT_FALSE(add->isVisible());
    w.press(w.removeButtons().first(), Qt::Key_Space);
    EXPECT_TRUE(add->isVisible());
    // Where the folder cannot be made.
    QDir(w.home.path() + u"/Pictures"_s).removeRecursively();
    QFile file(w.home.path() + u"/Pictures"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    w.press(add, Qt::Key_Space);
    EXPECT_TRUE(w.settings.watchedFolders.value().isEmpty());
    EXPECT_EQ(w.sounds.played.size(), 1U);
}

TEST(SettingsViewTest, AWatchedFolderIsChosenOnce)
{
    WindowWorld w;
    const QUrl chosen(u"file:///srv/in/"_s);
    const QUrl noText = QUrl::fromEncoded("file:///srv/%FF");
    for (const QUrl &url : { chosen, chosen, noText, QUrl(u"sftp://host/x"_s) }) {
        w.portal = url;
        w.press(w.button("watch_add"), Qt::Key_Space);
        w.settle();
    }
    EXPECT_EQ(w.settings.watchedFolders.value(), QStringList { u"/srv/in"_s });
    EXPECT_EQ(w.sounds.played.size(), 2U);
    EXPECT_FALSE(w.titles.first().contains(u'…'));

    // Without a portal the toolkit's own dialog asks, whose buttons are pressed.
    w.portal.clear();
    const QString other = w.home.path() + u"/other"_s;
    ASSERT_TRUE(QDir().mkpath(other));
    w.press(w.button("watch_add"), Qt::Key_Space);
    auto *dialog = w.view.findChild<QFileDialog *>();
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(other);
    static_cast<QDialog *>(dialog)->accept();
    w.settle();
    EXPECT_EQ(w.settings.watchedFolders.value().last(), other);
}
