#include "views/shelf/ShelfMenu.h"

#include "views/ViewWorld.h"
#include "views/look/TitleButton.h"
#include "views/shelf/Prompt.h"

#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

/// The menu as it would open now; it is never shown, because a popup grabs the
/// keyboard, which needs a display.
class MenuWorld : public ViewWorld
{
public:
    using ViewWorld::ViewWorld;

    /// Its entries, one a line: what is checked bears a star, what is disabled a dash.
    std::string entries() { return entriesOf(*menu()); }
    void choose(const QString &label)
    {
        const auto opened = menu();
        if (QAction *entry = find(*opened, label))
            entry->trigger();
        else
            ADD_FAILURE() << "no entry " << qPrintable(label);
        settle();
    }
    TitleButton &title() const
    {
        return static_cast<TitleButton &>(*headerButton(u"shelf_menu_help"_s));
    }

    QList<MenuEntry> more; // That the program adds.

private:
    std::unique_ptr<ShelfMenu> menu()
    {
        auto made = std::make_unique<ShelfMenu>(store(), texts, m_symbols, view.get());
        made->addMore(more);
        return made;
    }

    static std::string entriesOf(const QMenu &menu)
    {
        std::string result;
        for (const QAction *entry : menu.actions()) {
            result += entry->isChecked() ? "*" : entry->isEnabled() ? "" : "-";
            result += entry->isSeparator() ? "--" : entry->text().toStdString();
            if (entry->menu())
                result += " > " + entriesOf(*entry->menu());
            result += '\n';
        }
        return result;
    }
    Symbols m_symbols { resources() + u"/icons"_s };
};

} // namespace

TEST(ShelfMenuTest, ListsShelvesCommandsAndWhatWasClosedAndActsOnThem)
{
    MenuWorld w(3);
    ShelfStore &store = w.store();
    const QUuid first = store.currentID.value();
    const std::string commands = "--\nshelf_new\tkey_control+T\nshelf_rename\n";
    EXPECT_EQ(w.entries(), "*Vantle  3\n" + commands + "shelf_pin\n-shelf_close\n");

    w.choose(u"shelf_new\tkey_control+T"_s);
    store.renameShelf(store.currentID.value(), u"R&D\tplan"_s);
    w.choose(u"shelf_pin"_s);
    EXPECT_EQ(w.entries(), "Vantle  3\n*R&&D plan  0\n" + commands + "shelf_unpin\nshelf_close\n");
    EXPECT_EQ(w.title().accessibleName(), u"R&D\tplan"_s);

    w.choose(u"Vantle  3"_s);
    EXPECT_EQ(store.currentID.value(), first);
    w.choose(u"shelf_close"_s);
    EXPECT_EQ(w.entries(),
              "*R&&D plan  0\n" + commands
                  + "shelf_unpin\n-shelf_close\nshelf_recent > Vantle\n\n");
    w.choose(u"Vantle"_s);
    EXPECT_EQ(store.currentID.value(), first);
    EXPECT_EQ(store.shelves.value().size(), 2);
    EXPECT_EQ(store.items.value().size(), 3);

    w.more = { { u"A&B"_s, [&store] { store.clear(); }, {} } };
    EXPECT_TRUE(w.entries().ends_with("--\nA&&B\n"));
    w.choose(u"A&&B"_s);
    EXPECT_TRUE(store.items.value().isEmpty());
}

TEST(PromptTest, StandsInTheViewAndAnswersOnceWithTheTextOrWithNone)
{
    enum End { Return, Escape, Cancel, Hidden };
    for (const End end : { Return, Escape, Cancel, Hidden }) {
        SCOPED_TRACE(end);
        QList<std::optional<QString>> answers;
        QWidget view;
        QPushButton below(&view);
        view.resize(210, 240);
        view.show();
        below.setFocus();
        const auto ask = [&](const char *text) {
            Prompt::ask(&view, { u"<b>Name"_s, QLatin1String(text), 3, u"OK"_s, u"No"_s, 260 },
                        [&](const std::optional<QString> &answer) { answers.append(answer); });
        };
        ask("old.txt");
        ask("another");
        EXPECT_FALSE(below.isEnabled());
        auto *field = view.findChild<QLineEdit *>();
        for (int stop = 0; stop <= 3; ++stop) { // The keyboard goes round inside.
            EXPECT_EQ(view.focusWidget() == field, stop % 3 == 0);
            QTest::keyClick(view.focusWidget(), Qt::Key_Tab);
        }
        field->setSelection(0, 3);
        QTest::keyClicks(field, u"new"_s);
        EXPECT_TRUE(answers.isEmpty());
        if (end == Return || end == Escape)
            QTest::keyClick(field, end == Return ? Qt::Key_Return : Qt::Key_Escape);
        else if (end == Hidden)
            view.hide();
        else if (end == Cancel)
            view.findChildren<QPushButton *>().last()->click();
        ASSERT_EQ(answers.size(), 1);
        EXPECT_EQ(answers.first(), end == Return ? std::optional(u"new.txt"_s) : std::nullopt);
        EXPECT_TRUE(below.isEnabled());
        EXPECT_EQ(view.focusWidget(), &below);
        ask("third"); // The next question may come from the answer.
        EXPECT_TRUE(Prompt::stands(view));
    }
}
