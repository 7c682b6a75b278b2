"""Files onto the shelf from file managers, and off it into other programs."""
import os
import signal

import pytest

from desktop import wait_for
from peers import DROP_COLOUR, Editor, FileManager, Firefox, Scripted, data, source, target, target4, uri_list
from program import HANDLE

ODD_NAMES = [b"a b.txt", b"line\nbreak.txt", b"100%25 #?.txt", b"latin-\xe4.txt", "日本 ü.txt".encode()]
CONTENTS = {
    "one": [b"report.txt"],
    "three": [b"one.txt", b"two.txt", b"three.txt"],
    "500": [b"file-%03d.txt" % i for i in range(500)],
    "odd-names": ODD_NAMES,
}
main = pytest.mark.main


def case(*values, main_one=False):
    return pytest.param(*values, marks=[main] if main_one else [])


def make_files(folder, names):
    folder.mkdir(exist_ok=True)
    paths = [os.path.join(os.fsencode(folder), name) for name in names]
    for path in paths:
        with open(path, "wb") as file:
            file.write(b"content of " + os.path.basename(path))
    return paths


def content(path):
    with open(path, "rb") as file:
        return file.read()


@main
def test_a_file_goes_in_survives_a_kill_and_comes_out(desktop, shelf):
    [path] = make_files(desktop.home / "from", [b"report.txt"])
    (desktop.home / "to").mkdir()
    thunar = FileManager(desktop, "thunar", desktop.home / "from")
    other = FileManager(desktop, "thunar", desktop.home / "to", (0, 400, 480, 390))
    desktop.activate(thunar.window)
    desktop.begin_drag(*thunar.icons()[0].centre)
    wait_for(shelf.panel_is_up, 3, "the panel to come up for the drag")
    assert desktop.active_window() == thunar.window.id, "the panel took the keyboard"
    shelf.drop()
    shelf.wait_for_items(1)
    assert desktop.active_window() == thunar.window.id, "the panel took the keyboard"
    shelf.restart()
    assert shelf.paths() == [path]
    shelf.summon()
    shelf.give(0, *other.empty_place)
    copy = os.fsencode(desktop.home / "to/report.txt")
    wait_for(lambda: os.path.exists(copy), what="the copy")
    assert content(copy) == content(path) and os.path.exists(path)
    assert shelf.paths() == [path]


@pytest.mark.parametrize("name, contents", [
    case(name, contents, main_one=(name, contents) in (("pcmanfm-qt", "three"), ("nautilus", "odd-names")))
    for name in FileManager.commands for contents in CONTENTS])
def test_files_come_in(desktop, shelf, name, contents):
    names = CONTENTS[contents]
    if name == "pcmanfm-qt":  # Which itself offers no bytes that are not UTF-8.
        names = [n for n in names if n.decode(errors="ignore").encode() == n]
    paths = make_files(desktop.home / "from", names)
    manager = FileManager(desktop, name, desktop.home / "from", (0, 0, 640, 700))
    place = manager.select_all(min(len(paths), 4)) if len(paths) > 1 else manager.icons()[0].centre
    shelf.take(*place, len(paths))
    assert sorted(shelf.paths()) == sorted(paths)
    assert all(os.path.exists(path) for path in paths)


@pytest.mark.parametrize("name", list(FileManager.commands))
def test_a_folder_comes_in_and_goes_out(desktop, shelf, name):
    make_files(desktop.home / "from", [])
    [inner] = make_files(desktop.home / "from/a folder", [b"inner.txt"])
    (desktop.home / "to").mkdir()
    manager = FileManager(desktop, name, desktop.home / "from")
    shelf.take(*manager.folders()[0].centre, 1)
    assert shelf.paths() == [os.path.dirname(inner)]
    assert shelf.items()[0]["url"].endswith("a%20folder/")
    desktop.end(manager.process)
    other = FileManager(desktop, name, desktop.home / "to")
    shelf.give(0, *other.empty_place)
    other.confirm()
    copy = desktop.home / "to/a folder/inner.txt"
    wait_for(copy.exists, what="the copy")
    assert os.path.exists(inner)


@pytest.mark.parametrize("name, contents", [
    case(name, contents, main_one=(name, contents) in (("pcmanfm-qt", "one"), ("nautilus", "three")))
    for name in FileManager.commands for contents in CONTENTS])
def test_files_go_out_to_file_managers(desktop, shelf, name, contents):
    paths = make_files(desktop.home / "from", CONTENTS[contents])
    (desktop.home / "to").mkdir()
    fill(desktop, shelf, paths)
    manager = FileManager(desktop, name, desktop.home / "to")
    shelf.give(0, *manager.empty_place)
    manager.confirm()
    copies = [os.path.join(os.fsencode(desktop.home / "to"), os.path.basename(path)) for path in paths]
    wait_for(lambda: all(map(os.path.exists, copies)), 20, "the copies")
    wait_for(lambda: [content(c) for c in copies] == [content(p) for p in paths], 5, "their contents")
    assert shelf.paths() == paths


def fill(desktop, shelf, paths):
    """Puts files on the shelf in this order and selects them all."""
    files = source(desktop, {"text/uri-list": uri_list(*paths)}, place=(640, 500, 200, 200))
    shelf.take(*files.centre, len(paths))
    desktop.end(files.process)
    assert shelf.paths() == paths
    shelf.summon()
    desktop.keys("Control_L", "a")


@main
@pytest.mark.any_wm
@pytest.mark.parametrize("name", ["nemo", "caja"])
def test_a_link_becomes_a_file_and_copied_files_are_pasted(desktop, shelf, name):
    (desktop.home / "to").mkdir()
    [path] = make_files(desktop.home / "from", [b"copied.txt"])
    desktop.run(shelf.binary, Firefox.link, path)
    shelf.wait_for_items(2)
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
def test_files_go_out_to_a_browser(desktop, shelf):
    paths = make_files(desktop.home / "from", [b"a b.txt", b"two.txt"])
    fill(desktop, shelf, paths)
    browser = Firefox(desktop)
    shelf.give(0, *browser.find(DROP_COLOUR))
    assert browser.dropped() == "got a b.txt:18:content of a b.txt|two.txt:18:content of two.txt"


@main
@pytest.mark.any_wm
def test_drags_of_a_program_that_is_held_up_arrive(desktop, shelf):
    """It reads all moves, and the release, at once: the first window has to hear the right forms, and be waited for."""
    desktop.run(shelf.binary, make_files(desktop.home / "from", [b"a.txt"])[0], Firefox.link)
    shelf.wait_for_items(2)
    shelf.summon()
    receiver = target(desktop)
    for number, (row, first) in enumerate([(0, "text/uri-list"), (1, "text/x-moz-url")] * 3, 1):
        desktop.press(*shelf.row(row))
        os.kill(shelf.process.pid, signal.SIGSTOP)
        desktop.glide(*receiver.centre, 0.1)
        desktop.release()
        os.kill(shelf.process.pid, signal.SIGCONT)
        wait_for(lambda: len(receiver.events("drop")) == number, what="the drop")
        drop = receiver.event("drop")
        assert drop["formats"][0] == first and drop["actions"] == (8 | 2 if row else 2), drop  # Links may be linked.


@main
def test_files_go_out_to_gtk_programs(desktop, shelf):
    paths = make_files(desktop.home / "from", ODD_NAMES)
    fill(desktop, shelf, paths)
    gtk3, gtk4 = target(desktop), target4(desktop, place=(520, 400, 300, 300))
    shelf.give(0, *gtk3.centre)
    drop = gtk3.event("drop")
    assert drop["formats"][0] == "text/uri-list"
    assert data(drop, "text/uri-list").split(b"\r\n") == uri_list(*paths).split(b"\r\n")
    assert "text/plain" not in drop["data"], "a file's address is not its text"
    shelf.give(0, *gtk4.centre)
    assert [u.encode() for u in gtk4.event("drop")["uris"]] == uri_list(*paths).split()


@pytest.mark.parametrize("name", list(Editor.commands))
def test_a_file_goes_out_to_an_editor(desktop, shelf, name):
    paths = make_files(desktop.home / "from", [b"dragged file.txt"])
    make_files(desktop.home, [b"open.txt"])
    fill(desktop, shelf, paths)
    editor = Editor(desktop, name, desktop.home / "open.txt")
    shelf.give(0, *editor.text_place)
    wait_for(lambda: desktop.windows("dragged file.txt", editor.process.pid), what="the editor to open it")


def test_files_go_through_the_portal_both_ways(desktop, shelf):
    paths = make_files(desktop.home / "from", [b"a b.txt", b"two.txt"])
    portal = Scripted(desktop, "portal", *paths)
    confined = source(desktop, {"application/vnd.portal.filetransfer": b"a-key\0"})
    shelf.take(*confined.centre, 2)
    assert shelf.paths() == paths
    assert not portal.events("StartTransfer"), "files were registered that nobody asked for"
    desktop.end(confined.process)
    shelf.summon()
    desktop.keys("Control_L", "a")
    receiver = target(desktop, "application/vnd.portal.filetransfer")
    shelf.give(0, *receiver.centre)
    assert [os.fsencode(f) for f in receiver.event("drop")["files"]] == paths


@main
def test_the_shelf_refuses_its_own_rows_and_the_handle_carries_all(desktop, shelf):
    paths = make_files(desktop.home / "from", [b"one.txt", b"two.txt"])
    fill(desktop, shelf, paths)
    shelf.give(0, *shelf.row(1))
    receiver = target(desktop)
    shelf.give(0, *receiver.centre)  # Works, so the refused drag is over.
    receiver.event("drop")
    desktop.keys("Escape")  # Nothing is selected any more, so the handle carries all.
    desktop.begin_drag(*shelf.header(HANDLE), dx=-24, dy=30)
    desktop.drop(*receiver.centre)
    wait_for(lambda: len(receiver.events("drop")) == 2, what="the second drop")
    assert data(receiver.event("drop"), "text/uri-list") == uri_list(*paths)
    assert shelf.paths() == paths


def test_what_was_dragged_out_leaves_when_so_wanted(desktop, program):
    program.prefer(onboarded=True, removeAfterDragOut=True)
    program.start()
    paths = make_files(desktop.home / "from", [b"one.txt", b"two.txt"])
    fill(desktop, program, paths)
    desktop.keys("Escape")
    program.give(0, *program.row(1))
    receiver = target(desktop)
    program.give(1, *receiver.centre)
    program.wait_for_items(1)
    assert program.paths() == paths[:1] and all(map(os.path.exists, paths))
