"""Copy and paste with real programs and with owners that real programs never are."""
import time

import pytest
from Xlib import X

from desktop import wait_for
from peers import ClipboardOwner, Editor, FileManager, picture, uri_list
from program import file_url

pytestmark = pytest.mark.main
any_wm = pytest.mark.any_wm


def paste(program):
    program.activate()
    program.desktop.keys("Control_L", "v")


def copy_all(program):
    program.activate()
    program.desktop.keys("Control_L", "a")
    program.desktop.keys("Control_L", "c")
    program.wait_until_idle()


def test_files_go_to_a_file_manager_and_back_and_paths_to_an_editor(desktop, program):
    one, two, note = files = desktop.files("from/ä one.txt", "from/two.txt", "editor/note.txt")
    thunar = FileManager(desktop, "thunar", desktop.home / "to")
    editor = Editor(desktop, "mousepad", note, (0, 400, 480, 390))
    program.start()
    program.add(one, two, "https://example.org/x")
    copy_all(program)
    desktop.click(*thunar.empty_place)
    desktop.keys("Control_L", "v")
    copies = [desktop.home / "to" / f.name for f in (one, two)]
    wait_for(lambda: all(c.exists() and c.read_text() for c in copies), 10, "the copies")
    assert all(f.exists() for f in files) and len(list((desktop.home / "to").iterdir())) == 2
    editor.select_all()
    desktop.keys("Control_L", "v")
    lines = [str(one), str(two), "https://example.org/x"]
    wait_for(lambda: editor.save() or note.read_text().split("\n")[:3] == lines, 5, "the lines")

    for number, key in ((5, "c"), (7, "x")):
        thunar.select_all(2)
        desktop.keys("Control_L", key)
        program.activate()
        desktop.keys("Control_L", "t")
        paste(program)
        program.wait_for_items(2)
        desktop.click(*thunar.empty_place)  # Selected icons have another colour.
    assert all(c.exists() for c in copies)


def test_what_others_copied(desktop, shelf):
    """Files first, then text, then a picture; a cut is taken as a reference, and a page is not text."""
    a, b = desktop.files("a.txt", "b.txt")
    image = picture(40, 30, (200, 30, 30))
    for number, offer in enumerate([
            {"text/uri-list": uri_list(a), "UTF8_STRING": b"text", "image/png": image},
            {"x-special/gnome-copied-files": b"cut\n" + file_url(b).encode(), "UTF8_STRING": b"text"},
            {"text/html": b"<img src=x>", "image/png": image},
            {"UTF8_STRING": "Grüße".encode(), "text/html": b"<b>text</b>"},
            {"UTF8_STRING": b"", "image/x-unheard-of": image},
            {"UTF8_STRING": b"https://example.org/"}], 1):
        ClipboardOwner(desktop, offer)
        paste(shelf)
        shelf.wait_for_items(number)
    urls = [item["url"] for item in shelf.items()]
    assert urls[:2] == [file_url(a), file_url(b)] and b.exists()
    assert [url.rpartition(".")[2] for url in urls[2:]] == ["png", "txt", "png", "webloc"], urls
    assert open(shelf.paths()[2], "rb").read() == image
    assert open(shelf.paths()[3]).read() == "Grüße"


def test_an_owner_that_hangs_does_not_hold_the_panel(desktop, shelf):
    silent = ClipboardOwner(desktop, {}, silent=True)
    paste(shelf)
    wait_for(lambda: silent.asked, what="the question")
    for _ in range(8):  # A key that is held down, for less time than an owner gets to answer.
        desktop.keys("Control_L", "v")
    others = 1 if desktop.window_manager == "mutter" else 0  # It looks at what was copied, too.
    assert len(silent.asked) == 1 + others, "one question at a time"
    for number in range(2, 7):
        begin = time.monotonic()
        desktop.keys("Control_L", "t")
        shelf.wait_for_shelf(number, number)
        assert time.monotonic() - begin < 0.5
    # The next copy is not kept waiting by it, nor is one after the owner has died.
    ClipboardOwner(desktop, {"UTF8_STRING": b"quick"})
    paste(shelf)
    shelf.wait_for_items(1, 2)
    last = ClipboardOwner(desktop, {}, silent=True)
    paste(shelf)
    wait_for(lambda: last.asked, what="the question")
    last.end()
    ClipboardOwner(desktop, {"UTF8_STRING": b"quicker"})
    paste(shelf)
    shelf.wait_for_items(2, 2)


@any_wm
def test_what_was_copied_comes_in_every_way_and_outlives_the_program(desktop, program):
    folder = desktop.home / ("long" * 40)
    files = [desktop.write(folder / f"{number:04}.txt", "x") for number in range(1200)]
    lines = [str(f) for f in files]
    program.start()
    program.add(*files)
    copy_all(program)
    assert desktop.clipboard().splitlines() == lines
    # A long list comes in pieces. Somebody else copies meanwhile: what has begun goes on.
    clipboard, here = desktop.atom("CLIPBOARD"), desktop.atom("TEST")
    window = desktop.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent, event_mask=X.PropertyChangeMask)

    def next_piece():
        return wait_for(lambda: window.get_full_property(here, X.AnyPropertyType), 5, "a piece").value
    window.convert_selection(clipboard, desktop.atom("UTF8_STRING"), here, X.CurrentTime)
    next_piece()
    other = ClipboardOwner(desktop, {"UTF8_STRING": b"other"})
    pieces = []
    while not pieces or pieces[-1]:
        window.delete_property(here)
        pieces.append(next_piece())
    assert b"".join(pieces).decode().splitlines() == lines and len(pieces) > 2
    other.end()
    # Some clipboard managers ask for everything in one go; what is not there is struck out.
    desktop.start("clipman", "xfce4-clipman")
    wait_for(lambda: desktop.display.get_selection_owner(desktop.atom("CLIPBOARD_MANAGER")), 10, "the clipboard manager")
    program.activate()
    desktop.keys("Control_L", "t")
    program.wait_for_shelf(2, 2)
    program.add(files[0])
    copy_all(program)
    types = ["application/x-kde-cutselection", "no/such", "TIMESTAMP"]
    pairs = [desktop.atom(name) for kind in types for name in (kind, "TEST_" + kind)]
    window.change_property(here, desktop.atom("ATOM_PAIR"), 32, pairs)
    window.convert_selection(clipboard, desktop.atom("MULTIPLE"), here, X.CurrentTime)
    wait_for(lambda: [bool(place) for place in desktop.property(window, "TEST")[1::2]] == [True, False, True], 5,
             "an answer that strikes out one")
    assert desktop.property(window, "TEST_" + types[0]) == b"0"
    program.kill()
    wait_for(lambda: desktop.display.get_selection_owner(clipboard), 3, "another owner")
    assert desktop.clipboard("text/uri-list").encode().split() == uri_list(files[0]).split()
