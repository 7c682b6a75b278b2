#include "views/settings/SettingsView.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "app/settings/ShortcutText.h"
#include "base/FilePath.h"
#include "platform/Icons.h"
#include "views/look/AccessibleRole.h"
#include "views/look/PlainText.h"
#include "views/look/SlimScrollBar.h"
#include "views/look/Switch.h"
#include "views/look/TextButton.h"
#include "views/settings/EntryList.h"
#include "views/settings/IconLabel.h"
#include "views/settings/Picker.h"
#include "views/settings/Section.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QShowEvent>
#include <QSignalBlocker>

#include <algorithm>
#include <array>

namespace {

constexpr QSize usualSize(460, 560);
constexpr int margin = 20;

struct Language
{
    QLatin1String code;
    const char *name; // In the language itself.
};

constexpr std::array languages {
    Language { QLatin1String("zh-Hans"), "简体中文" },
    Language { QLatin1String("zh-Hant"), "繁體中文" },
    Language { QLatin1String("en"), "English" },
    Language { QLatin1String("fr"), "Français" },
    Language { QLatin1String("es"), "Español" },
    Language { QLatin1String("de"), "Deutsch" },
    Language { QLatin1String("it"), "Italiano" },
    Language { QLatin1String("ja"), "日本語" },
    Language { QLatin1String("ko"), "한국어" },
};

/// A modifier as it is written in front of a key, without that key.
QString modifierText(const QString &symbol, const Localizer &texts)
{
    QString text = shortcutText(symbol + u'S', texts);
    text.chop(2);
    return text;
}

}

SettingsView::SettingsView(AppSettings &settings, const Localizer &texts,
                           const SettingsDesktop &desktop, QWidget *parent)
    : QScrollArea(parent)
    , m_settings(settings)
    , m_texts(texts)
    , m_desktop(desktop)
    , m_symbols(desktop.resources + QStringLiteral("/icons"))
    // Asked first: the icons choose the theme in which the applications' are found.
    , m_folderIcon(desktop.icons.forFile(FilePath::toUrl("/", FilePath::Kind::Directory)))
    , m_form(new QWidget)
{
    auto *layout = new QVBoxLayout(m_form);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(18);
    layout->addWidget(makeHeader());
    addLanguage();
    addGeneral();
    addSummon();
    addIgnored();
    addWatched();
    addItems();
    layout->addStretch();
    setAccessibleRole(*this, QAccessible::Window);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setVerticalScrollBar(new SlimScrollBar(this));
    setWidget(m_form);
    // The texts have their language already when it is announced.
    m_subscriptions.push_back(settings.language.subscribe(
        [this](const QString &) {
            for (const auto &text : m_sayings)
                text();
        },
        Deliver::ChangesOnly));
}

QSize SettingsView::sizeHint() const
{
    const int needed = m_form->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width();
    const QSize available = screen()->availableSize() - QSize(40, 80);
    return QSize(std::max(usualSize.width(), needed), usualSize.height()).boundedTo(available);
}

QWidget *SettingsView::makeHeader()
{
    auto *header = new QWidget;
    auto *layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(14);
    const QIcon icon(m_desktop.resources + QStringLiteral("/icons/app.vantleapp.Vantle.svg"));
    layout->addWidget(new IconLabel(icon, 64, header));
    auto *lines = new QVBoxLayout;
    lines->setSpacing(2);
    auto *name = new SizedLabel(1.5, QFont::DemiBold, header);
    setText(name, QStringLiteral("app_name"));
    auto *tagline = new PlainLabel(header);
    tagline->setWordWrap(true);
    setText(tagline, QStringLiteral("app_tagline"));
    auto *version = new Note(header);
    say([this, version] {
        const QString number = QCoreApplication::applicationVersion();
        version->setText(m_texts.text(QStringLiteral("version_label"),
                                      { number.isEmpty() ? QStringLiteral("0.1.0") : number }));
    });
    lines->addStretch();
    for (auto *line : std::initializer_list<QLabel *> { name, tagline, version }) {
        alignToLeading(*line);
        lines->addWidget(line);
    }
    lines->addStretch();
    layout->addLayout(lines, 1);
    return header;
}

void SettingsView::addLanguage()
{
    Words rows { { QStringLiteral("system"), words(QStringLiteral("lang_system")) } };
    for (const auto &language : languages) {
        if (m_texts.codes().contains(language.code))
            rows.emplace_back(language.code,
                              [name = language.name] { return QString::fromUtf8(name); });
    }
    auto *section = addSection(QStringLiteral("sec_language"));
    addPicker(*section, QStringLiteral("sec_language"), m_settings.language, rows);
}

void SettingsView::addGeneral()
{
    auto *section = addSection(QStringLiteral("sec_general"));
    addSwitch(*section, QStringLiteral("launch_at_login"), m_settings.launchAtLogin);
}

void SettingsView::addSummon()
{
    auto *section = addSection(QStringLiteral("sec_summon"));
    addSwitch(*section, QStringLiteral("toggle_drag_summon"), m_settings.shakeToSummon);
    auto *modifier = addPicker(*section, QStringLiteral("drag_modifier"), m_settings.dragModifier,
                               modifierWords());
    m_subscriptions.push_back(m_settings.shakeToSummon.subscribe(
        [modifier](bool enabled) { modifier->setEnabled(enabled); }));
    addSwitch(*section, QStringLiteral("toggle_corner_summon"), m_settings.cornerToSummon);
    addPicker(*section, QStringLiteral("summon_position"), m_settings.summonPosition,
              { { QStringLiteral("topRight"), words(QStringLiteral("pos_topright")) },
                { QStringLiteral("cursor"), words(QStringLiteral("pos_cursor")) },
                { QStringLiteral("last"), words(QStringLiteral("pos_last")) } });
    addSwitch(*section, QStringLiteral("toggle_dock_edge"), m_settings.dockToEdge);
    setText(section->addNote(), QStringLiteral("dock_edge_hint"));
    auto *recorder = new HotKeyRecorder(m_settings, m_texts, m_desktop.sounds, m_desktop.readKey);
    auto *field = recorder->findChild<QPushButton *>();
    setText(section->addRow(recorder, field), QStringLiteral("hotkey_label"));
    say([this, field] {
        field->setAccessibleDescription(m_texts.text(QStringLiteral("hotkey_label")));
    });
    setText(section->addNote(), QStringLiteral("hotkey_hint"));
}

SettingsView::Words SettingsView::modifierWords() const
{
    Words modifiers { { QStringLiteral("none"), words(QStringLiteral("mod_none")) } };
    const std::pair<QLatin1String, QString> keys[] = {
        { QLatin1String("command"), QStringLiteral("⌘") },
        { QLatin1String("option"), QStringLiteral("⌥") },
        { QLatin1String("control"), QStringLiteral("⌃") },
        { QLatin1String("shift"), QStringLiteral("⇧") },
    };
    for (const auto &[word, symbol] : keys) {
        modifiers.emplace_back(word, [this, symbol = symbol] {
            return m_texts.text(QStringLiteral("mod_hold"), { modifierText(symbol, m_texts) });
        });
    }
    return modifiers;
}

void SettingsView::addIgnored()
{
    auto *section = addSection(QStringLiteral("sec_ignored"));
    auto *add = makeButton(QStringLiteral("ignored_add"));
    m_ignored = new EntryList(m_symbols, add);
    section->addRow(m_ignored);
    section->addRow(add);
    setText(section->addNote(), QStringLiteral("ignored_hint"));
    say([this] { m_ignored->setRemoveText(m_texts.text(QStringLiteral("remove"))); });
    QObject::connect(add, &QPushButton::clicked, this, [this] { pickIgnoredApp(); });
    m_ignored->onRemove = [this](const QString &identifier) {
        auto identifiers = m_settings.ignoredApps.value();
        identifiers.removeAll(identifier);
        m_settings.ignoredApps.set(identifiers);
    };
    m_subscriptions.push_back(m_settings.ignoredApps.subscribe(
        [this](const QStringList &identifiers) { showIgnored(identifiers); }));
}

void SettingsView::addWatched()
{
    auto *section = addSection(QStringLiteral("sec_watch"));
    auto *hint = new Note;
    setText(hint, QStringLiteral("watch_hint"));
    section->addRow(hint);
    auto *add = makeButton(QStringLiteral("watch_add"));
    m_watched = new EntryList(m_symbols, add);
    section->addRow(m_watched);
    section->addRow(add);
    auto *addScreenshots = makeButton(QStringLiteral("watch_add_screenshots"));
    section->addRow(addScreenshots);
    m_addScreenshots = addScreenshots->parentWidget();
    say([this] { m_watched->setRemoveText(m_texts.text(QStringLiteral("remove"))); });
    QObject::connect(add, &QPushButton::clicked, this, [this] { pickWatchFolder(); });
    QObject::connect(addScreenshots, &QPushButton::clicked, this,
                     [this] { addScreenshotFolder(); });
    m_watched->onRemove = [this](const QString &path) {
        auto paths = m_settings.watchedFolders.value();
        paths.removeAll(path);
        m_settings.watchedFolders.set(paths);
    };
    m_subscriptions.push_back(m_settings.watchedFolders.subscribe(
        [this](const QStringList &paths) { showWatched(paths); }));
}

void SettingsView::addItems()
{
    auto *section = addSection(QStringLiteral("sec_items"));
    addPicker(*section, QStringLiteral("auto_cleanup"), m_settings.autoCleanup,
              { { QStringLiteral("off"), words(QStringLiteral("cleanup_off")) },
                { QStringLiteral("1h"), words(QStringLiteral("cleanup_1h")) },
                { QStringLiteral("1d"), words(QStringLiteral("cleanup_1d")) },
                { QStringLiteral("1w"), words(QStringLiteral("cleanup_1w")) } });
    addPicker(*section, QStringLiteral("double_click"), m_settings.doubleClickAction,
              { { QStringLiteral("quicklook"), words(QStringLiteral("quick_look_short")) },
                { QStringLiteral("open"), words(QStringLiteral("open")) },
                { QStringLiteral("reveal"), words(QStringLiteral("reveal_finder")) } });
    addSwitch(*section, QStringLiteral("remove_after_drag"), m_settings.removeAfterDragOut);
}

Section *SettingsView::addSection(const QString &titleKey)
{
    auto *section = new Section;
    setText(section->title(), titleKey);
    say([this, section, titleKey] { section->setAccessibleName(m_texts.text(titleKey)); });
    m_form->layout()->addWidget(section);
    return section;
}

Switch *SettingsView::addSwitch(Section &section, const QString &key, Observable<bool> &property)
{
    auto *control = new Switch;
    setText(control, key);
    section.addRow(control);
    QObject::connect(control, &Switch::toggled, this, [&property](bool on) { property.set(on); });
    m_subscriptions.push_back(property.subscribe([control](bool on) {
        const QSignalBlocker quiet(control);
        control->setChecked(on);
    }));
    return control;
}

Picker *SettingsView::addPicker(Section &section, const QString &key, Observable<QString> &property,
                                const Words &rows)
{
    auto *picker = new Picker;
    for (const auto &[word, label] : rows)
        picker->addItem(QString(), word);
    say([picker, rows] {
        for (size_t row = 0; row < rows.size(); ++row)
            picker->setItemText(static_cast<int>(row), rows[row].second());
    });
    setText(section.addRow(picker, picker), key);
    QObject::connect(picker, &QComboBox::currentIndexChanged, this,
                     [picker, &property] { property.set(picker->word()); });
    m_subscriptions.push_back(
        property.subscribe([picker](const QString &word) { picker->setWord(word); }));
    return picker;
}

QPushButton *SettingsView::makeButton(const QString &key)
{
    auto *button = new TextButton;
    button->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setText(button, key);
    return button;
}

template<typename Widget>
void SettingsView::setText(Widget *widget, const QString &key)
{
    say([this, widget, key] { widget->setText(m_texts.text(key)); });
}

void SettingsView::say(std::function<void()> text)
{
    text();
    m_sayings.push_back(std::move(text));
}

std::function<QString()> SettingsView::words(const QString &key) const
{
    return [this, key] { return m_texts.text(key); };
}

void SettingsView::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    if (!event->spontaneous())
        refreshDesktop({});
}

/// The toolkit would destroy the native window, and with it the place where the user left it.
void SettingsView::closeEvent(QCloseEvent *event)
{
    event->ignore();
    hide();
}

void SettingsView::changeEvent(QEvent *event)
{
    QScrollArea::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
    for (auto *label : m_form->findChildren<QLabel *>()) {
        if (auto *sized = dynamic_cast<SizedLabel *>(label))
            sized->fit();
    }
}

/// Another language, another hot key, a row that comes up: with large texts the form
/// may need more than the window was made for.
bool SettingsView::eventFilter(QObject *watched, QEvent *event)
{
    const bool result = QScrollArea::eventFilter(watched, event);
    if (watched == m_form && event->type() == QEvent::LayoutRequest && width() < sizeHint().width())
        setFixedWidth(sizeHint().width());
    return result;
}

/// From top to bottom: the toolkit's own order is that in which the widgets were
/// made, and entries come and go.
bool SettingsView::focusNextPrevChild(bool next)
{
    auto stops = m_form->findChildren<QWidget *>();
    stops.removeIf([this](const QWidget *widget) {
        return (widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->isVisibleTo(this)
            || !widget->isEnabled();
    });
    const auto place = [this](const QWidget *widget) {
        const QPoint middle = widget->mapTo(m_form, widget->rect().center());
        return std::pair(middle.y(), isRightToLeft() ? -middle.x() : middle.x());
    };
    std::sort(stops.begin(), stops.end(),
              [&](const auto *one, const auto *other) { return place(one) < place(other); });
    if (stops.isEmpty())
        return false;
    const auto current = stops.indexOf(focusWidget());
    const auto count = stops.size();
    const auto target
        = current < 0 ? (next ? 0 : count - 1) : (current + (next ? 1 : count - 1)) % count;
    stops[target]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    ensureWidgetVisible(stops[target]);
    return true;
}
