"""The settings' window: it opens in front, each change holds at once and after a restart."""
import json
import time

import pytest
from gi.repository import GLib

from desktop import wait_for
from peers import Editor
from program import BUS_NAME

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
