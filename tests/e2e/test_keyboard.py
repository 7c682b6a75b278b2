"""Every key of the panel, which has got the keyboard by D-Bus alone, and the hot key, whatever has the keyboard."""
import contextlib
import time

import pytest
from Xlib import X, XK, display as xdisplay, error

from desktop import wait_for
from peers import Editor, record_openings

pytestmark = pytest.mark.main
any_wm = pytest.mark.any_wm
HOT_KEY = ["Control_L", "Alt_L", "s"]


def test_the_whole_table(desktop, program):
    opened = record_openings(desktop, "Recorder")
    program.start()
    files = desktop.files("one.txt", "two.txt", "three.txt")
    names = [str(f) for f in files]
    program.add(*files)
    program.activate()

    def press(*keys):
        desktop.keys(*keys)
        program.wait_until_idle()

    def assert_copies(*lines):
        press("Control_L", "c")
        assert desktop.clipboard().splitlines() == list(lines)
    press("Down")
    assert_copies(names[0])
    press("Shift_L", "Down")
    assert_copies(*names[:2])
    press("Up")
    assert_copies(names[0])
    for keys, total in ((["Return"], 1), (["KP_Enter"], 2), (["Control_L", "o"], 3)):
        press(*keys)
        wait_for(lambda: len(opened()) == total, 5, "the default application")
        program.activate()
    assert {what for _, what in opened()} == {f"Recorder {files[0]}"}
    assert all("_TIME" in start and start.split("_TIME")[1] != "0" for start, _ in opened()), opened()

    press("Control_L", "t")
    program.wait_for_shelf(2, 2)
    press("Control_L", "v")
    program.wait_for_items(1)
    press("Control_L", "3")
    press("Control_L", "0")
    assert program.shelf_number() == (2, 2)
    press("Control_L", "1")
    program.wait_for_shelf(1, 2)
    press("Control_L", "a")
    assert_copies(*names)
    press("BackSpace")
    program.wait_for_items(0)
    press("Control_L", "Shift_L", "z")
    assert program.items() == []
    press("Control_L", "z")
    program.wait_for_items(3)
    press("Down")
    press("Delete")
    program.wait_for_items(2)
    press("Down")
    # A focused button has its own keys; an arrow is not among them.
    press("Tab")
    press("Down")
    press("Escape")
    assert program.panel_is_up()
    program.hide()


@any_wm
def test_keys_are_where_the_layout_and_the_keyboards_map_put_them(desktop, program):
    """Characters are those of the first Latin layout, digits those of the digit row. Keys are named as on a US one."""
    program.prefer(hotKeyCode=101, hotKeyModifiers=4096, hotKeyLabel="F9")
    program.start()
    for number, (layout, letter_a) in enumerate([("ru", "a"), ("ru,fr", "q")], 2):
        program.add(*desktop.files("a"))
        desktop.run("setxkbmap", layout)
        program.activate()
        desktop.keys("Control_L", "t")
        program.wait_for_shelf(number, number)
        desktop.keys("Control_L", "1")
        program.wait_for_shelf(1, number)
        desktop.keys("Control_L", letter_a)
        desktop.keys("Delete")
        program.wait_for_items(0)
    program.kill()
    desktop.run("setxkbmap", "us")
    # Not every X server numbers its keys as the kernel does.
    back_space, f9, number = XK.string_to_keysym("BackSpace"), XK.string_to_keysym("F9"), 248
    desktop.display.change_keyboard_mapping(number, [[back_space] * 2, [f9] * 2])
    desktop.display.change_keyboard_mapping(desktop.display.keysym_to_keycode(f9), [[0] * 2])
    desktop.display.sync()
    program.start()
    program.add(*desktop.files("a"))
    program.summon()
    desktop.keys("Control_L", "a")
    desktop.keys(number)
    program.wait_for_items(0)
    with desktop.held("Super_L"):
        desktop.keys(number + 1)
    program.wait_until_hidden()


def test_the_hot_key_toggles_the_panel_from_another_application(desktop, shelf):
    file = desktop.write(desktop.home / "notes.txt", "some words\n" * 40)
    editor = Editor(desktop, "mousepad", file)
    editor.select_all()  # What the key typed would replace all.

    def assert_toggles(when):
        """From hidden to shown and back, without a change of focus."""
        focused = desktop.active_window()
        for shown in (True, False):
            desktop.keys(*HOT_KEY)
            wait_for(lambda: shelf.panel_is_up() == shown, 2, f"the panel to {'come' if shown else 'go'}: {when}")
            assert desktop.active_window() == focused, when
    for lock in ("Num_Lock", "Caps_Lock"):
        desktop.keys(lock)
        assert_toggles(lock)
    desktop.keys("Caps_Lock")
    with desktop.held(*HOT_KEY):  # Longer than keys need to repeat.
        time.sleep(1.2)
    assert shelf.panel_is_up()
    desktop.keys(*HOT_KEY)
    shelf.wait_until_hidden()
    editor.save()
    time.sleep(0.5)
    assert file.read_text() == "some words\n" * 40
    for layout in (["ru"], ["de"], ["us,ru", "-option", "grp:caps_toggle"]):
        desktop.run("setxkbmap", *layout)
        assert_toggles(layout)
    desktop.keys("Caps_Lock")
    assert_toggles("the second layout of the last")
    desktop.keys("Num_Lock")
    keys = [list(codes) for codes in desktop.display.get_modifier_mapping()]
    keys[5], keys[4] = keys[4], [0] * len(keys[4])
    assert desktop.display.set_modifier_mapping(keys) == X.MappingSuccess
    desktop.keys("Num_Lock")  # On, with another bit.
    assert desktop.root.query_pointer().mask & X.Mod3Mask
    assert_toggles("NumLock with another bit")


def test_a_key_that_another_program_holds_is_left_to_it(desktop, program):
    with contextlib.closing(xdisplay.Display(desktop.environment["DISPLAY"])) as holder:
        key = holder.keysym_to_keycode(XK.XK_s)

        def hold(locks):
            refused = error.CatchError(error.BadAccess)
            holder.screen().root.grab_key(key, X.ControlMask | X.Mod1Mask | locks, True, X.GrabModeAsync,
                                          X.GrabModeAsync, onerror=refused)
            holder.sync()
            return not refused.get_error()
        assert hold(X.Mod2Mask)
        program.start()
        desktop.keys(*HOT_KEY)
        program.assert_stays_down(0.5)
        # Nothing of it was kept.
        assert all(hold(locks) for locks in (0, X.LockMask, X.LockMask | X.Mod2Mask))
