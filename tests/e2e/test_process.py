"""Starts of every kind, what other programs ask for over the bus, and "Add to Vantle" in the menus of file managers."""
import os
import subprocess
import time

import pytest
from gi.repository import GLib

from desktop import SVG, wait_for
from peers import ClipboardOwner, FileManager, file_list, source
from program import BUS_NAME, file_url

main = pytest.mark.main
any_wm = pytest.mark.any_wm
ENTRY_COLOUR = (0x7A, 0x3C, 0xF0)  # Of the program's icon in the test's theme.


@main
@any_wm
def test_starts_with_questions_files_and_company(desktop, program):
    """A first start takes files, a second one hands them over, bytes that are no text included."""
    for arguments, status, out in ((["--version"], 0, b"vantle "), (["--no-such-option"], 2, b"")):
        ended = subprocess.run([program.binary, *arguments], env=desktop.environment, capture_output=True, timeout=10)
        assert ended.returncode == status and ended.stdout.startswith(out) and bool(ended.stderr) != bool(out), ended
    for platform in ("", "wayland;xcb", "nonsense"):
        ended = subprocess.run([program.binary], capture_output=True, timeout=10,
                               env=desktop.environment | {"DISPLAY": ":9999", "QT_QPA_PLATFORM": platform})
        assert (ended.returncode, ended.stderr) == (1, b"Vantle needs an X server: it does not run on this platform.\n")
    program.prefer()
    names = [b"n\xe4me.txt", b"-dash", b"b.txt"]
    files = desktop.files(*(f"from/{os.fsdecode(name)}" for name in names))
    started = [desktop.start(f"vantle-{i}", program.binary, files[0], cwd=files[0].parent,
                             environment={"QT_QPA_PLATFORM": "wayland"}) for i in range(5)]
    wait_for(lambda: sum(p.poll() is None for p in started) == 1, what="all but one to end")
    assert sorted(p.poll() for p in started if p.poll() is not None) == [0] * 4
    program.process = next(p for p in started if p.poll() is None)
    program.wait_for_items(1)
    wait_for(program.panel_is_up, what="the panel")
    desktop.run(program.binary, "--", "-dash", "sub/../b.txt", cwd=files[0].parent)
    program.wait_for_items(3)
    assert program.paths() == [os.fsencode(file) for file in files]


@any_wm
def test_without_a_bus(desktop, program):
    nowhere = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/x"}
    program.process = desktop.start("vantle", program.binary, environment=nowhere)
    program.wait_until_idle()
    program.take(*source(desktop, file_list(*desktop.files("a.txt"))).centre, 1)
    # A second start cannot reach the first; it says so in a window and ends with that.
    second = desktop.start("second", program.binary, environment=nowhere)
    desktop.activate(desktop.window(pid=second.pid))
    desktop.keys("Escape")
    wait_for(lambda: second.poll() == 1, what="the second start to end")
    program.assert_alive()
    assert len(program.items()) == 1


@main
def test_the_bus_drives_it(desktop, shelf):
    def act(name):
        desktop.run("gapplication", "action", BUS_NAME, name)
    [a] = desktop.files("a.txt")
    act("toggle")
    wait_for(shelf.panel_is_up, what="the panel")
    act("toggle")
    shelf.wait_until_hidden()
    desktop.run("gapplication", "launch", BUS_NAME, a)
    shelf.wait_for_items(1)
    wait_for(shelf.panel_is_up, what="the panel")
    act("new-shelf")
    shelf.wait_for_shelf(2, 2)
    ClipboardOwner(desktop, {"UTF8_STRING": b"pasted"})
    act("paste")
    shelf.wait_for_items(1)
    added = [shelf.call(f"{BUS_NAME}.AddToShelf", "(ass)", *values)[0]
             for values in (([file_url(a)], "ignored"), ([], "text"), (["odd:x"], "text"), (["https://example.org/"], ""),
                            ([], ""), (["odd:x"], ""))]
    assert added == [True] * 4 + [False] * 2
    shelf.wait_for_items(5)
    [description] = shelf.call("org.freedesktop.DBus.Introspectable.Introspect")
    assert 'name="AddToShelf"' in description and 'name="ActivateAction"' in description
    act("no-such-action")
    with pytest.raises(GLib.Error, match="UnknownMethod"):
        shelf.call(f"{BUS_NAME}.AddToShelf", "(s)", "x")
    assert shelf.panel_is_up()
    act("quit")
    wait_for(lambda: shelf.process.poll() == 0, what="the program to end")


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
    desktop.call_bus("ReloadConfig")
    return program


MENUS = {
    "thunar": ["s", "Down", "Return"],  # The second of its submenu "Send To".
    "nautilus": ["Up", "Up", "Return"],  # The last but one.
    "pcmanfm-qt": [],  # Shows icons.
}


@pytest.mark.parametrize("manager", list(MENUS))
@main
def test_the_menu_of_a_file_manager(desktop, installed, manager):
    files = desktop.files("from/a 'b'.txt", "from/c%d \"e\".txt", "from/ü.txt")
    place = FileManager(desktop, manager, files[0].parent).select_all(3)
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
    installed.wait_for_items(3)
    assert sorted(installed.paths()) == sorted(os.fsencode(f) for f in files)
