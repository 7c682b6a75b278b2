"""What is on disk: damage, refusal, lack of room; removal and its undoing."""
import json
import os
import time

import pytest

from desktop import wait_for
from peers import source, uri_list
from program import CLEAR

main = pytest.mark.main
SHELF = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F"


def state_of(*paths):
    items = [{"id": f"00000000-0000-4000-8000-{i:012X}", "url": uri_list(p).decode().strip(), "addedAt": 785000000.25}
             for i, p in enumerate(paths)]
    return json.dumps({"current": SHELF, "shelves": [{"id": SHELF, "pinned": False, "items": items}], "closed": []})


def drop_file(desktop, shelf, name="new.txt", count=1):
    path = desktop.write(desktop.home / name, "content of " + name)
    files = source(desktop, {"text/uri-list": uri_list(path)}, place=(0, 400, 200, 200))
    desktop.begin_drag(*files.centre)
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    shelf.drop()
    files.event("end")
    desktop.end(files.process)
    return os.fsencode(path)


@main
def test_removal_and_undo(desktop, shelf):
    file = drop_file(desktop, shelf, "a.txt")
    text = source(desktop, {"text/plain": b"a snippet"})
    desktop.begin_drag(*text.centre)
    shelf.drop()
    before = shelf.wait_for_items(2)
    snippet = before[1]["url"].removeprefix("file://").replace("%20", " ")
    for row in (1, 0):
        desktop.glide(*shelf.row(row))
        desktop.click(*shelf.remove_button(row))
        shelf.wait_for_items(1)
        assert os.path.exists(file) and os.path.exists(snippet), "what can be undone is still there"
        desktop.click(*shelf.row(0))  # Gives the panel the keyboard.
        wait_for(lambda: desktop.active_window() == shelf.panel().id, what="the keyboard")
        desktop.keys("Control_L", "z")
        assert shelf.wait_for_items(2) == before
    desktop.click(*shelf.header(CLEAR))
    shelf.wait_for_items(0)
    desktop.keys("Control_L", "z")
    assert shelf.wait_for_items(2) == before
    desktop.keys("Control_L", "a")
    desktop.keys("Delete")
    shelf.wait_for_items(0)
    shelf.restart()  # Nothing can undo it any more, so the snippet goes.
    assert shelf.items() == [] and os.path.exists(file)
    assert os.listdir(shelf.data / "dropped") == []


@main
@pytest.mark.any_wm
@pytest.mark.parametrize("damage", ["garbage", "half", "empty", "wrong form", "no shelves"])
def test_a_damaged_state_file_loses_no_files(desktop, program, damage):
    kept = desktop.write(desktop.home / "kept.txt", "x")
    good = state_of(kept)
    bad = {"garbage": b"\0\xff{{{", "half": good[:len(good) // 2], "empty": "",
           "wrong form": good.replace('"closed": []', '"closed": 3'),
           "no shelves": json.dumps({"current": SHELF, "shelves": [], "closed": []})}[damage]
    desktop.write(program.state_file, bad)
    snippet = desktop.write(program.data / "dropped/Text-1700000000-ABCD.txt", "mine")
    program.start()
    assert program.state_file.read_bytes() == (bad if isinstance(bad, bytes) else bad.encode())
    assert snippet.read_text() == "mine"
    path = drop_file(desktop, program)
    assert program.wait_for_items(1) and program.paths() == [path]
    assert (program.data / "shelves-damaged.json").read_bytes() == (bad if isinstance(bad, bytes) else bad.encode())
    program.restart()  # A good state, but what the damaged one named may be all that is left of it.
    assert snippet.read_text() == "mine"


@pytest.mark.any_wm
def test_what_a_half_finished_save_leaves_does_no_harm(desktop, program):
    kept = desktop.write(desktop.home / "kept.txt", "x")
    desktop.write(program.state_file, state_of(kept))
    for name in ("shelves.json.tmp", ".shelves.json.abc123", "shelves.json.AbCdEf"):
        desktop.write(program.data / name, '{"current":"E621')
    program.start()
    assert program.paths() == [os.fsencode(kept)]
    drop_file(desktop, program)
    program.wait_for_items(2)
    program.restart()
    assert len(program.items()) == 2


@main
@pytest.mark.any_wm
@pytest.mark.parametrize("text", ["no json", '{"dragModifier": ["shift"], "ignoredApps": 7, "onboarded": "yes"}', "[]"],
                         ids=["no json", "wrong types", "no object"])
def test_preferences_that_are_none(desktop, program, text):
    file = desktop.write(desktop.config_home / "Vantle/preferences.json", text)
    program.start()
    drop_file(desktop, program)
    program.wait_for_items(1)
    if text == "no json":  # Set aside before it is replaced.
        texts = [f.read_text() for f in file.parent.iterdir()]
        assert text in texts, texts


@main
@pytest.mark.any_wm
@pytest.mark.parametrize("kind", ["read-only", "full"])
def test_a_data_folder_that_takes_nothing(desktop, program, kind):
    """The program goes on from memory, loses nothing that was saved, and saves when it can again."""
    kept = desktop.write(desktop.home / "kept.txt", "x")
    program.data.mkdir()
    if os.geteuid() != 0:
        pytest.skip("only root may mount")
    if kind == "full":
        desktop.mount(program.data, "-t", "tmpfs", "-o", "size=64k", "vantle-e2e")
    desktop.write(program.state_file, state_of(kept))
    program.start()
    assert program.paths() == [os.fsencode(kept)]
    saved = program.state_file.read_bytes()
    if kind == "full":
        filler = fill_up(program.data)
    else:
        desktop.mount(program.data, "--bind", program.data)
        desktop.run("mount", "-o", "remount,ro,bind", program.data)
    drop_file(desktop, program, "first.txt")
    text = source(desktop, {"text/plain": b"a snippet that finds no room" * 1000})
    desktop.begin_drag(*text.centre)
    program.drop()
    text.event("end")
    time.sleep(0.5)
    program.assert_alive()
    assert program.state_file.read_bytes() == saved, "a failed save must leave the old file"
    assert program.panel_is_up(), "the row is there, although it could not be saved"
    if kind == "full":
        filler.unlink()
    else:
        desktop.run("umount", desktop.mounts.pop())
    desktop.end(text.process)
    drop_file(desktop, program, "second.txt")
    program.wait_for_items(3)
    assert [os.path.basename(p) for p in program.paths()] == [b"kept.txt", b"first.txt", b"second.txt"]


def fill_up(folder):
    path = folder / "filler"
    with open(path, "wb", buffering=0) as file:
        try:
            while True:
                file.write(b"x" * 4096)
        except OSError:
            return path


@pytest.mark.any_wm
def test_a_vanished_file_is_dropped_at_the_next_start(desktop, program):
    kept, gone = (desktop.write(desktop.home / name, "x") for name in ("kept.txt", "gone.txt"))
    desktop.write(program.state_file, state_of(gone, kept))
    gone.unlink()
    program.start()
    assert program.paths() == [os.fsencode(kept)]
