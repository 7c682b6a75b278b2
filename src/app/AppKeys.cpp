#include "app/AppDelegate.h"

#include "fileops/FileOps.h"

namespace {

// Virtual key codes: physical keys, whatever the layout.
constexpr int keyReturn = 36;
constexpr int keyDelete = 51; // The one that deletes backwards.
constexpr int keyEscape = 53;
constexpr int keyEnter = 76; // On the keypad.
constexpr int keyForwardDelete = 117;
constexpr int keyDown = 125;
constexpr int keyUp = 126;

}

/// Decides what a key in the panel does; true when it was consumed. With Command
/// the character decides, without it the physical key.
bool AppDelegate::handleKey(const KeyEvent &event)
{
    if ((event.modifiers & EventModifier::Command) != 0)
        return handleCommandKey(event);
    const bool anySelected = !m_store.selection.value().isEmpty();
    const auto extend = (event.modifiers & EventModifier::Shift) != 0 ? ShelfStore::Extend::Yes
                                                                      : ShelfStore::Extend::No;
    switch (event.keyCode) {
    case keyDown:
        m_store.moveSelection(1, extend);
        return true;
    case keyUp:
        m_store.moveSelection(-1, extend);
        return true;
    case keyReturn:
    case keyEnter:
        return openSelection();
    case keyEscape:
        if (anySelected)
            m_store.deselectAll();
        else
            m_panel->hide();
        return true;
    case keyDelete:
    case keyForwardDelete:
        if (anySelected)
            m_store.removeIds(m_store.selection.value());
        return anySelected;
    default:
        return false;
    }
}

bool AppDelegate::handleCommandKey(const KeyEvent &event)
{
    if (event.characters.size() != 1)
        return false;
    const char16_t key = event.characters.at(0).unicode();
    switch (key) {
    case u'a':
        m_store.selectAll();
        return true;
    case u'z':
        return (event.modifiers & EventModifier::Shift) == 0 && m_store.undoRemove();
    case u'c':
        return copySelection();
    case u'v':
        return pasteIntoShelf();
    case u't':
        m_store.newShelf();
        return true;
    case u'o':
        return openSelection();
    default:
        return key >= u'1' && key <= u'9' && switchToShelf(key - u'1');
    }
}

bool AppDelegate::openSelection()
{
    QList<Address> urls;
    for (const ShelfItem &item : m_store.selectedItems())
        urls.append(item.url);
    if (urls.isEmpty())
        return false;
    FileOps::open(urls, m_desktop.applications, m_desktop.workers);
    return true;
}

bool AppDelegate::switchToShelf(qsizetype index)
{
    if (index >= m_store.shelves.value().size())
        return false;
    m_store.switchToIndex(index);
    return true;
}
