"""What other programs ask for over the bus, and "Add to Vantle" in the menus of real file managers."""
import os
import subprocess
import time

import pytest
from gi.repository import GLib

from desktop import SVG, wait_for
from peers import FileManager, uri
from program import BUS_NAME, TREE
from test_clipboard import owner
from test_keyboard import shelf_number

main = pytest.mark.main
ENTRY_COLOUR = (0x7A, 0x3C, 0xF0)  # Of the program's icon in the test's theme.


def call(program, interface, method, arguments):
    return program.bus.call_sync(BUS_NAME, "/app/vantleapp/Vantle", interface, method, arguments, None, 0, 5000)


@main
def test_the_bus_drives_it(desktop, shelf):
    def act(name):
        desktop.run("gapplication", "action", BUS_NAME, name)
    a = desktop.write(desktop.home / "a.txt", "x")
    act("toggle")
    wait_for(shelf.panel_is_up, what="the panel")
    act("toggle")
    shelf.wait_until_hidden()
    desktop.run("gapplication", "launch", BUS_NAME, a)
    shelf.wait_for_items(1)
    wait_for(shelf.panel_is_up, what="the panel")
    act("new-shelf")
    wait_for(lambda: shelf_number(shelf) == (2, 2), what="the new shelf")
    owner(desktop, {"UTF8_STRING": b"pasted"})
    act("paste")
    shelf.wait_for_items(1)
    added = [call(shelf, BUS_NAME, "AddToShelf", GLib.Variant("(ass)", values)).unpack()[0]
             for values in (([uri(a).decode()], "ignored"), ([], "text"), ([], ""), (["odd:x"], ""))]
    assert added == [True, True, False, False]
    shelf.wait_for_items(3)
    description = call(shelf, "org.freedesktop.DBus.Introspectable", "Introspect", None).unpack()[0]
    assert 'name="AddToShelf"' in description and 'name="ActivateAction"' in description
    act("no-such-action")
    with pytest.raises(GLib.Error, match="UnknownMethod"):
        call(shelf, BUS_NAME, "AddToShelf", GLib.Variant("(s)", ("x",)))
    assert shelf.panel_is_up()
    act("quit")
    wait_for(lambda: shelf.process.poll() == 0, what="the program to end")


@pytest.mark.any_wm
def test_files_on_the_command_line(desktop, program):
    """A first start takes them, a second one hands them over, bytes that are no text included."""
    folder = desktop.home / "from"
    folder.mkdir()
    name = b"n\xe4me.txt"
    for each in (name, b"-dash", b"b.txt"):
        desktop.write(folder / os.fsdecode(each), "x")
    program.process = desktop.start("vantle", program.binary, os.fsdecode(name), cwd=folder)
    program.wait_for_items(1)
    wait_for(program.panel_is_up, what="the panel")
    desktop.run(program.binary, "--", "-dash", "sub/../b.txt", cwd=folder)
    program.wait_for_items(3)
    assert program.paths() == [os.fsencode(folder) + b"/" + n for n in (name, b"-dash", b"b.txt")]


@pytest.fixture
def installed(desktop, program):
    """What an installation puts in its places; the program itself does not run."""
    prefix = desktop.root_dir / "usr"
    subprocess.run(["cmake", "--install", program.binary.parents[1], "--prefix", prefix], check=True,
                   capture_output=True)
    desktop.environment["XDG_DATA_DIRS"] = f"{prefix}/share:/usr/local/share:/usr/share"
    desktop.write(desktop.data_home / f"dbus-1/services/{BUS_NAME}.service",
                  f"[D-BUS Service]\nName={BUS_NAME}\nExec={program.binary}\n")
    theme = desktop.data_home / "icons/Markers"
    desktop.write(theme / f"apps/{BUS_NAME}.svg",
                  SVG.format('<path fill="#%02x%02x%02x" d="M0 0h64v64h-64z"/>' % ENTRY_COLOUR))
    index = theme / "index.theme"
    index.write_text(index.read_text().replace("Directories=", "Directories=apps,")
                     + "[apps]\nSize=64\nMinSize=8\nMaxSize=512\nType=Scalable\n")
    program.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig",
                          None, None, 0, 5000)
    return program


MENUS = {
    "thunar": ["s", "Down", "Return"],  # The second of its submenu "Send To".
    "nautilus": ["Up", "Up", "Return"],  # The last but one.
    "pcmanfm-qt": [],  # Shows icons.
}


@pytest.mark.parametrize("manager", list(MENUS))
@main
def test_the_menu_of_a_file_manager(desktop, installed, manager):
    files = [desktop.write(desktop.home / f"from/{name}", "x") for name in ("a 'b'.txt", "c%d \"e\".txt", "ü.txt")]
    window = FileManager(desktop, manager, files[0].parent)
    place = window.select_all(3)
    assert not installed.is_named()
    desktop.click(*place, button=3)
    time.sleep(0.7)
    for key in MENUS[manager]:
        desktop.keys(key)
        time.sleep(0.3)
    if not MENUS[manager]:
        entry = wait_for(lambda: desktop.find_colour(ENTRY_COLOUR, smallest=60), 5, "the menu entry")
        desktop.click(*entry[0].centre)
    wait_for(installed.is_named, 10, "the bus to start the program")
    wait_for(lambda: len(installed.items()) == 3, 10, "the entries")
    assert sorted(installed.paths()) == sorted(os.fsencode(f) for f in files)
