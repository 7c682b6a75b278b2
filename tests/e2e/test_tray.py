"""The menu of the tray's item, by a tray of the test's own: what stands in it and what each entry does."""
import pytest
from gi.repository import Gio, GLib

from desktop import wait_for
from peers import source
from test_rowmenu import record_applications
from test_welcome import Tour

main = pytest.mark.main
WATCHER, WATCHER_PATH = "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher"
MENU = "com.canonical.dbusmenu"
ENGLISH = ["Show or Hide Shelf (Ctrl+Alt+S)", None, "Welcome Tour", "About Vantle", "Send Feedback", "Settings…", None,
           "Quit Vantle"]
GERMAN = ["Ablage ein-/ausblenden (Strg+Alt+S)", None, "Einführung", "Über Vantle", "Feedback senden", "Einstellungen\xa0…", None,
          "Vantle beenden"]
NODE = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name="{WATCHER}">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/></interface></node>""")


class Tray:
    """Watcher and host in one, which answer while the test waits."""

    def __init__(self, program):
        self.bus = program.bus
        self.item = None
        self.bus.register_object(WATCHER_PATH, NODE.interfaces[0], self._called, self._asked, None)
        Gio.bus_own_name_on_connection(self.bus, WATCHER, 0, None, None)
        self.wait_for(lambda: program.is_named(WATCHER), "the tray")

    def _called(self, _connection, sender, _path, _interface, _method, arguments, invocation):
        name = arguments.unpack()[0]
        self.item = (sender, name) if name.startswith("/") else (name, "/StatusNotifierItem")
        invocation.return_value(None)

    def _asked(self, _connection, _sender, _path, _interface, name):
        return {"IsStatusNotifierHostRegistered": GLib.Variant("b", True), "ProtocolVersion": GLib.Variant("i", 0),
                "RegisteredStatusNotifierItems": GLib.Variant("as", [])}[name]

    @staticmethod
    def wait_for(predicate, what):
        def served():
            while GLib.MainContext.default().iteration(False):
                pass
            return predicate()
        return wait_for(served, 10, what)

    def _call(self, path, interface, method, arguments):
        return self.bus.call_sync(self.item[0], path, interface, method, arguments, None, 0, 5000).unpack()

    def _menu(self):
        get = GLib.Variant("(ss)", ("org.kde.StatusNotifierItem", "Menu"))
        return self._call(self.item[1], "org.freedesktop.DBus.Properties", "Get", get)[0]

    def entries(self):
        """Number and label; a line has no label."""
        _, (_, _, children) = self._call(self._menu(), MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return [(number, None if of.get("type") == "separator" else of["label"]) for number, of, _ in children
                if of.get("visible", True)]

    def keys(self):
        _, (_, _, children) = self._call(self._menu(), MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return [of["shortcut"] for _, of, _ in children if "shortcut" in of]

    def labels(self):
        return [label for _, label in self.entries()]

    def choose(self, label):
        number = next(n for n, each in self.entries() if each == label)
        self._call(self._menu(), MENU, "Event",
                   GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0)))


@main
def test_every_entry(desktop, program):
    opened = record_applications(desktop, "Viewer")
    tray = Tray(program)
    program.prefer()
    process = program.process = desktop.start("vantle", program.binary,
                                              environment={"LANGUAGE": "", "LC_ALL": "en_US.UTF-8"})
    tray.wait_for(lambda: tray.item, "the item")
    program.wait_until_idle()
    assert tray.labels() == ENGLISH
    assert tray.keys() == [[["Control", ","]], [["Control", "Q"]]]

    def comes_to_front(title):
        wait_for(lambda: desktop.focused_title() == title, 5, f"{title} to have the keyboard")
        return desktop.window(title, process.pid)

    tray.choose(ENGLISH[0])
    wait_for(program.panel_is_up, 3, "the panel")
    tray.choose(ENGLISH[0])
    program.wait_until_hidden()

    rival = source(desktop, {}).window
    desktop.activate(rival)
    tray.choose("About Vantle")
    comes_to_front("About Vantle")
    desktop.keys("Escape")
    wait_for(lambda: not desktop.windows("About Vantle"), 3, "it to close")

    tray.choose("Send Feedback")
    wait_for(opened, 5, "the browser")
    browser, address = opened()[0].split(" ")
    assert browser == "Browser" and address.startswith("https://") and address.endswith("#feedback"), opened()
    assert "/?app=" in address and "%20(" in address.replace("%28", "("), opened()

    tray.choose("Welcome Tour")
    tour = Tour(desktop, program)
    desktop.keys("Right")
    tour.wait_for_page(1)
    desktop.activate(rival)
    tray.choose("Welcome Tour")
    comes_to_front("Welcome to Vantle")
    assert tour.page() == 1
    desktop.message(tour.window, "_NET_CLOSE_WINDOW", 0, 2)
    wait_for(lambda: not tour.is_open(), 3, "the tour to close")
    tray.choose("Welcome Tour")
    assert Tour(desktop, program).rect == tour.rect
    assert tour.page() == 0

    tray.choose("Settings…")
    comes_to_front("Vantle Settings")
    desktop.keys("d")
    tray.wait_for(lambda: tray.labels() == GERMAN, "the menu in German")
    tray.choose("Über Vantle")
    comes_to_front("Über Vantle")
    tray.choose("Vantle beenden")
    wait_for(lambda: process.poll() is not None, 5, "the program to end")
    assert process.returncode == 0
