"""The menu of a row, by pointer and by keyboard, in the real program."""
import pytest

from desktop import wait_for
from peers import uri
from test_keyboard import activate

main = pytest.mark.main

VIEWER = """[Desktop Entry]
Type=Application
Name={name}
Exec=/bin/sh {script} {name} %F
MimeType=text/plain;
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
    """Applications that write down what they are given; the last one is the default."""
    opened = desktop.home / "opened"
    script = desktop.write(desktop.home / "record", f'echo "$*" >> {opened}\n')
    for name in names:
        desktop.write(desktop.data_home / f"applications/{name}.desktop", VIEWER.format(name=name, script=script))
    desktop.write(desktop.config_home / "mimeapps.list",
                  f"[Default Applications]\ntext/plain={names[-1]}.desktop\n"
                  "[Added Associations]\ntext/plain=" + "".join(f"{name}.desktop;" for name in names) + "\n")
    return lambda: opened.read_text().splitlines() if opened.exists() else []


def choose(desktop, downs, *rest):
    """Walks an open menu by the arrow keys."""
    for _ in range(downs):
        desktop.keys("Down")
    for key in rest:
        desktop.keys(key)
    desktop.keys("Return")


@main
def test_every_entry(desktop, program):
    opened = record_applications(desktop, "First", "Second")
    program.start()
    files = [desktop.write(desktop.home / f"{name}.txt", name) for name in ("one", "two", "three")]
    desktop.run(program.binary, *files)
    program.wait_for_items(3)
    activate(program)

    def menu():
        return [w for w in desktop.windows(pid=program.process.pid) if w.id != program.panel().id]

    def right_click(row):
        desktop.move(*program.row(row))
        program.wait_until_idle()
        desktop.click(*program.row(row), button=3)
        wait_for(menu, 3, "the menu")

    def menu_key(*names):
        desktop.keys(*names)
        wait_for(menu, 3, "the menu")

    def clipboard():
        return desktop.run("xclip", "-o", "-selection", "clipboard").decode()

    # Open, Open With >, Show in File Manager, Rename, Copy Path, Move to Shelf >, Remove
    right_click(0)
    choose(desktop, 1)
    wait_for(lambda: opened() == [f"Second {files[0]}"], 5, "the default application")
    activate(program)
    desktop.keys("Down")
    menu_key("Menu")
    choose(desktop, 2, "Right", "Down")
    wait_for(lambda: opened()[1:] == [f"First {files[0]}"], 5, "the other application")

    activate(program)
    menu_key("Shift_L", "F10")
    choose(desktop, 5)
    wait_for(lambda: clipboard() == str(files[0]), 3, "the path")
    assert "text/uri-list" not in desktop.run("xclip", "-o", "-selection", "clipboard", "-t", "TARGETS").decode()

    right_click(1)
    choose(desktop, 4)
    wait_for(menu, 3, "the prompt")
    program.wait_until_idle()
    desktop.keys("n")
    desktop.keys("Return")
    renamed = desktop.home / "n.txt"
    wait_for(lambda: program.paths()[1] == str(renamed).encode(), 3, "the new name")
    assert renamed.read_text() == "two" and not files[1].exists()

    right_click(2)
    choose(desktop, 6, "Right")
    program.wait_for_items(2)
    right_click(1)
    choose(desktop, 7)
    program.wait_for_items(1)
    assert program.paths() == [str(files[0]).encode()]


@pytest.mark.any_wm
@pytest.mark.parametrize("manager", ["on the bus", "absent"])
def test_reveal(desktop, program, manager):
    """In the file manager that has the bus name, else by opening the folder."""
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\ninode/directory=thunar.desktop\n")
    asked = desktop.home / "asked"
    answer = desktop.write(desktop.home / "manager.py", FILE_MANAGER) if manager == "on the bus" else None
    desktop.write(desktop.data_home / "dbus-1/services/org.freedesktop.FileManager1.service",
                  "[D-BUS Service]\nName=org.freedesktop.FileManager1\n"
                  f"Exec={f'/usr/bin/python3 {answer} {asked}' if answer else '/bin/false'}\n")
    program.start()
    file = desktop.write(desktop.home / "some folder/read me.txt", "x")
    desktop.run(program.binary, file)
    program.wait_for_items(1)
    activate(program)
    desktop.keys("Down")
    desktop.keys("Menu")
    program.wait_until_idle()
    for key in ("Up",) * 5 + ("Return",):  # Remove, Move to Shelf, Copy Path, Rename, Show in File Manager
        desktop.keys(key)
    if answer:
        wait_for(asked.exists, 10, "the file manager to be asked")
        wait_for(lambda: asked.read_text().startswith(f"['{uri(file).decode()}'] vantle-"), 3, "its arguments")
    else:
        desktop.window("some folder", timeout=20)
