#include "app/AppDelegate.h"

namespace {

// Virtual key codes: physical keys, whatever the layout.
constexpr int keyDelete = 51; // The one that deletes backwards.
constexpr int keyEscape = 53;
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
    if (event.characters == QLatin1String("a")) {
        m_store.selectAll();
        return true;
    }
    if (event.characters == QLatin1String("z"))
        return (event.modifiers & EventModifier::Shift) == 0 && m_store.undoRemove();
    return false;
}
