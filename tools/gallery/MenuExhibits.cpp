#include "gallery/Exhibit.h"
#include "gallery/Stage.h"

#include "views/list/RowMenu.h"
#include "views/shelf/ShelfMenu.h"

#include <QApplication>
#include <QMenu>

namespace {

/// A menu as large as it wants to be, its first entry under the pointer. A popup
/// would grab the keyboard, so it is never shown.
void layOut(QMenu &menu)
{
    menu.ensurePolished();
    menu.resize(menu.sizeHint());
    menu.setActiveAction(menu.actions().first());
}

class ShelfMenuExhibit final : public Exhibit
{
public:
    explicit ShelfMenuExhibit(const Surroundings &surroundings)
        : m_stage(surroundings)
    {
        m_stage.fillShelves();
        m_menu
            = std::make_unique<ShelfMenu>(m_stage.store, m_stage.texts, m_stage.symbols, nullptr);
        layOut(*m_menu);
    }

    QWidget &widget() override { return *m_menu; }

private:
    Stage m_stage;
    std::unique_ptr<ShelfMenu> m_menu;
};

/// What a row's menu is opened for; the last two are its submenus.
enum class RowCase { File, Link, Selection, OpenWith, Shelves };

class RowMenuExhibit final : public Exhibit
{
public:
    RowMenuExhibit(const Surroundings &surroundings, RowCase which)
        : m_stage(surroundings)
        , m_rows(m_stage.store, m_stage.texts, m_actions)
    {
        m_actions = { [](const QList<Address> &, const QString &) {},
                      [](const QUrl &) { return applications(); }, [] {},
                      [](const QList<QUrl> &) {}, [](const QList<Address> &) {} };
        m_stage.fillShelves();
        m_stage.fillUsual();
        if (which == RowCase::Selection)
            m_stage.select({ 0, 1, 2 });
        // As when it pops up.
        m_menu.setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }"));
        m_rows.fill(m_menu, m_stage.store.items.value()[which == RowCase::Link ? 3 : 1]);
        if (which == RowCase::OpenWith || which == RowCase::Shelves) {
            for (const QAction *action : m_menu.actions()) {
                if (action->menu() && (m_shown == &m_menu || which == RowCase::Shelves))
                    m_shown = action->menu();
            }
        }
        layOut(*m_shown);
    }

    QWidget &widget() override { return *m_shown; }

private:
    static QList<OpenWithApp> applications()
    {
        QList<OpenWithApp> result;
        for (const char *name : { "Gwenview", "Image Viewer", "Cut & Paste Studio" })
            result.append(
                { QLatin1String(name), QLatin1String(name), QStringLiteral("image-x-generic") });
        return result;
    }

    Stage m_stage;
    RowActions m_actions;
    RowMenu m_rows;
    QMenu m_menu;
    QMenu *m_shown = &m_menu;
};

template<typename Kind, typename Case>
ExhibitEntry entry(const char *name, Case which)
{
    return { QLatin1String(name), ExhibitEntry::Frame::Window,
             [which](const Surroundings &surroundings) {
                 return std::make_unique<Kind>(surroundings, which);
             } };
}

}

std::vector<ExhibitEntry> menuExhibits()
{
    return {
        { QStringLiteral("shelf-menu"), ExhibitEntry::Frame::Window,
          [](const Surroundings &surroundings) {
              return std::make_unique<ShelfMenuExhibit>(surroundings);
          } },
        entry<RowMenuExhibit>("row-menu-file", RowCase::File),
        entry<RowMenuExhibit>("row-menu-link", RowCase::Link),
        entry<RowMenuExhibit>("row-menu-selection", RowCase::Selection),
        entry<RowMenuExhibit>("row-menu-open-with", RowCase::OpenWith),
        entry<RowMenuExhibit>("row-menu-shelves", RowCase::Shelves),
    };
}
