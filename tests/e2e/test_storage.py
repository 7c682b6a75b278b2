"""What is on disk: damage, refusal, lack of room; removal and its undoing; watched folders."""
import json
import os
import subprocess
import sys

import pytest

from desktop import wait_for
from peers import carry, file_list
from program import CLEAR, SHELF, state_of

pytestmark = [pytest.mark.main, pytest.mark.any_wm]
SLOW = "import sys, time\nf = open(sys.argv[1], 'wb', 0)\nfor _ in range(30): f.write(b'x' * 1000); time.sleep(0.1)"


def test_removal_and_undo(desktop, shelf):
    [file] = desktop.files("a.txt")
    carry(shelf, file_list(file))
    carry(shelf, {"text/plain": b"a snippet"})
    before = shelf.wait_for_items(2)
    snippet = before[1]["url"].removeprefix("file://").replace("%20", " ")
    for row in (1, 0):
        desktop.glide(*shelf.row(row))
        desktop.click(*shelf.remove_button(row))
        shelf.wait_for_items(1)
        assert file.exists() and os.path.exists(snippet), "what can be undone is still there"
        desktop.click(*shelf.row(0))  # Gives the panel the keyboard.
        shelf.wait_for_keyboard()
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
    assert shelf.items() == [] and file.exists()
    assert os.listdir(shelf.data / "dropped") == []


def test_damaged_files_are_set_aside_and_nothing_they_named_is_lost(desktop, program):
    [kept, *new] = desktop.files("kept.txt", *(f"new {n}.txt" for n in range(5)))
    good = state_of(kept)
    snippet = desktop.write(program.data / "dropped/Text-1700000000-ABCD.txt", "mine")
    for file, state, preferences in zip(
            new, ("garbage \0{{{", good[:len(good) // 2], "", good.replace('"closed": []', '"closed": 3'),
                  json.dumps({"current": SHELF, "shelves": [], "closed": []})),
            ("no json", '{"dragModifier": ["shift"], "ignoredApps": 7, "onboarded": "yes"}', "[]", "\0", "")):
        desktop.write(program.state_file, state)
        desktop.write(program.preferences, preferences)
        for name in ("shelves.json.tmp", ".shelves.json.abc123", "shelves.json.AbCdEf"):  # Of saves that never ended.
            desktop.write(program.data / name, '{"current":"E621')
        program.start()
        assert program.state_file.read_text() == state, "nothing is written before there is something to save"
        desktop.run(program.binary, file)
        wait_for(lambda: program.state_file.read_text() != state, what="a save")
        assert program.paths() == [os.fsencode(file)], state
        assert (program.data / "shelves-damaged.json").read_text() == state
        if preferences == "no json":
            assert preferences in [f.read_text() for f in program.preferences.parent.iterdir()]
        program.restart()  # A good state, but what the damaged one named may be all that is left of it.
        assert program.paths() == [os.fsencode(file)] and snippet.read_text() == "mine"
        program.kill()
        (program.data / "shelves-damaged.json").unlink()


def test_a_data_folder_without_room(desktop, program):
    """The program goes on from memory, loses nothing that was saved, and saves when it can again."""
    if os.geteuid() != 0:
        pytest.skip("only root may mount")
    program.data.mkdir()
    desktop.mount(program.data, "-t", "tmpfs", "-o", "size=64k", "vantle-e2e")
    files = desktop.files("kept.txt", "first.txt", "second.txt")
    program.keep(files[0])
    program.start()
    saved = program.state_file.read_bytes()
    filler = fill_up(program.data)
    carry(program, file_list(files[1]))
    carry(program, {"text/plain": b"a snippet that finds no room" * 1000})
    program.wait_until_idle()
    assert program.state_file.read_bytes() == saved, "a failed save must leave the old file"
    assert program.panel_is_up(), "the row is there, although it could not be saved"
    filler.unlink()
    carry(program, file_list(files[2]))
    program.wait_for_items(3)
    assert program.paths() == [os.fsencode(file) for file in files]


def fill_up(folder):
    path = folder / "filler"
    with open(path, "wb", buffering=0) as file:
        try:
            while True:
                file.write(b"x" * 4096)
        except OSError:
            return path


def test_new_files_in_a_watched_folder_come_whole_and_once(desktop, program):
    folder = desktop.home / "Screenshots"
    desktop.write(folder / "old.png", "was here before")
    program.prefer(watchedFolders=[str(folder), str(desktop.home / "none")])
    program.start()
    slow = subprocess.Popen([sys.executable, "-c", SLOW, str(folder / "slow.mkv")])
    partial = desktop.write(folder / "paper.pdf.part", "half")
    desktop.write(folder / "paper.pdf", "")  # As Firefox reserves the name.
    desktop.screenshot(folder / "shot.png")
    wait_for(program.panel_is_up, 5, "the panel to come up for the screenshot")
    assert program.names() == [b"shot.png"]
    assert slow.poll() is None, "the other file was still being written"
    partial.rename(folder / "paper.pdf")
    wait_for(lambda: program.names() == [b"shot.png", b"paper.pdf"], 5, "the download")
    slow.wait()
    wait_for(lambda: program.names() == [b"shot.png", b"paper.pdf", b"slow.mkv"], 5, "the file that is whole now")
