// Every state of the views over fakes, as pictures: gallery --shots DIR [--only PART]
// Without a folder: a window with the hot key's recorder, to try it in.
//
// Each picture is made in light and dark at one and at two pixels a point. A
// picture of the build before, kept in another folder, is what to compare with.

#include "MenuShots.h"
#include "RecorderWindow.h"
#include "SettingsShots.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "panel/DockTab.h"
#include "platform/Autostart.h"
#include "platform/Icons.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "store/QuickLookController.h"
#include "store/ShelfStore.h"
#include "views/DockTabView.h"
#include "views/ShelfView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QListView>
#include <QMimeDatabase>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleFactory>
#include <QTemporaryDir>

#include <functional>
#include <vector>

namespace {

/// Theme icons by name and kind; nothing is looked at.
class GalleryIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &url) override
    {
        if (url.path().endsWith(u'/'))
            return QIcon::fromTheme(QStringLiteral("folder"));
        const auto type
            = QMimeDatabase().mimeTypeForFile(url.path(), QMimeDatabase::MatchExtension);
        return QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
    }
    QIcon forWebLocation() override { return QIcon::fromTheme(QStringLiteral("text-html")); }
};

class GalleryAutostart final : public Autostart
{
public:
    bool enabled() const override { return false; }
    std::optional<QString> setEnabled(bool) override { return std::nullopt; }
};

enum class Scheme { Light, Dark };

/// A store and a view over it, in a window's clothes and in virtual time.
class Stage
{
public:
    Stage(const QString &resources, Qt::LayoutDirection direction)
        : texts(Localizer::findBundle({ resources }).value_or(resources), {})
        , settings(m_preferences, m_autostart, texts, {})
        , store(AppPaths(Directories { {}, m_home.path().toUtf8(), {}, {}, {}, {}, {} }), queue,
                m_workers, m_bookmarks, m_sounds, texts)
        , view(store, settings, texts, m_ql, m_icons, m_session, queue, resources)
    {
        view.setLayoutDirection(direction);
        view.resize(238, 318);
        view.ensurePolished();
    }

    ShelfItem item(const QString &path) const
    {
        ShelfItem result;
        result.id = QUuid::createUuid();
        result.url = FilePath::toUrl(
            path.toUtf8(), path.endsWith(u'/') ? FilePath::Kind::Directory : FilePath::Kind::File);
        return result;
    }

    void fill(const QStringList &paths)
    {
        QList<ShelfItem> items;
        for (const auto &path : paths)
            items.append(item(path));
        store.items.set(items);
    }

    void fillUsual()
    {
        fill({ QStringLiteral("/home/ada/Documents/Annual report 2023.pdf"),
               QStringLiteral("/home/ada/Pictures/Lisbon/IMG_4471.jpg"),
               QStringLiteral("/home/ada/Projects/website/") });
        auto items = store.items.value();
        auto link = item(QStringLiteral("/tmp/link.webloc"));
        link.link = QUrl(QStringLiteral("https://www.debian.org/releases/stable/"));
        link.preview = QStringLiteral("debian.org/releases/stable");
        auto text = item(QStringLiteral("/home/ada/.local/share/Vantle/Dropped/Text snippet.txt"));
        text.preview = QStringLiteral("Remember to ask about the train tickets");
        items << link << text << item(QStringLiteral("/home/ada/Music/Quartet in C minor.flac"))
              << item(QStringLiteral("/home/ada/Downloads/backup-2024-05-01.tar.gz"));
        store.items.set(items);
    }

    /// Moves the pointer over a row, or over its remove button.
    void hover(int row, bool button)
    {
        auto *list = view.findChild<QListView *>();
        const QRect rect = list->visualRect(list->model()->index(row, 0));
        QPointF at = rect.center();
        if (button)
            at.setX(view.isRightToLeft() ? rect.left() + 16 : rect.right() - 16);
        QMouseEvent move(QEvent::MouseMove, at, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &move);
    }

    void select(std::initializer_list<int> rows)
    {
        QSet<QUuid> ids;
        for (const int row : rows)
            ids.insert(store.items.value()[row].id);
        store.selection.set(ids);
    }

private:
    QTemporaryDir m_home;
    FakePreferences m_preferences;
    GalleryAutostart m_autostart;
    FakeBookmarks m_bookmarks;
    FakeSounds m_sounds;
    QuickLookController m_ql;
    GalleryIcons m_icons;
    FakeDragSession m_session;

public:
    VirtualQueue queue;

private:
    VirtualWorkers m_workers { queue };

public:
    Localizer texts;
    AppSettings settings;
    ShelfStore store;
    ShelfView view;
};

struct Shot
{
    const char *name;
    std::function<void(Stage &)> prepare;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

std::vector<Shot> emptyShots()
{
    return {
        { "empty", [](Stage &) {} },
        { "empty-targeted", [](Stage &s) { s.view.setTargeted(true); } },
        { "empty-smallest", [](Stage &s) { s.view.resize(210, 240); } },
        { "empty-toast", [](Stage &s) { s.view.showToast(QStringLiteral("Link copied")); } },
        { "empty-right-to-left", [](Stage &) {}, Qt::RightToLeft },
    };
}

std::vector<Shot> listShots()
{
    const auto usual = [](Stage &s) { s.fillUsual(); };
    return {
        { "one",
          [](Stage &s) { s.fill({ QStringLiteral("/home/ada/Documents/Annual report.pdf") }); } },
        { "full", usual },
        { "many",
          [](Stage &s) {
              QStringList paths;
              for (int i = 1; i <= 1234; ++i)
                  paths << QStringLiteral("/srv/scans/page %1.png").arg(i, 4, 10, QChar(u'0'));
              s.fill(paths);
              s.queue.settle();
              s.store.focus.set(s.store.items.value()[700].id);
          } },
        { "hover",
          [=](Stage &s) {
              usual(s);
              s.hover(1, false);
          } },
        { "hover-button",
          [=](Stage &s) {
              usual(s);
              s.hover(1, true);
          } },
        { "selected",
          [=](Stage &s) {
              usual(s);
              s.select({ 1, 2, 4 });
              s.hover(2, false);
          } },
        { "targeted",
          [=](Stage &s) {
              usual(s);
              s.view.setTargeted(true);
          } },
        { "toast",
          [=](Stage &s) {
              usual(s);
              s.view.showToast(QStringLiteral("3 items removed. Undo with Ctrl+Z"));
          } },
        { "toast-long",
          [=](Stage &s) {
              usual(s);
              s.view.showToast(QStringLiteral(
                  "Could not upload “Annual report 2023 (final, reviewed, really).pdf”: the server "
                  "did not answer in time and then closed the connection"));
          } },
        { "pinned-long-title",
          [=](Stage &s) {
              usual(s);
              const auto id = s.store.currentID.value();
              s.store.renameShelf(id, QStringLiteral("Everything that the tax office asked for"));
              s.store.togglePin(id);
          } },
        { "pinned",
          [=](Stage &s) {
              usual(s);
              s.store.togglePin(s.store.currentID.value());
          } },
        { "smallest",
          [=](Stage &s) {
              usual(s);
              s.view.resize(210, 240);
          } },
        { "removing", // In the middle of the motion.
          [=](Stage &s) {
              usual(s);
              s.queue.settle();
              auto items = s.store.items.value();
              items.removeAt(1);
              items.append(s.item(QStringLiteral("/home/ada/new.ods")));
              s.store.items.set(items);
              s.queue.advance(0.09);
          } },
    };
}

std::vector<Shot> nameShots()
{
    const auto long_ = [](Stage &s) {
        s.fill({ QStringLiteral("/home/ada/Documents/A very long name that goes on and on until "
                                "nobody reads it any more (final version 3).docx"),
                 QStringLiteral("/very/deep/") + QStringLiteral("folder/").repeated(40)
                     + QStringLiteral("x.c"),
                 QStringLiteral("/home/ada/") + QString(5000, u'w') + QStringLiteral(".txt"),
                 QStringLiteral("/home/ada/two\nlines\tand a tab.md"),
                 QStringLiteral("/home/ada/تقرير سنوي.pdf"),
                 QStringLiteral("/home/ada/写真 東京.png") });
    };
    return {
        { "long-names", long_ },
        { "long-names-hover",
          [=](Stage &s) {
              long_(s);
              s.hover(0, true);
          } },
        { "right-to-left",
          [](Stage &s) {
              s.fillUsual();
              s.select({ 1 });
              s.hover(2, false);
          },
          Qt::RightToLeft },
        { "right-to-left-long", long_, Qt::RightToLeft },
    };
}

QPalette paletteOf(Scheme scheme)
{
    if (scheme == Scheme::Light)
        return QStyleFactory::create(QStringLiteral("Fusion"))->standardPalette();
    QPalette dark(QColor(0x2b, 0x2c, 0x30));
    dark.setColor(QPalette::Base, QColor(0x22, 0x23, 0x26));
    dark.setColor(QPalette::Highlight, QColor(0x3d, 0x9b, 0xe0));
    return dark;
}

/// The view inside the panel's border, on a desktop of middle grey.
QImage picture(QWidget &view, const QPalette &palette, double ratio)
{
    const int margin = 12;
    const QRect panel(margin, margin, view.width() + 2, view.height() + 2);
    QImage image((panel.size() + QSize(2 * margin, 2 * margin)) * ratio,
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(QColor(0x7d, 0x86, 0x94));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor border = palette.color(QPalette::WindowText);
    border.setAlphaF(0.22F);
    painter.setPen(border);
    painter.setBrush(palette.window());
    painter.drawRoundedRect(QRectF(panel).adjusted(0.5, 0.5, -0.5, -0.5), 11.5, 11.5);
    view.render(&painter, panel.topLeft() + QPoint(1, 1), {}, QWidget::DrawChildren);
    return image;
}

/// The docked panel's tab against the sides of a desktop, with counts of every width.
void shootTabs(Scheme scheme, const QString &resources, const QDir &folder)
{
    const QPalette palette = paletteOf(scheme);
    QApplication::setPalette(palette);
    Stage stage(resources, Qt::LeftToRight);
    DockTabModel model;
    DockTabView view(stage.store, model);
    const QSize desktop(90, 216);
    for (const int ratio : { 1, 2 }) {
        QImage image(desktop * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(QColor(0x7d, 0x86, 0x94));
        QPainter painter(&image);
        int top = 9;
        for (const int count : { 1, 24, 1234 }) {
            stage.fill(QStringList(count, QStringLiteral("/home/ada/a.txt")));
            for (const auto edge : { DockEdge::Left, DockEdge::Right }) {
                model.edge.set(edge);
                const int x = edge == DockEdge::Left ? 0 : desktop.width() - view.width();
                view.render(&painter, QPoint(x, top), {}, QWidget::DrawChildren);
            }
            top += view.height() + 9;
        }
        painter.end();
        const auto name
            = QStringLiteral("tab-%1@%2x.png")
                  .arg(scheme == Scheme::Light ? QStringLiteral("light") : QStringLiteral("dark"),
                       QString::number(ratio));
        if (!image.save(folder.filePath(name)))
            qWarning("Cannot write %s", qPrintable(folder.filePath(name)));
    }
}

void shootShelfMenus(Scheme scheme, const QString &resources, const QDir &folder)
{
    QApplication::setPalette(paletteOf(scheme));
    Stage stage(resources, Qt::LeftToRight);
    shootMenus(stage.store, stage.texts, resources, folder.path(),
               scheme == Scheme::Light ? QStringLiteral("light") : QStringLiteral("dark"));
}

void shootRecorder(Scheme scheme, const QString &resources, const QDir &folder)
{
    QApplication::setPalette(paletteOf(scheme));
    RecorderWindow(resources).shoot(
        folder.path(), scheme == Scheme::Light ? QStringLiteral("light") : QStringLiteral("dark"));
}

void shoot(const Shot &shot, Scheme scheme, const QString &resources, const QDir &folder)
{
    QIcon::setThemeName(scheme == Scheme::Light ? QStringLiteral("breeze")
                                                : QStringLiteral("breeze-dark"));
    const QPalette palette = paletteOf(scheme);
    QApplication::setPalette(palette);
    Stage stage(resources, shot.direction);
    stage.view.setAttribute(Qt::WA_DontShowOnScreen);
    stage.view.show();
    stage.queue.advance(1);
    shot.prepare(stage);
    stage.queue.advance(qstrcmp(shot.name, "removing") == 0 ? 0 : 0.5);
    QApplication::processEvents();
    for (const int ratio : { 1, 2 }) {
        const auto name
            = QStringLiteral("%1-%2@%3x.png")
                  .arg(QLatin1String(shot.name),
                       scheme == Scheme::Light ? QStringLiteral("light") : QStringLiteral("dark"),
                       QString::number(ratio));
        if (!picture(stage.view, palette, ratio).save(folder.filePath(name)))
            qWarning("Cannot write %s", qPrintable(folder.filePath(name)));
    }
}

}

int main(int argc, char **argv)
{
    const bool isLive = argc == 1;
    qputenv("QT_QPA_PLATFORM", isLive ? "xcb" : "offscreen");
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QIcon::setThemeSearchPaths({ QStringLiteral("/usr/share/icons") });
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption({ QStringLiteral("shots"), QStringLiteral("Writes all pictures."),
                        QStringLiteral("folder") });
    options.addOption({ QStringLiteral("only"), QStringLiteral("Those whose name holds this."),
                        QStringLiteral("part") });
    options.process(application);
    const QString resources
        = QDir::cleanPath(QApplication::applicationDirPath() + QStringLiteral("/../share/vantle"));
    if (isLive) {
        RecorderWindow window(resources);
        window.show();
        return QApplication::exec();
    }
    if (!options.isSet(QStringLiteral("shots")))
        options.showHelp(2);

    const QDir folder(options.value(QStringLiteral("shots")));
    folder.mkpath(QStringLiteral("."));
    for (const auto &shots : { emptyShots(), listShots(), nameShots() }) {
        for (const auto &shot : shots) {
            if (!QLatin1String(shot.name).contains(options.value(QStringLiteral("only"))))
                continue;
            shoot(shot, Scheme::Light, resources, folder);
            shoot(shot, Scheme::Dark, resources, folder);
        }
    }
    if (QStringLiteral("tab").contains(options.value(QStringLiteral("only")))) {
        shootTabs(Scheme::Light, resources, folder);
        shootTabs(Scheme::Dark, resources, folder);
    }
    if (QStringLiteral("shelf-menu shelf-rename").contains(options.value(QStringLiteral("only")))) {
        shootShelfMenus(Scheme::Light, resources, folder);
        shootShelfMenus(Scheme::Dark, resources, folder);
    }
    if (QStringLiteral("recorder").contains(options.value(QStringLiteral("only")))) {
        shootRecorder(Scheme::Light, resources, folder);
        shootRecorder(Scheme::Dark, resources, folder);
    }
    if (QStringLiteral("settings").contains(options.value(QStringLiteral("only")))) {
        QIcon::setThemeName(QStringLiteral("breeze"));
        QApplication::setPalette(paletteOf(Scheme::Light));
        shootSettings(resources, folder.path(), QStringLiteral("light"));
        QIcon::setThemeName(QStringLiteral("breeze-dark"));
        QApplication::setPalette(paletteOf(Scheme::Dark));
        shootSettings(resources, folder.path(), QStringLiteral("dark"));
    }
    return 0;
}
