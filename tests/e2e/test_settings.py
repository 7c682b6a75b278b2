"""The settings' window: it opens in front, each change holds at once and after a restart."""
import json
import time

import pytest
from gi.repository import GLib

from desktop import wait_for
from peers import Editor, target
from program import BUS_NAME
from test_gestures import file_source
from test_keyboard import activate
from test_rowmenu import record_applications
from test_storage import state_of

main = pytest.mark.main
TITLE = "Vantle Settings"


def act(program, name):
    program.bus.call_sync(BUS_NAME, "/app/vantleapp/Vantle", "org.freedesktop.Application", "ActivateAction",
                          GLib.Variant("(sava{sv})", (name, [], {})), None, 0, 5000)


def open_settings(desktop, program):
    """It has the keyboard, whoever had it."""
    act(program, "settings")
    window = desktop.window(TITLE, program.process.pid)
    wait_for(lambda: desktop.active_window() == window.id, 5, "the settings to get the keyboard")
    return window


def stored(program):
    return json.loads(program.preferences.read_text())


def tab(desktop, times):
    for _ in range(times):
        desktop.keys("Tab")


@main
def test_the_window_comes_to_the_front_and_stays_where_it_was_left(desktop, shelf):
    Editor(desktop, "mousepad", desktop.write(desktop.home / "other.txt", "x"))
    other = desktop.window("other.txt")
    desktop.activate(other)
    window = open_settings(desktop, shelf)
    rect = desktop.rect(window)
    assert (rect.width, rect.height) == (460, 560)
    assert abs(rect.centre[0] - 640) < 20 and abs(rect.centre[1] - 400) < 45  # The title bar's height.
    left = desktop.place(window, 100, 90, 460, 560)
    for hide in ("cover", "close"):
        if hide == "close":
            desktop.keys("Control_L", "w")
            wait_for(lambda: not desktop.windows(TITLE), what="the window to close")
        desktop.activate(other)
        window = open_settings(desktop, shelf)
        assert len(desktop.windows(TITLE)) == 1
        rect = desktop.rect(window)
        assert abs(rect.x - left.x) < 8 and abs(rect.y - left.y) < 40, hide


@main
def test_changes_hold_at_once_and_after_a_restart(desktop, program):
    """By keyboard alone, in the order of the form: language, login, drag, its key, corner, place, dock, hot key."""
    program.prefer(dockToEdge=True)
    program.start()
    entry = desktop.config_home / "autostart/app.vantleapp.Vantle.desktop"
    open_settings(desktop, program)
    tab(desktop, 1)
    desktop.keys("space")
    wait_for(entry.exists, what="the entry that starts it at login")
    tab(desktop, 3)
    desktop.keys("space")
    wait_for(lambda: stored(program).get("cornerToSummon") is False, what="the corner to be off")
    tab(desktop, 1)
    desktop.keys("Down")
    wait_for(lambda: stored(program).get("summonPosition") == "cursor", what="the pointer's place")
    tab(desktop, 2)
    desktop.keys("space")  # Records.
    time.sleep(0.3)
    desktop.keys("Control_L", "Alt_L", "j")
    wait_for(lambda: stored(program).get("hotKeyLabel") == "⌥⌘J", what="the hot key")

    def assert_in_force():
        desktop.move(300, 300)
        desktop.keys("Control_L", "Alt_L", "j")
        wait_for(program.panel_is_up, 3, "the panel to come up by the new key")
        rect = program.panel_rect()
        assert rect.x <= 330 and rect.x + rect.width >= 270, rect
        desktop.keys("Control_L", "Alt_L", "j")
        program.wait_until_hidden()
    assert_in_force()
    program.restart()
    assert_in_force()
    window = open_settings(desktop, program)
    tab(desktop, 4)
    desktop.keys("space")
    wait_for(lambda: stored(program)["cornerToSummon"] is True, what="the corner to be on again")
    assert desktop.active_window() == window.id


@main
def test_what_rows_and_drags_do_follows_the_form_and_outlives_a_restart(desktop, program):
    """By keyboard alone in the form: the drag's switch and key, the watched folder, expiry, double click, drag out."""
    opened = record_applications(desktop, "Viewer")
    old, new = (desktop.write(desktop.home / f"{name}.txt", name) for name in ("old", "new"))
    desktop.write(program.state_file, state_of(old))
    program.start()
    desktop.run(program.binary, new)
    program.wait_for_items(2)
    files = file_source(desktop, place=(20, 20, 160, 160))
    receiver = target(desktop, place=(20, 420, 200, 200))

    def drag_summons(*keys):
        if program.panel_is_up():
            activate(program)
            desktop.keys("Escape")
            program.wait_until_hidden()
        desktop.begin_drag(*files.centre)
        with desktop.held(*keys):
            desktop.glide(300, 300)
            time.sleep(0.4)
            came = program.panel_is_up()
        desktop.release()
        program.wait_until_hidden()
        return came

    def set_here(key, value, *keys):
        desktop.keys(*keys)
        wait_for(lambda: stored(program).get(key) == value, 3, f"{key} to be {value}")

    open_settings(desktop, program)
    tab(desktop, 2)
    set_here("shakeToSummon", False, "space")
    assert not drag_summons()
    open_settings(desktop, program)
    set_here("shakeToSummon", True, "space")
    assert drag_summons()
    open_settings(desktop, program)
    tab(desktop, 1)
    set_here("dragModifier", "shift", "End")
    tab(desktop, 7)
    folder = desktop.home / "Pictures/Screenshots"
    set_here("watchedFolders", [str(folder)], "space")
    tab(desktop, 2)  # From the new entry: the button has done its work and is gone.
    set_here("autoCleanup", "1h", "Down")
    program.wait_for_items(1)
    tab(desktop, 1)
    set_here("doubleClickAction", "open", "Down")
    tab(desktop, 1)
    set_here("removeAfterDragOut", True, "space")
    desktop.keys("Control_L", "w")

    for turn in range(2):
        assert not drag_summons()
        assert drag_summons("Shift_L")
        shot = desktop.write(folder / f"shot {turn}.png", "x")
        program.wait_for_items(2)
        assert program.paths()[-1] == str(shot).encode()
        desktop.double_click(*program.row(0))
        wait_for(lambda: opened() == [f"Viewer {new}"] * (turn + 1), 5, "the file to be opened")
        program.give(1, *receiver.centre)
        receiver.event("drop")
        program.wait_for_items(1)
        assert program.paths() == [str(new).encode()]
        program.restart()


def test_an_application_is_ignored(desktop, shelf):
    desktop.write(desktop.data_home / "applications/org.example.Zebra.desktop",
                  "[Desktop Entry]\nType=Application\nName=Zebra Viewer\nExec=true\nIcon=folder\n")
    open_settings(desktop, shelf)
    tab(desktop, 8)
    desktop.keys("space")
    dialog = desktop.window("Add Application", shelf.process.pid)
    wait_for(lambda: desktop.active_window() == dialog.id, 5, "the dialog to get the keyboard")
    for letter in "zebra":
        desktop.keys(letter)
    desktop.keys("Return")
    wait_for(lambda: stored(shelf).get("ignoredApps") == ["org.example.Zebra"], what="the application in the list")
