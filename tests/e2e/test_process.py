"""One instance, the keyboard, and trays of every kind."""
import subprocess
import time

import pytest
from gi.repository import GLib
from Xlib import error

from desktop import wait_for
from peers import FileManager, source, uri_list

main = pytest.mark.main


@main
def test_a_second_start_brings_the_panel_up_and_ends(desktop, shelf):
    thunar = FileManager(desktop, "thunar", desktop.write(desktop.home / "from/a.txt", "x").parent)
    desktop.activate(thunar.window)
    shelf.summon()  # Fails where the second start does not end with status 0.
    desktop.keys("Escape")
    shelf.wait_until_hidden()
    wait_for(lambda: desktop.active_window() == thunar.window.id, what="the keyboard to go back")
    shelf.assert_alive()


@pytest.mark.any_wm
def test_many_starts_at_once_leave_one(desktop, shelf):
    shelf.kill()
    started = [desktop.start(f"vantle-{i}", shelf.binary) for i in range(5)]
    wait_for(lambda: sum(p.poll() is None for p in started) == 1, what="all but one to end")
    assert sorted(p.poll() for p in started if p.poll() is not None) == [0] * 4
    shelf.process = next(p for p in started if p.poll() is None)
    wait_for(shelf.panel_is_up, what="the panel")


@pytest.mark.any_wm
def test_without_an_x_server_it_says_so(desktop, program):
    ended = subprocess.run([program.binary], env=desktop.environment | {"DISPLAY": ":9999"}, capture_output=True, timeout=10)
    assert (ended.returncode, ended.stderr) == (1, b"Vantle needs an X server: it does not run on this platform.\n")


@pytest.mark.any_wm
def test_without_a_bus(desktop, program):
    program.process = desktop.start("vantle", program.binary, environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/x"})
    path = desktop.write(desktop.home / "a.txt", "x")
    program.wait_until_idle()
    program.take(*source(desktop, {"text/uri-list": uri_list(path)}).centre, 1)
    # A second start cannot reach the first; it says so in a window and ends with that.
    second = desktop.start("second", program.binary, environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/x"})
    desktop.activate(desktop.window(pid=second.pid))
    desktop.keys("Escape")
    wait_for(lambda: second.poll() == 1, what="the second start to end")
    program.assert_alive()
    assert len(program.items()) == 1


TRAYS = {
    "xembed": ["trayer", "--edge", "bottom", "--widthtype", "pixel", "--width", "200", "--height", "40"],
    "notifier": ["xfce4-panel", "--disable-wm-check"],
}
PANEL_SETUP = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0"><property name="configver" type="int" value="2"/>
<property name="panels" type="array"><value type="int" value="1"/>
<property name="panel-1" type="empty"><property name="position" type="string" value="p=8;x=640;y=780"/>
<property name="position-locked" type="bool" value="true"/><property name="size" type="uint" value="32"/>
<property name="length" type="uint" value="50"/>
<property name="plugin-ids" type="array"><value type="int" value="1"/></property></property></property>
<property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property></channel>
"""


def start_tray(desktop, kind):
    desktop.write(desktop.config_home / "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", PANEL_SETUP)
    return desktop.start(kind, *TRAYS[kind])


def is_registered(program, kind):
    """Whether the tray holds the program's item, as the bus or the window tree tells."""
    if kind == "notifier":
        try:
            reply = program.bus.call_sync(
                "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                GLib.Variant("(ss)", ("org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")), None, 0, 2000)
        except GLib.Error:
            return False
        return len(reply.unpack()[0]) > 0
    desktop = program.desktop
    manager = desktop.display.get_selection_owner(desktop.atom("_NET_SYSTEM_TRAY_S0"))
    if not manager:
        return False

    def embedded(window, depth=0):
        try:
            children = window.query_tree().children if depth < 6 else []
        except error.BadWindow:  # It went with its tray.
            children = []
        return any(desktop.property(c, "_XEMBED_INFO") is not None or embedded(c, depth + 1) for c in children)
    return embedded(desktop.root)


@pytest.mark.parametrize("kind", list(TRAYS))
@pytest.mark.parametrize("when", ["before", "after", "twice"])
def test_the_tray(desktop, program, kind, when):
    """A tray that is there at start, comes later, or goes and comes again."""
    tray = start_tray(desktop, kind) if when != "after" else None
    if tray:
        time.sleep(1.5)
    program.start()
    if not tray:
        time.sleep(0.5)
        tray = start_tray(desktop, kind)
    wait_for(lambda: is_registered(program, kind), 10, "the item in the tray")
    if when == "twice":
        desktop.end(tray)
        wait_for(lambda: not is_registered(program, kind), 10, "the tray to go")
        program.assert_alive()
        start_tray(desktop, kind)
        wait_for(lambda: is_registered(program, kind), 10, "the item in the new tray")
    program.summon()
