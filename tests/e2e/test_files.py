"""Files onto the shelf from file managers, and off it into other programs."""
import os
import signal

import pytest

from desktop import FILE_COLOUR, FOLDER_COLOUR, wait_for
from peers import FileManager, Firefox, carry, data, file_list, target, uri_list, Scripted
from program import HANDLE

ODD_NAMES = [b"a b.txt", b"line\nbreak.txt", b"100%25 #?.txt", b"latin-\xe4.txt", "日本 ü.txt".encode()]
CONTENTS = {
    "one": [b"report.txt"],
    "three": [b"one.txt", b"two.txt", b"three.txt"],
    "500": [b"file-%03d.txt" % i for i in range(500)],
    "odd-names": ODD_NAMES,
    "folder": [b"a folder/inner.txt"],
}
main = pytest.mark.main
PORTAL = "application/vnd.portal.filetransfer"


def make_files(desktop, names, folder="from"):
    return [os.fsencode(desktop.write(desktop.home / folder / os.fsdecode(name), b"content of " + name)) for name in names]


def content(path):
    with open(path, "rb") as file:
        return file.read()


@pytest.mark.parametrize("name, contents", [
    pytest.param(name, contents, marks=main if (name, contents) in (
        ("thunar", "one"), ("pcmanfm-qt", "three"), ("nautilus", "odd-names")) else [])
    for name in FileManager.commands for contents in CONTENTS])
def test_files_come_in_survive_a_kill_and_go_out(desktop, shelf, name, contents):
    names = CONTENTS[contents]
    if name == "pcmanfm-qt":  # Which itself offers no bytes that are not UTF-8.
        names = [n for n in names if n.decode(errors="ignore").encode() == n]
    files = make_files(desktop, names)
    rows = [os.path.dirname(file) for file in files] if contents == "folder" else files
    manager = FileManager(desktop, name, desktop.home / "from", (0, 0, 640, 700))
    if len(rows) > 1:
        place = manager.select_all(min(len(rows), 4))
    else:
        place = manager.icons(colour=FOLDER_COLOUR if contents == "folder" else FILE_COLOUR)[0].centre
    desktop.activate(manager.window)
    shelf.take(*place, len(rows))
    assert desktop.active_window() == manager.window.id, "the panel took the keyboard"
    assert sorted(shelf.paths()) == sorted(rows)
    desktop.end(manager.process)
    shelf.restart()
    assert sorted(shelf.paths()) == sorted(rows)
    shelf.summon()
    desktop.keys("Control_L", "a")
    other = FileManager(desktop, name, desktop.home / "to")
    shelf.give(0, *other.empty_place)
    other.confirm()
    copies = [file.replace(b"/from/", b"/to/") for file in files]
    wait_for(lambda: all(map(os.path.exists, copies)), 20, "the copies")
    wait_for(lambda: [content(c) for c in copies] == [content(f) for f in files], 5, "their contents")
    assert sorted(shelf.paths()) == sorted(rows)


def fill(desktop, shelf, paths):
    """Puts files on the shelf in this order and selects them all."""
    carry(shelf, file_list(*paths))
    shelf.wait_for_items(len(paths))
    assert shelf.paths() == paths
    shelf.summon()
    desktop.keys("Control_L", "a")


@main
@pytest.mark.any_wm
@pytest.mark.parametrize("name", ["nemo", "caja"])
def test_a_link_becomes_a_file_and_copied_files_are_pasted(desktop, shelf, name):
    [path] = make_files(desktop, [b"copied.txt"])
    shelf.add(Firefox.link, path)
    manager = FileManager(desktop, name, desktop.home / "to")
    shelf.summon()
    shelf.give(1, *manager.empty_place)
    wait_for(lambda: any(b"example.org" in content(file) for file in (desktop.home / "to").iterdir()), what="the link")
    shelf.summon()
    desktop.click(*shelf.row(0))
    desktop.keys("Control_L", "c")
    shelf.wait_until_idle()
    desktop.activate(manager.window)
    desktop.click(*manager.empty_place)
    desktop.keys("Control_L", "v")
    wait_for((desktop.home / "to/copied.txt").exists, what="the copy")


@main
@pytest.mark.any_wm
def test_drags_of_a_program_that_is_held_up_arrive(desktop, shelf):
    """It reads all moves, and the release, at once: the first window has to hear the right forms, and be waited for."""
    shelf.add(*make_files(desktop, [b"a.txt"]), Firefox.link)
    shelf.summon()
    receiver = target(desktop)
    for number, (row, first) in enumerate([(0, "text/uri-list"), (1, "text/x-moz-url")] * 3, 1):
        desktop.press(*shelf.row(row))
        os.kill(shelf.process.pid, signal.SIGSTOP)
        desktop.glide(*receiver.centre, 0.1)
        desktop.release()
        os.kill(shelf.process.pid, signal.SIGCONT)
        drop = receiver.event("drop", number=number)
        assert drop["formats"][0] == first and drop["actions"] == (8 | 2 if row else 2), drop  # Links may be linked.


class Portal:
    """A file transfer portal: each key stands for these files until others are added to it."""
    interface = """<interface name="org.freedesktop.portal.FileTransfer">
<method name="StartTransfer"><arg type="a{sv}" direction="in"/><arg type="s" direction="out"/></method>
<method name="AddFiles"><arg type="s" direction="in"/><arg type="ah" direction="in"/><arg type="a{sv}" direction="in"/></method>
<method name="RetrieveFiles"><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/><arg type="as" direction="out"/></method>
<method name="StopTransfer"><arg type="s" direction="in"/></method><signal name="TransferClosed"><arg type="s"/></signal></interface>"""

    def __init__(self, desktop, files):
        self.files, self.transfers = files, {}
        desktop.serve("org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents", self.interface, self._answer)

    def _answer(self, method, arguments, call):
        if method == "StartTransfer":
            key = f"key-{len(self.transfers) + 1}"
            self.transfers[key] = []
            return "(s)", key
        if method == "AddFiles":
            for descriptor in call.get_message().get_unix_fd_list().steal_fds():
                self.transfers[arguments[0]].append(os.readlink(f"/proc/self/fd/{descriptor}"))
                os.close(descriptor)
        return ("(as)", self.transfers.get(arguments[0]) or [os.fsdecode(file) for file in self.files]) if method == "RetrieveFiles" else None


@main
def test_files_go_to_programs_of_every_toolkit_and_through_the_portal_both_ways(desktop, shelf):
    paths = make_files(desktop, ODD_NAMES)
    fill(desktop, shelf, paths)
    gtk3, gtk4 = target(desktop), Scripted(desktop, "target4", place=(520, 400, 300, 300))
    shelf.give(0, *gtk3.centre)
    drop = gtk3.event("drop")
    assert drop["formats"][0] == "text/uri-list"
    assert data(drop, "text/uri-list").split(b"\r\n") == uri_list(*paths).split(b"\r\n")
    assert "text/plain" not in drop["data"], "a file's address is not its text"
    shelf.give(0, *gtk4.centre)
    assert [u.encode() for u in gtk4.event("drop")["uris"]] == uri_list(*paths).split()
    desktop.end(gtk4.process)

    shelf.give(0, *shelf.row(1))  # The shelf refuses its own rows.
    desktop.begin_drag(*shelf.row(0), dx=-24, dy=12)
    desktop.keys("Escape")  # Ends the drag and does nothing else.
    desktop.release()  # Over its own row, and no click: the handle still carries all.
    desktop.begin_drag(*shelf.header(HANDLE), dx=-24, dy=30)
    desktop.drop(*gtk3.centre)
    assert data(gtk3.event("drop", number=2), "text/uri-list") == uri_list(*paths)
    assert shelf.paths() == paths

    shelf.summon()
    desktop.keys("Control_L", "a")
    desktop.keys("BackSpace")
    shelf.wait_for_items(0)
    portal = Portal(desktop, paths[:1])
    carry(shelf, {PORTAL: b"a-key\0"}, place=(520, 400, 200, 200))
    shelf.wait_for_items(1)
    assert shelf.paths() == paths[:1] and not portal.transfers, "files were registered that nobody asked for"
    confined = target(desktop, PORTAL, place=(520, 400, 300, 300))
    shelf.give(0, *confined.centre)
    assert confined.event("drop")["files"] == [os.fsdecode(paths[0])] and portal.transfers
