"""The menu of a row, by pointer and by keyboard, in the real program."""
import pytest

from desktop import wait_for
from peers import uri
from test_keyboard import activate, shelf_number
from test_shelves import menus, type_name, wait_for_menus

main = pytest.mark.main

VIEWER = """[Desktop Entry]
Type=Application
Name={name}
Exec=/bin/sh {script} {name} {given}
MimeType={types};
Icon=accessories-text-editor
"""

FILE_MANAGER = """import sys
from gi.repository import Gio, GLib
NODE = Gio.DBusNodeInfo.new_for_xml("<node><interface name='org.freedesktop.FileManager1'><method name='ShowItems'>"
                                    "<arg type='as'/><arg type='s'/></method></interface></node>")
def called(connection, sender, path, interface, method, arguments, invocation):
    invocation.return_value(None)
    open(sys.argv[1], "w").write("{} {}".format(*arguments.unpack()))
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/org/freedesktop/FileManager1", NODE.interfaces[0], called, None, None)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.FileManager1", 0, None, None)
GLib.MainLoop().run()
"""


def record_applications(desktop, *names):
    """Applications for text that write down what they are given, the last one by default; and a browser."""
    opened = desktop.home / "opened"
    script = desktop.write(desktop.home / "record", f'echo "$*" >> {opened}\n')
    entries = [(name, "text/plain", "%F") for name in names] + [("Browser", "x-scheme-handler/https", "%u")]
    for name, types, given in entries:
        desktop.write(desktop.data_home / f"applications/{name}.desktop",
                      VIEWER.format(name=name, script=script, types=types, given=given))
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\n"
                  + "".join(f"{types}={name}.desktop\n" for name, types, _ in entries[-2:])
                  + "[Added Associations]\ntext/plain=" + "".join(f"{name}.desktop;" for name in names) + "\n")
    return lambda: opened.read_text().splitlines() if opened.exists() else []


def record_revealing(desktop, manager=FILE_MANAGER):
    """A file manager on the bus that writes down what it is asked to show; without one, the name is taken by nobody."""
    asked = desktop.home / "asked"
    answer = manager and desktop.write(desktop.home / "manager.py", manager)
    desktop.write(desktop.data_home / "dbus-1/services/org.freedesktop.FileManager1.service",
                  "[D-BUS Service]\nName=org.freedesktop.FileManager1\n"
                  f"Exec={f'/usr/bin/python3 {answer} {asked}' if answer else '/bin/false'}\n")
    return lambda: asked.read_text() if asked.exists() else ""


# What stands in the menu, from top to bottom; None is a line.
ONE = ("open", "open with", "preview", "reveal", "rename", None, "copy", "move", None, "remove")
SEVERAL = tuple(entry for entry in ONE if entry != "rename")
LINKS = tuple(entry for entry in SEVERAL if entry != "reveal")


class RowMenu:
    """Opens it by one device, and chooses by keyboard."""

    def __init__(self, program, device):
        self.program, self.device = program, device

    def use(self, first, count, menu, entry, below=None):
        """Of so many rows from the first one; below is the place in a submenu."""
        getattr(self, f"_select_by_{self.device}")(first, count)
        wait_for_menus(self.program, 1)
        self._choose(menu, entry, below)
        wait_for_menus(self.program, 0)

    def _select_by_keyboard(self, first, count):
        desktop = self.program.desktop
        activate(self.program)
        for _ in self.program.items():
            desktop.keys("Up")
        for _ in range(first):
            desktop.keys("Down")
        for _ in range(count - 1):
            desktop.keys("Shift_L", "Down")
        desktop.keys(*(("Menu",) if count == 1 else ("Shift_L", "F10")))

    def _choose(self, menu, entry, below):
        desktop = self.program.desktop
        for _ in range([e for e in menu if e].index(entry) + 1):
            desktop.keys("Down")
        if below is not None:
            desktop.keys("Right")
            wait_for_menus(self.program, 2)
            for _ in range(below):
                desktop.keys("Down")
        desktop.keys("Return")

    def _select_by_pointer(self, first, count):
        program = self.program
        program.wait_until_idle()
        program.desktop.click(*program.row(first))
        for row in range(first + 1, first + count):
            with program.desktop.held("Control_L"):
                program.desktop.click(*program.row(row))
        program.desktop.click(*program.row(first), button=3)


@main
@pytest.mark.parametrize("device", ["pointer", "keyboard"])
def test_every_entry(desktop, program, device):
    """Each once, on one row, several, a web link, or a file and a link together."""
    opened = record_applications(desktop, "First", "Second")
    asked = record_revealing(desktop)
    program.start()
    one, two, three, four, five = files = [desktop.write(desktop.home / f"{n}.txt", n)
                                           for n in ("one", "two", "three", "four", "five")]
    desktop.run(program.binary, *files)
    program.wait_for_items(5)
    activate(program)
    desktop.keys("Control_L", "t")
    wait_for(lambda: shelf_number(program) == (2, 2), what="another shelf")
    desktop.keys("Control_L", "1")
    wait_for(lambda: shelf_number(program) == (1, 2), what="the first shelf")
    use = RowMenu(program, device).use

    def wait_for_clipboard(*lines):
        wait_for(lambda: desktop.run("xclip", "-o", "-selection", "clipboard").decode().splitlines()
                 == [str(line) for line in lines], 3, f"{lines} on the clipboard")

    def wait_for_shelves(*shelves):
        wait_for(lambda: [[item["url"] for item in shelf["items"]] for shelf in program.state()["shelves"]]
                 == [[uri(file).decode() for file in shelf] for shelf in shelves], 3, f"{shelves} on the shelves")

    use(0, 1, ONE, "open")
    wait_for(lambda: opened() == [f"Second {one}"], 5, "the default application")
    use(0, 1, ONE, "open with", 1)
    wait_for(lambda: opened()[1:] == [f"First {one}"], 5, "the other application")
    use(0, 1, ONE, "preview")
    wait_for(lambda: desktop.focused_title() == one.name, 5, "the preview")
    desktop.keys("Escape")
    wait_for(lambda: not desktop.windows(one.name), 3, "the preview to go")
    use(0, 1, ONE, "reveal")
    wait_for(lambda: asked() and f"'{uri(one).decode()}'" in asked(), 10, "the file manager")
    use(0, 1, ONE, "copy")
    wait_for_clipboard(one)
    assert "text/uri-list" not in desktop.run("xclip", "-o", "-selection", "clipboard", "-t", "TARGETS").decode()
    use(1, 1, ONE, "rename")
    type_name(program, "n")
    desktop.keys("Return")
    renamed = desktop.home / "n.txt"
    wait_for_shelves([one, renamed, three, four, five], [])
    assert renamed.read_text() == "two" and not two.exists()

    use(0, 1, ONE, "move", 0)
    wait_for_shelves([renamed, three, four, five], [one])
    use(0, 2, SEVERAL, "move", 1)
    wait_for_shelves([four, five], [one], [renamed, three])

    link = "https://example.org/a"
    desktop.run(program.binary, link)
    program.wait_for_items(3)
    use(2, 1, LINKS, "open")
    wait_for(lambda: opened()[2:] == [f"Browser {link}"], 5, "the browser")
    use(1, 2, SEVERAL, "copy")
    wait_for_clipboard(five, link)
    use(1, 2, SEVERAL, "remove")
    program.wait_for_items(1)


@pytest.mark.any_wm
@pytest.mark.parametrize("manager", ["on the bus", "absent"])
def test_reveal(desktop, program, manager):
    """In the file manager that has the bus name, else by opening the folder."""
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\ninode/directory=thunar.desktop\n")
    asked = record_revealing(desktop, FILE_MANAGER if manager == "on the bus" else None)
    program.start()
    file = desktop.write(desktop.home / "some folder/read me.txt", "x")
    desktop.run(program.binary, file)
    program.wait_for_items(1)
    activate(program)
    RowMenu(program, "keyboard").use(0, 1, ONE, "reveal")
    if manager == "on the bus":
        wait_for(lambda: asked().startswith(f"['{uri(file).decode()}'] vantle-"), 10, "the file manager to be asked")
    else:
        desktop.window("some folder", timeout=20)
