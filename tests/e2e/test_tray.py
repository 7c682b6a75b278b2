"""The tray's item: its menu, by a tray of the test's own, and trays that come and go."""
import pytest
from gi.repository import Gio, GLib
from Xlib import error

from desktop import wait_for
from peers import record_openings, source
from program import TOUR
from test_welcome import Tour

main = pytest.mark.main
WATCHER = "org.kde.StatusNotifierWatcher"
MENU = "com.canonical.dbusmenu"
ENGLISH = ["Show or Hide Shelf (Ctrl+Alt+S)", None, "Welcome Tour", "About Vantle", "Send Feedback", "Settings…", None,
           "Quit Vantle"]
GERMAN = ["Ablage ein-/ausblenden (Strg+Alt+S)", None, "Einführung", "Über Vantle", "Feedback senden", "Einstellungen\xa0…", None,
          "Vantle beenden"]
INTERFACE = f"""<interface name="{WATCHER}">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/></interface>"""


class Tray:
    """Watcher and host in one."""

    def __init__(self, desktop):
        self.desktop, self.item = desktop, None
        self.number = desktop.serve(WATCHER, "/StatusNotifierWatcher", INTERFACE, self._register, {
            "IsStatusNotifierHostRegistered": ("b", True), "ProtocolVersion": ("i", 0),
            "RegisteredStatusNotifierItems": ("as", [])})

    def _register(self, _method, arguments, call):
        name = arguments[0]
        self.item = (call.get_sender(), name) if name.startswith("/") else (name, "/StatusNotifierItem")

    def _menu(self, method, form, *arguments):
        [path] = self.desktop.call(*self.item, "org.freedesktop.DBus.Properties.Get", "(ss)", "org.kde.StatusNotifierItem",
                                   "Menu")
        return self.desktop.call(self.item[0], path, f"{MENU}.{method}", form, *arguments)

    def entries(self):
        """Number and properties of each."""
        _, (_, _, children) = self._menu("GetLayout", "(iias)", 0, -1, [])
        return [(number, of) for number, of, _ in children if of.get("visible", True)]

    def labels(self):
        """A line has no label."""
        return [None if of.get("type") == "separator" else of["label"] for _, of in self.entries()]

    def choose(self, label):
        number = next(n for n, of in self.entries() if of.get("label") == label)
        self._menu("Event", "(isvu)", number, "clicked", GLib.Variant("s", ""), 0)


@main
def test_every_entry(desktop, program):
    opened = record_openings(desktop, "Viewer")
    tray = Tray(desktop)
    process = program.start(LANGUAGE="", LC_ALL="en_US.UTF-8").process
    wait_for(lambda: tray.item, what="the item")
    assert tray.labels() == ENGLISH
    assert [of["shortcut"] for _, of in tray.entries() if "shortcut" in of] == [[["Control", ","]], [["Control", "Q"]]]

    tray.choose(ENGLISH[0])
    wait_for(program.panel_is_up, 3, "the panel")
    tray.choose(ENGLISH[0])
    program.wait_until_hidden()

    rival = source(desktop, {}).window
    desktop.activate(rival)
    tray.choose("About Vantle")
    desktop.wait_for_focus("About Vantle")
    desktop.keys("Escape")
    wait_for(lambda: not desktop.windows("About Vantle"), 3, "it to close")

    tray.choose("Send Feedback")
    wait_for(opened, 5, "the browser")
    browser, address = opened()[0][1].split(" ")
    assert browser == "Browser" and address.startswith("https://") and address.endswith("#feedback"), opened()
    assert "/?app=" in address and "%20(" in address.replace("%28", "("), opened()

    tray.choose("Welcome Tour")
    tour = Tour(desktop, program)
    desktop.keys("Right")
    tour.wait_for_page(1)
    desktop.activate(rival)
    tray.choose("Welcome Tour")
    desktop.wait_for_focus(TOUR)
    assert tour.page() == 1
    desktop.message(tour.window, "_NET_CLOSE_WINDOW", 0, 2)
    wait_for(lambda: not tour.is_open(), 3, "the tour to close")
    tray.choose("Welcome Tour")
    assert Tour(desktop, program).rect == tour.rect
    assert tour.page() == 0

    tray.choose("Settings…")
    desktop.wait_for_focus("Vantle Settings")
    desktop.keys("d")
    wait_for(lambda: tray.labels() == GERMAN, what="the menu in German")
    tray.choose("Über Vantle")
    desktop.wait_for_focus("Über Vantle")
    Gio.bus_unown_name(tray.number)
    wait_for(lambda: not desktop.is_named(WATCHER), what="the tray to go")
    tray.item = None
    Gio.bus_own_name_on_connection(desktop.bus, WATCHER, 0, None, None)
    wait_for(lambda: tray.item, what="the item in a tray that comes later")
    tray.choose("Vantle beenden")
    wait_for(lambda: process.poll() is not None, 5, "the program to end")
    assert process.returncode == 0


def test_in_trays_of_the_old_kind(desktop, program):
    """One that comes after the program, goes and comes again, and is there at start."""
    def holds_it():
        def embedded(window, depth=0):
            try:
                children = window.query_tree().children if depth < 6 else []
            except error.BadWindow:  # It went with its tray.
                children = []
            return any(desktop.property(c, "_XEMBED_INFO") is not None or embedded(c, depth + 1) for c in children)
        return desktop.display.get_selection_owner(desktop.atom("_NET_SYSTEM_TRAY_S0")) and embedded(desktop.root)
    program.start()
    for turn in range(2):
        tray = desktop.start("trayer", "trayer", "--edge", "bottom", "--widthtype", "pixel", "--width", "200", "--height", "40")
        wait_for(holds_it, what=f"the item in the tray, turn {turn}")
        if turn == 0:
            desktop.end(tray)
            wait_for(lambda: not holds_it(), what="the tray to go")
            program.assert_alive()
    program.kill()
    wait_for(lambda: not holds_it(), what="the item to go")
    program.start()
    wait_for(holds_it, what="the item in the tray that was there")
