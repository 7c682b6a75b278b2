"""The hot key, pressed as a user would, whatever has the keyboard."""
import time

import pytest
from Xlib import X, XK, display as xdisplay, error

from desktop import wait_for
from peers import Editor

main = pytest.mark.main
HOT_KEY = ["Control_L", "Alt_L", "s"]


def assert_toggles(desktop, program):
    """From hidden to shown and back, without a change of focus."""
    focused = desktop.active_window()
    for shown in (True, False):
        desktop.keys(*HOT_KEY)
        wait_for(lambda: program.panel_is_up() == shown, 2, f"the panel to {'come' if shown else 'go'}")
        assert desktop.active_window() == focused


@main
def test_the_key_toggles_the_panel_from_another_application(desktop, shelf):
    file = desktop.write(desktop.home / "notes.txt", "some words\n" * 40)
    editor = Editor(desktop, "mousepad", file)
    editor.select_all()  # What the key typed would replace all.
    assert_toggles(desktop, shelf)
    for lock in ("Num_Lock", "Caps_Lock"):
        desktop.keys(lock)
        assert_toggles(desktop, shelf)
    desktop.keys("Caps_Lock")
    with desktop.held(*HOT_KEY):  # Longer than keys need to repeat.
        time.sleep(1.2)
    assert shelf.panel_is_up()
    desktop.keys(*HOT_KEY)
    shelf.wait_until_hidden()
    editor.save()
    time.sleep(0.5)
    assert file.read_text() == "some words\n" * 40


@main
def test_the_key_stays_where_it_is_when_the_keyboard_changes(desktop, shelf):
    for layout in (["ru"], ["de"], ["us,ru", "-option", "grp:caps_toggle"]):
        desktop.run("setxkbmap", *layout)
        assert_toggles(desktop, shelf)
    desktop.keys("Caps_Lock")  # The second layout of the last.
    assert_toggles(desktop, shelf)
    # NumLock gets another bit, and is on.
    keys = [list(codes) for codes in desktop.display.get_modifier_mapping()]
    keys[5], keys[4] = keys[4], [0] * len(keys[4])
    assert desktop.display.set_modifier_mapping(keys) == X.MappingSuccess
    desktop.keys("Num_Lock")
    assert desktop.root.query_pointer().mask & X.Mod3Mask
    assert_toggles(desktop, shelf)


@main
def test_a_key_that_another_program_holds_is_left_to_it(desktop, program):
    holder = xdisplay.Display(desktop.environment["DISPLAY"])
    key = holder.keysym_to_keycode(XK.XK_s)
    state = X.ControlMask | X.Mod1Mask

    def hold(locks):
        refused = error.CatchError(error.BadAccess)
        holder.screen().root.grab_key(key, state | locks, True, X.GrabModeAsync, X.GrabModeAsync, onerror=refused)
        holder.sync()
        return not refused.get_error()

    assert hold(X.Mod2Mask)
    program.start()
    desktop.keys(*HOT_KEY)
    time.sleep(0.5)
    assert not program.panel_is_up()
    # Nothing of it was kept.
    assert all(hold(locks) for locks in (0, X.LockMask, X.LockMask | X.Mod2Mask))
    program.summon()
    holder.close()
