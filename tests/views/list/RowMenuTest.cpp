#include "views/list/RowMenu.h"

#include "views/ViewWorld.h"
#include "views/shelf/RenamePrompt.h"

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
        view->actions.open = [this](const QList<Address> &urls, const QString &application) {
            opened = urls;
            openedWith = application;
        };
        view->actions.apps = [this](const QUrl &url) {
            asked.append(url);
            return apps;
        };
        view->actions.reveal = [this](const QList<QUrl> &urls) { revealed = urls; };
        view->actions.copyText = [](const QList<Address> &) {};
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
            labels.append(action->isSeparator() ? u"-"_s : action->text());
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

    QList<OpenWithApp> apps { { u"a.desktop"_s, u"Cut & Paste"_s, {} },
                              { u"b.desktop"_s, u"Other"_s, {} } };
    QList<QUrl> asked, revealed;
    QList<Address> opened;
    QString openedWith;

private:
    RowMenu m_rowMenu { store(), texts, view->actions };
};

ShelfItem made(const char *name, bool synced, bool shared)
{
    ShelfItem item = World::item(FilePath::toUrl(QByteArray("/x/") + name));
    if (synced)
        item.driveFileId = u"id"_s;
    if (shared)
        item.driveLink = u"https://example.org"_s;
    return item;
}

}

TEST(RowMenuTest, WhatIsOfferedFollowsFromTheTargets)
{
    using enum RowMenu::Entry;
    const ShelfItem text = made("a.txt", false, false);
    const ShelfItem image = made("b.JPG", true, false);
    const ShelfItem shared = made("c.png", true, true);
    ShelfItem web = made("d.webloc", false, false);
    web.link = QUrl(u"https://example.org"_s);
    const struct
    {
        const char *what;
        QList<ShelfItem> targets; // The row's own is the first.
        QList<RowMenu::Entry> absent;
        QList<RowMenu::Entry> there {}; // Besides what most have.
    } cases[] = {
        { "a file", { text }, { ImageResize, ImageMakePdf, CopyLink, OpenLink, CloudDelete } },
        { "a synced image", { image }, { Upload, CopyLink, OpenLink }, { CloudDelete } },
        { "synced images", { image, shared }, { Rename, Upload }, { ImageMakePdf } },
        { "synced and not", { text, shared }, { Rename, ImageConvert }, { OpenLink, CloudDelete } },
        { "a web link", { web }, { Reveal, Rename, ImageConvert, CopyLink, CloudDelete } },
        { "mixed", { web, text }, { Rename, ImageRemoveBackground } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        QList<RowMenu::Entry> most {
            Open, Reveal, Rename, Copy, Share, SaveToShelf, Upload, Remove
        };
        for (const auto entry : most + c.absent + c.there)
            EXPECT_EQ(RowMenu::applies(entry, c.targets.first(), c.targets),
                      !c.absent.contains(entry));
    }
}

TEST(RowMenuTest, ARowOutsideTheSelectionStandsForItselfAlone)
{
    MenuWorld w(4);
    w.click(w.row(1));
    w.click(w.row(2), Qt::ControlModifier);
    EXPECT_EQ(w.entries(0),
              u"open|open_with|reveal_finder|rename_menu|-|copy_path|save_to_shelf|-|-|remove"_s);
    w.choose(0, u"open"_s);
    EXPECT_EQ(w.opened, QList<Address> { w.item(0).url });
    EXPECT_EQ(w.selectedRows(), QList<int>({ 1, 2 }));

    EXPECT_EQ(w.entries(2),
              u"open|open_with|reveal_finder|-|copy_path|save_to_shelf|-|-|remove_n"_s);
    EXPECT_EQ(w.entries(2, u"open_with"_s), u"Cut && Paste|Other"_s);
    w.choose(2, u"Other"_s);
    EXPECT_EQ(w.opened, QList<Address>({ w.item(1).url, w.item(2).url }));
    EXPECT_EQ(w.openedWith, u"b.desktop"_s);
    w.choose(2, u"remove_n"_s);
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
    const QUrl url = w.item(1).url;
    w.settings.doubleClickAction.set(u"open"_s);
    w.doubleClick(w.row(1));
    EXPECT_EQ(w.opened, QList<Address> { url });
    w.settings.doubleClickAction.set(u"reveal"_s);
    w.doubleClick(w.row(1));
    EXPECT_EQ(w.revealed, QList { url });
    EXPECT_EQ(w.selectedRows(), QList<int> { 1 });
    w.settings.doubleClickAction.set(u"anything"_s);
    w.view->activate(w.item(1));
    EXPECT_EQ(previews, 1);
    EXPECT_EQ(w.ql.startIndex, 1);

    w.store().addText(u"https://Example.org/a"_s);
    w.settle();
    w.view->activate(w.item(3)); // An address is opened whatever the setting says.
    EXPECT_EQ(w.opened.first().text, "https://Example.org/a");
    EXPECT_EQ(previews, 1);
}

TEST(RowMenuTest, RenamingKeepsTheExtensionSelectedOutAndTellsWhyItFailed)
{
    MenuWorld w(0);
    w.store().add({ w.world.file("a.tar.gz"), w.world.file("taken") });
    w.settle();
    const auto answer = [&](const QString &name) {
        w.choose(0, u"rename_menu"_s);
        auto *field = qobject_cast<QLineEdit *>(w.view->focusWidget());
        ASSERT_TRUE(field);
        EXPECT_TRUE(field->text().startsWith(field->selectedText() + u'.'));
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
        w.settle();
    };
    answer(u"taken"_s);
    EXPECT_EQ(w.view->toastText(), u"rename_failed"_s);
    EXPECT_EQ(w.item(0).url.fileName(), u"a.tar.gz"_s);
    answer(u"  b c.gz "_s);
    EXPECT_EQ(w.item(0).url.fileName(), u"b c.gz"_s);
    EXPECT_TRUE(FilePath::exists(w.world.home() + "/b c.gz"));
    for (const char *refused : { "", "  ", "same", "a/b", "..", ".hidden" })
        EXPECT_FALSE(FileOps::acceptedName(QLatin1String(refused), u"same"_s)) << refused;
}
