#include "views/ShelfMenu.h"

#include "views/Prompt.h"
#include "views/TitleButton.h"
#include "views/ViewWorld.h"

#include <QDialog>
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
        return static_cast<TitleButton &>(*headerButton(QStringLiteral("shelf_menu_help")));
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
    static QAction *find(const QMenu &menu, const QString &label)
    {
        for (QAction *entry : menu.actions()) {
            if (entry->text() == label)
                return entry;
            if (QAction *inside = entry->menu() ? find(*entry->menu(), label) : nullptr)
                return inside;
        }
        return nullptr;
    }

    Symbols m_symbols { resources() + QStringLiteral("/icons") };
};

QDialog *standingPrompt(const QWidget &window)
{
    for (auto *dialog : window.findChildren<QDialog *>()) {
        if (dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

} // namespace

TEST(ShelfMenuTest, ListsShelvesCommandsAndWhatWasClosedAndActsOnThem)
{
    MenuWorld w(3);
    ShelfStore &store = w.store();
    const QUuid first = store.currentID.value();
    const std::string commands = "--\nshelf_new\tkey_control+T\nshelf_rename\n";
    EXPECT_EQ(w.entries(), "*Vantle  3\n" + commands + "shelf_pin\n-shelf_close\n");

    w.choose(QStringLiteral("shelf_new\tkey_control+T"));
    store.renameShelf(store.currentID.value(), QStringLiteral("R&D\tplan"));
    w.choose(QStringLiteral("shelf_pin"));
    EXPECT_EQ(w.entries(), "Vantle  3\n*R&&D plan  0\n" + commands + "shelf_unpin\nshelf_close\n");
    EXPECT_EQ(w.title().accessibleName(), QStringLiteral("R&D\tplan"));

    w.choose(QStringLiteral("Vantle  3"));
    EXPECT_EQ(store.currentID.value(), first);
    w.choose(QStringLiteral("shelf_close"));
    EXPECT_EQ(w.entries(),
              "*R&&D plan  0\n" + commands
                  + "shelf_unpin\n-shelf_close\nshelf_recent > Vantle\n\n");
    w.choose(QStringLiteral("Vantle"));
    EXPECT_EQ(store.currentID.value(), first);
    EXPECT_EQ(store.shelves.value().size(), 2);
    EXPECT_EQ(store.items.value().size(), 3);

    w.more = { { QStringLiteral("A&B"), [&store] { store.clear(); }, {} } };
    EXPECT_TRUE(w.entries().ends_with("--\nA&&B\n"));
    w.choose(QStringLiteral("A&&B"));
    EXPECT_TRUE(store.items.value().isEmpty());
}

TEST(ShelfMenuTest, LongTitlesAreCutInTheMenuAndLeaveTheHeaderToTheHandle)
{
    MenuWorld w(1);
    w.store().renameShelf(w.store().currentID.value(), QString(40, u'W'));
    w.settle();
    EXPECT_TRUE(w.entries().starts_with("*WWW"));
    EXPECT_NE(w.entries().find("…W"), std::string::npos);
    for (const auto direction : { Qt::LeftToRight, Qt::RightToLeft }) {
        w.view->setLayoutDirection(direction);
        w.settle();
        EXPECT_FALSE(w.title().geometry().intersects(w.handle()->geometry()));
        EXPECT_TRUE(w.title().parentWidget()->rect().contains(w.title().geometry()));
    }
}

TEST(PromptTest, AnswersOnceWithTheTextOrWithNone)
{
    enum class End { Return, Accept, Escape, Cancel, Hidden };
    for (const End end : { End::Return, End::Accept, End::Escape, End::Cancel, End::Hidden }) {
        SCOPED_TRACE(static_cast<int>(end));
        QList<std::optional<QString>> answers;
        QWidget window;
        window.show();
        const auto ask = [&](const QString &text) {
            Prompt::ask(&window,
                        { QStringLiteral("<b>Name"), text, 3, QStringLiteral("OK"),
                          QStringLiteral("No"), 260 },
                        [&](const std::optional<QString> &answer) { answers.append(answer); });
        };
        ask(QStringLiteral("old.txt"));
        QDialog *dialog = standingPrompt(window);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(QGuiApplication::modalWindow(), dialog->windowHandle());
        ask(QStringLiteral("another"));
        EXPECT_EQ(standingPrompt(window), dialog);
        auto &field = *dialog->findChild<QLineEdit *>();
        EXPECT_EQ(field.size(), QSize(260, 24));
        EXPECT_EQ(field.selectedText(), QStringLiteral("old"));
        QTest::keyClicks(&field, QStringLiteral("new"));
        EXPECT_TRUE(answers.isEmpty());
        const auto buttons = dialog->findChildren<QPushButton *>();
        switch (end) {
        case End::Return:
            QTest::keyClick(&field, Qt::Key_Return);
            break;
        case End::Escape:
            QTest::keyClick(&field, Qt::Key_Escape);
            break;
        case End::Accept:
        case End::Cancel:
            for (auto *button : buttons) {
                if (button->text() == (end == End::Accept ? u"OK" : u"No"))
                    button->click();
            }
            break;
        case End::Hidden:
            window.hide();
            break;
        }
        const bool accepted = end == End::Return || end == End::Accept;
        ASSERT_EQ(answers.size(), 1);
        EXPECT_EQ(answers.first(),
                  accepted ? std::optional(QStringLiteral("new.txt")) : std::nullopt);
        // The next question may come from the answer.
        ask(QStringLiteral("third"));
        EXPECT_NE(standingPrompt(window), nullptr);
    }
}
