#include "gallery/Exhibit.h"
#include "gallery/Stage.h"

#include "panel/DockTab.h"
#include "views/settings/AboutView.h"
#include "views/settings/ApplicationPicker.h"
#include "views/settings/HotKeyRecorder.h"
#include "views/settings/SettingsView.h"
#include "views/shelf/DockTabView.h"

#include <QApplication>
#include <QFormLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>

namespace {

QList<InstalledApplication> applications()
{
    QList<InstalledApplication> result;
    for (const char *name : { "Calculator", "Files", "Image Viewer", "Text Editor" })
        result.append({ QLatin1String(name), QLatin1String(name),
                        QStringLiteral("system-file-manager"), true });
    return result;
}

class SettingsExhibit final : public Exhibit
{
public:
    /// Scrolled to some place, or so tall that nothing needs scrolling.
    enum class Part { Top, Middle, Bottom, Whole };

    SettingsExhibit(const Surroundings &surroundings, Part part)
        : m_stage(surroundings)
        , m_view(m_stage.settings, m_stage.texts,
                 SettingsDesktop { m_stage.queue,
                                   m_stage.workers,
                                   m_stage.sounds,
                                   m_stage.icons,
                                   Gallery::resources(),
                                   [](const QKeyEvent &) { return KeyEvent {}; },
                                   applications,
                                   [] { return QByteArray("/home/ada/Pictures/Screenshots"); },
                                   {} })
    {
        auto &settings = m_stage.settings;
        settings.ignoredApps.set({ QStringLiteral("Files"), QStringLiteral("org.example.Gone") });
        settings.watchedFolders.set(
            { QStringLiteral("/home/ada/Scans"),
              QStringLiteral("/home/ada/Documents/Incoming/From the office in Lisbon/2023") });
        if (part == Part::Whole) { // What shows in few cases only.
            settings.shakeToSummon.set(false);
            settings.setHotKey(49, HotKeyModifier::Control | HotKeyModifier::Option,
                               QStringLiteral("⌃⌥Space"));
        }
        m_view.setAttribute(Qt::WA_DontShowOnScreen);
        m_view.resize(m_view.sizeHint());
        m_view.show();
        m_stage.queue.settle();
        QApplication::processEvents();
        scroll(part);
    }

    QWidget &widget() override { return m_view; }

private:
    void scroll(Part part)
    {
        auto *bar = m_view.verticalScrollBar();
        if (part == Part::Whole)
            m_view.resize(m_view.width(), m_view.height() + bar->maximum());
        else if (part == Part::Middle)
            bar->setValue(std::min(bar->pageStep() * 9 / 10, bar->maximum()));
        else if (part == Part::Bottom)
            bar->setValue(bar->maximum());
        QApplication::processEvents();
    }

    Stage m_stage;
    SettingsView m_view;
};

class PickerExhibit final : public Exhibit
{
public:
    enum class Search { Empty, Typed };

    PickerExhibit(const Surroundings &surroundings, Search search)
        : m_stage(surroundings)
        , m_picker(new ApplicationPicker(applications(), m_stage.texts, nullptr))
    {
        if (search == Search::Typed)
            m_picker->findChild<QLineEdit *>()->setText(QStringLiteral("e"));
        m_picker->ensurePolished();
        m_picker->setAttribute(Qt::WA_DontShowOnScreen);
        m_picker->show();
        QApplication::processEvents();
    }

    QWidget &widget() override { return *m_picker; }

private:
    Stage m_stage;
    std::unique_ptr<ApplicationPicker> m_picker;
};

class RecorderExhibit final : public Exhibit
{
public:
    enum class State { Default, Recording, Another };

    RecorderExhibit(const Surroundings &surroundings, State state)
        : m_stage(surroundings)
        , m_recorder(new HotKeyRecorder(m_stage.settings, m_stage.texts, m_stage.sounds,
                                        [](const QKeyEvent &) { return KeyEvent {}; }))
    {
        auto *form = new QFormLayout(&m_window);
        form->addRow(m_stage.text("hotkey_label"), m_recorder);
        m_window.setAttribute(Qt::WA_DontShowOnScreen);
        if (state == State::Another)
            m_stage.settings.setHotKey(49, HotKeyModifier::Control | HotKeyModifier::Option,
                                       QStringLiteral("⌃⌥Space"));
        m_window.resize(m_window.sizeHint());
        m_window.show();
        if (state == State::Recording)
            m_recorder->findChild<QPushButton *>()->click();
        QApplication::processEvents();
    }

    QWidget &widget() override { return m_window; }

private:
    Stage m_stage;
    QWidget m_window;
    HotKeyRecorder *m_recorder;
};

class AboutExhibit final : public Exhibit
{
public:
    explicit AboutExhibit(const Surroundings &surroundings)
        : m_stage(surroundings)
        , m_view(m_stage.texts, Gallery::resources(), QStringLiteral("0.1.0 (1)"))
    {
        m_view.setAttribute(Qt::WA_DontShowOnScreen);
        m_view.show();
        QApplication::processEvents();
    }

    QWidget &widget() override { return m_view; }

private:
    Stage m_stage;
    AboutView m_view;
};

/// The docked panel's tab against both sides of a desktop, with counts of every width.
class TabExhibit final : public Exhibit
{
public:
    explicit TabExhibit(const Surroundings &surroundings)
    {
        int top = 9;
        m_desktop.setFixedWidth(90);
        m_desktop.setPalette(QColor(0x7d, 0x86, 0x94));
        for (const int count : { 1, 24, 1234 }) {
            for (const auto edge : { DockEdge::Left, DockEdge::Right }) {
                auto &tab = *m_tabs.emplace_back(std::make_unique<Tab>(surroundings, m_desktop));
                tab.stage.fill(QStringList(count, QStringLiteral("/home/ada/a.txt")));
                tab.model.edge.set(edge);
                tab.view.move(edge == DockEdge::Left ? 0 : m_desktop.width() - tab.view.width(),
                              top);
            }
            top += m_tabs.back()->view.height() + 9;
        }
        m_desktop.setFixedHeight(top);
        m_desktop.setAttribute(Qt::WA_DontShowOnScreen);
        m_desktop.show();
        QApplication::processEvents();
    }

    QWidget &widget() override { return m_desktop; }

private:
    struct Tab
    {
        Tab(const Surroundings &surroundings, QWidget &desktop)
            : stage(surroundings)
            , view(stage.store, model, &desktop)
        {
            view.setPalette(QApplication::palette());
        }
        Stage stage;
        DockTabModel model;
        DockTabView view;
    };

    QWidget m_desktop;
    std::vector<std::unique_ptr<Tab>> m_tabs;
};

template<typename Kind, typename... State>
ExhibitEntry entry(const char *name, State... state)
{
    return { QLatin1String(name), ExhibitEntry::Frame::Window,
             [state...](const Surroundings &surroundings) {
                 return std::make_unique<Kind>(surroundings, state...);
             } };
}

}

std::vector<ExhibitEntry> windowExhibits()
{
    return {
        entry<SettingsExhibit>("settings-top", SettingsExhibit::Part::Top),
        entry<SettingsExhibit>("settings-middle", SettingsExhibit::Part::Middle),
        entry<SettingsExhibit>("settings-bottom", SettingsExhibit::Part::Bottom),
        entry<SettingsExhibit>("settings-whole", SettingsExhibit::Part::Whole),
        entry<PickerExhibit>("settings-applications", PickerExhibit::Search::Empty),
        entry<PickerExhibit>("settings-applications-found", PickerExhibit::Search::Typed),
        entry<RecorderExhibit>("recorder", RecorderExhibit::State::Default),
        entry<RecorderExhibit>("recorder-recording", RecorderExhibit::State::Recording),
        entry<RecorderExhibit>("recorder-another", RecorderExhibit::State::Another),
        entry<AboutExhibit>("about"),
        entry<TabExhibit>("tab"),
    };
}
