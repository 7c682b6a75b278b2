#include "views/SettingsView.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "views/settings/ApplicationPicker.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// The platform without a screen has no use for a dialog's size, and says so.
class SizesQuietly
{
public:
    SizesQuietly()
    {
        before = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
                if (!text.contains(QLatin1String("propagateSizeHints")))
                    before(type, context, text);
            });
    }
    ~SizesQuietly() { qInstallMessageHandler(before); }

private:
    inline static QtMessageHandler before = nullptr;
};

/// The settings' window; without a bundle every text shows as its key.
class World
{
public:
    explicit World(const QString &bundle = {})
        : texts(bundle, {})
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
    template<typename Dialog>
    Dialog *dialog() const
    {
        return view.findChild<Dialog *>();
    }

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

    SizesQuietly m_quiet;
    FakePreferences m_preferences;
    FakeAutostart m_autostart;
    FakeIcons m_icons;

public:
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    QTemporaryDir home;
    QList<InstalledApplication> installed {
        { QStringLiteral("org.one"), QStringLiteral("One"), {}, true },
        { QStringLiteral("org.two"), QStringLiteral("Two"), {}, true },
        { QStringLiteral("org.hidden"), QStringLiteral("Hidden"), {}, false },
    };
    Localizer texts;
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
    World w;
    const std::pair<const char *, Observable<bool> *> toggles[] = {
        { "launch_at_login", &w.settings.launchAtLogin },
        { "toggle_drag_summon", &w.settings.shakeToSummon },
        { "toggle_corner_summon", &w.settings.cornerToSummon },
        { "toggle_dock_edge", &w.settings.dockToEdge },
        { "remove_after_drag", &w.settings.removeAfterDragOut },
    };
    for (const auto &[text, property] : toggles) {
        SCOPED_TRACE(text);
        auto *toggle = w.toggle(text);
        ASSERT_NE(toggle, nullptr);
        const bool before = property->value();
        int announced = 0;
        const Ticket ticket = property->subscribe([&](bool) { ++announced; }, Deliver::ChangesOnly);
        EXPECT_EQ(toggle->isChecked(), before);
        w.press(toggle, Qt::Key_Space);
        EXPECT_EQ(property->value(), !before);
        property->set(before);
        EXPECT_EQ(toggle->isChecked(), before);
        EXPECT_EQ(announced, 2);
    }
    const std::tuple<const char *, Observable<QString> *, QStringList> pickers[] = {
        { "drag_modifier",
          &w.settings.dragModifier,
          { QStringLiteral("none"), QStringLiteral("command"), QStringLiteral("option"),
            QStringLiteral("control"), QStringLiteral("shift") } },
        { "summon_position",
          &w.settings.summonPosition,
          { QStringLiteral("topRight"), QStringLiteral("cursor"), QStringLiteral("last") } },
        { "auto_cleanup",
          &w.settings.autoCleanup,
          { QStringLiteral("off"), QStringLiteral("1h"), QStringLiteral("1d"),
            QStringLiteral("1w") } },
        { "double_click",
          &w.settings.doubleClickAction,
          { QStringLiteral("quicklook"), QStringLiteral("open"), QStringLiteral("reveal") } },
    };
    for (const auto &[text, property, words] : pickers) {
        SCOPED_TRACE(text);
        auto *picker = w.picker(text);
        ASSERT_NE(picker, nullptr);
        property->set(words.first());
        for (const auto &word : words.mid(1)) {
            w.press(picker, Qt::Key_Down);
            EXPECT_EQ(property->value(), word);
        }
        property->set(words[1]);
        EXPECT_EQ(picker->currentData(), words[1]);
        property->set(QStringLiteral("unknown"));
        EXPECT_EQ(picker->currentIndex(), 0);
        // Its name is what it shows; what it is for, its label says.
        const auto labels
            = QAccessible::queryAccessibleInterface(picker)->relations(QAccessible::Label);
        ASSERT_EQ(labels.size(), 1);
        EXPECT_EQ(labels.first().first->text(QAccessible::Name).toStdString(), text);
        EXPECT_EQ(property->value(), QStringLiteral("unknown"));
    }
    w.settings.shakeToSummon.set(false);
    EXPECT_FALSE(w.picker("drag_modifier")->isEnabled());
}

TEST(SettingsViewTest, EntriesAreRemovedByKeyOneAfterTheOther)
{
    World w;
    w.settings.ignoredApps.set(
        { QStringLiteral("org.two"), QStringLiteral("org.gone"), QStringLiteral("org.hidden") });
    w.settings.watchedFolders.set({ QStringLiteral("/a") });
    w.settle();
    EXPECT_EQ(w.entries(),
              QStringList({ QStringLiteral("Two"), QStringLiteral("org.gone"),
                            QStringLiteral("Hidden"), QStringLiteral("/a") }));
    auto *add = w.button("ignored_add");
    add->setFocus();
    QTest::keyClick(w.view.windowHandle(), Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(w.view.focusWidget(), w.removeButtons()[2]);
    w.press(w.removeButtons()[1], Qt::Key_Space);
    EXPECT_EQ(w.settings.ignoredApps.value(),
              QStringList({ QStringLiteral("org.two"), QStringLiteral("org.hidden") }));
    EXPECT_EQ(w.view.focusWidget(), w.removeButtons()[1]);
    for (int i = 0; i < 2; ++i)
        w.press(w.view.focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(w.settings.ignoredApps.value().isEmpty());
    EXPECT_EQ(w.view.focusWidget(), add);
    EXPECT_EQ(w.settings.watchedFolders.value(), QStringList { QStringLiteral("/a") });
}

TEST(SettingsViewTest, ApplicationsAreFoundByNameAndAddedOnce)
{
    World w;
    w.settings.ignoredApps.set({ QStringLiteral("org.one") });
    w.press(w.button("ignored_add"), Qt::Key_Space);
    auto *dialog = w.dialog<ApplicationPicker>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    auto *list = dialog->findChild<QListView *>();
    EXPECT_EQ(list->model()->rowCount(), 1); // Neither what is there nor what menus hide.
    QTest::keyClicks(dialog->findChild<QLineEdit *>(), QStringLiteral("tW"));
    w.settings.ignoredApps.set({ QStringLiteral("org.one"), QStringLiteral("org.two") });
    QTest::keyClick(dialog, Qt::Key_Return);
    w.settle();
    EXPECT_EQ(w.settings.ignoredApps.value(),
              QStringList({ QStringLiteral("org.one"), QStringLiteral("org.two") }));
    EXPECT_EQ(w.dialog<ApplicationPicker>(), nullptr);
    w.press(w.button("ignored_add"), Qt::Key_Space);
    QTest::keyClick(w.dialog<ApplicationPicker>(), Qt::Key_Escape);
    EXPECT_EQ(w.settings.ignoredApps.value().size(), 2);
}

TEST(SettingsViewTest, TheScreenshotFolderIsMadeAndOfferedWhileItIsNotWatched)
{
    World w;
    auto *add = w.button("watch_add_screenshots");
    ASSERT_TRUE(add && add->isVisible());
    w.press(add, Qt::Key_Space);
    EXPECT_TRUE(QDir(QString::fromUtf8(w.screenshots())).exists());
    EXPECT_EQ(w.settings.watchedFolders.value(),
              QStringList { QString::fromUtf8(w.screenshots()) });
    EXPECT_FALSE(add->isVisible());
    w.press(w.removeButtons().first(), Qt::Key_Space);
    EXPECT_TRUE(add->isVisible());
    // Where the folder cannot be made.
    QDir(w.home.path() + QStringLiteral("/Pictures")).removeRecursively();
    QFile file(w.home.path() + QStringLiteral("/Pictures"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    w.press(add, Qt::Key_Space);
    EXPECT_TRUE(w.settings.watchedFolders.value().isEmpty());
    EXPECT_EQ(w.sounds.played.size(), 1U);
}

TEST(SettingsViewTest, AWatchedFolderIsChosenOnce)
{
    World w;
    const QUrl chosen(QStringLiteral("file:///srv/in/"));
    const QUrl noText = QUrl::fromEncoded("file:///srv/%FF");
    for (const QUrl &url : { chosen, chosen, noText, QUrl(QStringLiteral("sftp://host/x")) }) {
        w.portal = url;
        w.press(w.button("watch_add"), Qt::Key_Space);
        w.settle();
    }
    EXPECT_EQ(w.settings.watchedFolders.value(), QStringList { QStringLiteral("/srv/in") });
    EXPECT_EQ(w.sounds.played.size(), 2U);
    EXPECT_FALSE(w.titles.first().contains(u'…'));

    // Without a portal the toolkit's own dialog asks, whose buttons are pressed.
    w.portal.clear();
    const QString other = w.home.path() + QStringLiteral("/other");
    ASSERT_TRUE(QDir().mkpath(other));
    w.press(w.button("watch_add"), Qt::Key_Space);
    auto *dialog = w.dialog<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(other);
    static_cast<QDialog *>(dialog)->accept();
    w.settle();
    EXPECT_EQ(w.settings.watchedFolders.value().last(), other);
}

TEST(SettingsViewTest, TheLanguageChangesEveryTextAtOnce)
{
    const QTemporaryDir bundle;
    for (const char *code : { "en", "fr" }) {
        const QString folder
            = bundle.path() + u'/' + QLatin1String(code) + QStringLiteral(".lproj");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/Localizable.strings"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        for (const char *key : { "sec_language", "launch_at_login", "mod_none", "watch_add" })
            file.write(QByteArray(1, '"') + key + "\" = \"" + key + '-' + code + "\";\n");
    }
    World w(bundle.path());
    auto *languages = w.picker("sec_language-en");
    ASSERT_NE(languages, nullptr);
    EXPECT_EQ(languages->count(), 3); // The desktop's, and those that have texts.
    EXPECT_EQ(languages->itemText(2), QStringLiteral("Français"));
    w.settings.language.set(QStringLiteral("ko")); // Without texts it behaves as the desktop's.
    EXPECT_EQ(languages->currentIndex(), 0);
    w.press(languages, Qt::Key_End);
    EXPECT_EQ(w.settings.language.value(), QStringLiteral("fr"));
    EXPECT_EQ(w.picker("sec_language-fr"), languages);
    EXPECT_NE(w.toggle("launch_at_login-fr"), nullptr);
    EXPECT_NE(w.button("watch_add-fr"), nullptr);
    EXPECT_EQ(w.picker("drag_modifier")->itemText(0), QStringLiteral("mod_none-fr"));
}
