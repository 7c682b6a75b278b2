#include "views/RowMenu.h"

#include "views/RenamePrompt.h"
#include "views/ViewWorld.h"

#include <QLineEdit>
#include <QMenu>

namespace {

/// A view whose every action is written down. The menu is filled but never shown: a
/// popup grabs the keyboard, which needs a display.
class MenuWorld : public ViewWorld
{
public:
    explicit MenuWorld(int count)
        : ViewWorld(count)
    {
        view->actions.open = [this](const QList<QUrl> &urls, const QString &application) {
            opened = urls;
            openedWith = application;
        };
        view->actions.apps = [this](const QUrl &url) {
            asked.append(url);
            return apps;
        };
        view->actions.reveal = [this](const QList<QUrl> &urls) { revealed = urls; };
        view->actions.copyText = [this](const QList<QUrl> &urls) { copied = urls; };
        m_rowMenu.onRename = [this](const ShelfItem &item) { view->rename(item); };
        m_rowMenu.onToast = [this](const QString &text) { view->showToast(text); };
    }

    /// The entries of a row's menu, or of a submenu.
    QString entries(int row, const QString &submenu = {})
    {
        QMenu menu;
        m_rowMenu.fill(menu, item(row));
        const QMenu *shown = submenu.isEmpty() ? &menu : find(menu, submenu)->menu();
        QStringList labels;
        for (const QAction *action : shown->actions())
            labels.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        return labels.join(u'|');
    }

    void choose(int row, const QString &text)
    {
        QMenu menu;
        m_rowMenu.fill(menu, item(row));
        QAction *action = find(menu, text);
        ASSERT_TRUE(action) << qPrintable(text);
        action->trigger();
        settle();
    }

    QList<OpenWithApp> apps { { QStringLiteral("a.desktop"), QStringLiteral("Cut & Paste"), {} },
                              { QStringLiteral("b.desktop"), QStringLiteral("Other"), {} } };
    QList<QUrl> asked, opened, revealed, copied;
    QString openedWith;

private:
    static QAction *find(const QMenu &menu, const QString &text)
    {
        for (QAction *action : menu.actions()) {
            if (action->text() == text)
                return action;
            if (QAction *inside = action->menu() ? find(*action->menu(), text) : nullptr)
                return inside;
        }
        return nullptr;
    }

    RowMenu m_rowMenu { store(), texts, view->actions };
};

ShelfItem made(const char *name, bool synced, bool shared)
{
    ShelfItem item = World::item(FilePath::toUrl(QByteArray("/x/") + name));
    if (synced)
        item.driveFileId = QStringLiteral("id");
    if (shared)
        item.driveLink = QStringLiteral("https://example.org");
    return item;
}

}

TEST(RowMenuTest, WhatIsOfferedFollowsFromTheTargets)
{
    using Entry = RowMenu::Entry;
    const ShelfItem text = made("a.txt", false, false);
    const ShelfItem image = made("b.JPG", true, false);
    const ShelfItem shared = made("c.png", true, true);
    ShelfItem web = made("d.webloc", false, false);
    web.link = QUrl(QStringLiteral("https://example.org"));
    struct Case
    {
        const char *what;
        QList<ShelfItem> targets; // The row's own is the first.
        QList<Entry> absent;
    };
    const Case cases[] = {
        { "a file",
          { text },
          { Entry::ImageResize, Entry::ImageMakePdf, Entry::CopyLink, Entry::OpenLink,
            Entry::CloudDelete } },
        { "a synced image", { image }, { Entry::Upload, Entry::CopyLink, Entry::OpenLink } },
        { "synced images with a link", { image, shared }, { Entry::Rename, Entry::Upload } },
        { "synced and not", { text, shared }, { Entry::Rename, Entry::ImageConvert } },
        { "a web link",
          { web },
          { Entry::Reveal, Entry::Rename, Entry::ImageConvert, Entry::CopyLink,
            Entry::CloudDelete } },
        { "mixed", { web, text }, { Entry::Rename, Entry::ImageRemoveBackground } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        for (const Entry entry : { Entry::Open, Entry::Reveal, Entry::Rename, Entry::Copy,
                                   Entry::Share, Entry::SaveToShelf, Entry::Upload, Entry::Remove })
            EXPECT_EQ(RowMenu::applies(entry, c.targets.first(), c.targets),
                      !c.absent.contains(entry));
        for (const Entry entry : c.absent)
            EXPECT_FALSE(RowMenu::applies(entry, c.targets.first(), c.targets))
                << static_cast<int>(entry);
    }
    EXPECT_TRUE(RowMenu::applies(Entry::ImageMakePdf, image, { image, shared }));
    EXPECT_TRUE(RowMenu::applies(Entry::CloudDelete, text, { text, image }));
    EXPECT_TRUE(RowMenu::applies(Entry::OpenLink, text, { text, shared }));
}

TEST(RowMenuTest, ARowOutsideTheSelectionStandsForItselfAlone)
{
    MenuWorld w(4);
    w.click(w.row(1));
    w.click(w.row(2), Qt::ControlModifier);
    const QList<QUrl> selected { w.item(1).url, w.item(2).url };

    EXPECT_EQ(w.entries(0),
              u"open|open_with|reveal_finder|rename_menu|-|copy_path|save_to_shelf|-|-|remove"_qs);
    w.choose(0, QStringLiteral("open"));
    EXPECT_EQ(w.opened, QList<QUrl> { w.item(0).url });
    EXPECT_EQ(w.openedWith, QString());
    EXPECT_EQ(w.selectedRows(), QList<int>({ 1, 2 }));

    EXPECT_EQ(w.entries(2),
              u"open|open_with|reveal_finder|-|copy_path|save_to_shelf|-|-|remove_n"_qs);
    w.choose(2, QStringLiteral("reveal_finder"));
    EXPECT_EQ(w.revealed, selected);
    w.choose(2, QStringLiteral("copy_path"));
    EXPECT_EQ(w.copied, selected);
    EXPECT_EQ(w.view->toastText(), QStringLiteral("copied"));
    EXPECT_EQ(w.entries(2, QStringLiteral("open_with")), u"Cut && Paste|Other"_qs);
    w.choose(2, QStringLiteral("Other"));
    EXPECT_EQ(w.opened, selected);
    EXPECT_EQ(w.openedWith, QStringLiteral("b.desktop"));
    w.choose(2, QStringLiteral("remove_n"));
    EXPECT_EQ(w.store().items.value().size(), 2);
}

TEST(RowMenuTest, ApplicationsAreAskedForBeforeTheMenuOpens)
{
    MenuWorld w(3);
    w.move(w.row(1));
    w.move(w.row(1) + QPoint(1, 0));
    w.store().click(w.item(2).id, 0);
    w.settle();
    EXPECT_EQ(w.asked, (QList<QUrl> { w.item(1).url, w.item(2).url }));
}

TEST(RowMenuTest, ADoubleClickDoesWhatTheSettingSays)
{
    MenuWorld w(3);
    int previews = 0;
    w.view->actions.preview = [&] { ++previews; };
    const QList<QUrl> url { w.item(1).url };
    w.settings.doubleClickAction.set(QStringLiteral("open"));
    w.doubleClick(w.row(1));
    EXPECT_EQ(w.opened, url);
    w.settings.doubleClickAction.set(QStringLiteral("reveal"));
    w.doubleClick(w.row(1));
    EXPECT_EQ(w.revealed, url);
    EXPECT_EQ(w.selectedRows(), QList<int> { 1 });
    w.store().deselectAll();
    w.settings.doubleClickAction.set(QStringLiteral("anything"));
    w.view->activate(w.item(1));
    EXPECT_EQ(previews, 1);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 1 }));
    EXPECT_EQ(w.ql.startIndex, 1);

    w.store().addLink(QUrl(QStringLiteral("https://example.org/a")));
    w.settle();
    w.view->activate(w.item(3)); // An address is opened whatever the setting says.
    EXPECT_EQ(w.opened, QList<QUrl> { QUrl(QStringLiteral("https://example.org/a")) });
    EXPECT_EQ(previews, 1);
}

TEST(RowMenuTest, RenamingKeepsTheExtensionSelectedOutAndTellsWhyItFailed)
{
    MenuWorld w(0);
    w.store().add({ w.world.file("a.tar.gz"), w.world.file("taken") });
    w.settle();
    const auto answer = [&](const QString &name) {
        w.choose(0, QStringLiteral("rename_menu"));
        auto *field = w.view->findChild<QLineEdit *>();
        ASSERT_TRUE(field);
        EXPECT_TRUE(field->text().startsWith(field->selectedText() + u'.'));
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
        w.settle();
    };
    answer(QStringLiteral("taken"));
    EXPECT_EQ(w.view->toastText(), QStringLiteral("rename_failed"));
    EXPECT_EQ(w.item(0).url.fileName(), QStringLiteral("a.tar.gz"));
    answer(QStringLiteral("  b c.gz "));
    EXPECT_EQ(w.item(0).url.fileName(), QStringLiteral("b c.gz"));
    EXPECT_TRUE(FilePath::exists(w.world.home() + "/b c.gz"));
    for (const char *refused : { "", "  ", "same", "a/b", "..", ".hidden" })
        EXPECT_FALSE(FileOps::acceptedName(QLatin1String(refused), QStringLiteral("same")))
            << refused;
}
