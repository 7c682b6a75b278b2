#pragma once

#include "base/Observable.h"
#include "platform/InstalledApplication.h"
#include "views/look/Symbols.h"
#include "views/settings/HotKeyRecorder.h"

#include <QIcon>
#include <QScrollArea>

#include <functional>
#include <memory>
#include <vector>

class AppSettings;
class EntryList;
class Icons;
class Localizer;
class MainQueue;
class Picker;
class QPushButton;
class Section;
class Sounds;
class Switch;
class Workers;

/// What the settings ask of the desktop.
struct SettingsDesktop
{
    MainQueue &queue;
    Workers &workers;
    Sounds &sounds;
    Icons &icons;
    QString resources; // The folder with icons.
    HotKeyRecorder::KeyReader readKey;
    // Both are called on worker threads.
    std::function<QList<InstalledApplication>()> installedApplications;
    std::function<QByteArray()> screenshotFolder; // It need not exist.
    // The desktop's question for a folder in front of a window, with its title; the first
    // callback takes the choice, the second is called where the desktop does not ask.
    std::function<void(QWidget &, const QString &, std::function<void(const QUrl &)>,
                       std::function<void()>)>
        chooseFolder;
};

/// The content of the settings window: one form, in which each control is bound to
/// a preference, both ways and at once. Main thread.
class SettingsView final : public QScrollArea
{
public:
    SettingsView(AppSettings &settings, const Localizer &texts, const SettingsDesktop &desktop,
                 QWidget *parent = nullptr);

    /// The window's size; wider where text is so large that the form needs it.
    QSize sizeHint() const override;

    void pickIgnoredApp();
    void pickWatchFolder();

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    using Words = std::vector<std::pair<QString, std::function<QString()>>>;

    QWidget *makeHeader();
    void addLanguage();
    void addGeneral();
    void addSummon();
    void addIgnored();
    void addWatched();
    void addItems();

    Section *addSection(const QString &titleKey);
    Switch *addSwitch(Section &section, const QString &key, Observable<bool> &property);
    Picker *addPicker(Section &section, const QString &key, Observable<QString> &property,
                      const Words &rows);
    QPushButton *makeButton(const QString &key);
    template<typename Widget>
    void setText(Widget *widget, const QString &key);
    void say(std::function<void()> text);
    std::function<QString()> words(const QString &key) const;
    Words modifierWords() const;

    /// then: what goes on when the answers are there; may be none.
    void refreshDesktop(const std::function<void()> &then);
    void offerApplications();
    void showIgnored(const QStringList &identifiers);
    void showWatched(const QStringList &paths);
    void addWatchedFolder(const QByteArray &folder);
    void addScreenshotFolder();

    AppSettings &m_settings;
    const Localizer &m_texts;
    SettingsDesktop m_desktop;
    Symbols m_symbols;
    QIcon m_folderIcon;
    QWidget *m_form;
    EntryList *m_ignored = nullptr;
    EntryList *m_watched = nullptr;
    QWidget *m_addScreenshots = nullptr; // The whole row of the button.
    QList<InstalledApplication> m_installed;
    QByteArray m_screenshotFolder; // Empty until it is known.
    std::vector<std::function<void()>> m_sayings; // Each sets a text in the language in force.
    std::vector<Ticket> m_subscriptions;
    // Results that come back later ask it first.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
