"""The preview, by keyboard, in the real program."""
import os
import shutil
import subprocess
import time
import zipfile
from pathlib import Path

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, picture
from test_docking import dock, tab, two_monitors
from test_moved_files import hung  # noqa: F401

pytestmark = pytest.mark.main
FILM = Path(__file__).resolve().parents[1] / "pictures/film.avi"


def make_files(desktop):
    """One of each kind, and some that cannot be shown."""
    home = desktop.home
    archive = home / "archive.zip"
    with zipfile.ZipFile(archive, "w") as into:
        into.writestr("inside/one.txt", "1")
    pipe = home / "pipe.txt"
    os.mkfifo(pipe)
    (home / "folder/within").mkdir(parents=True)
    return [*desktop.files("words.txt"),
            desktop.write(home / "picture.png", picture(900, 700, IMAGE_COLOUR)),
            desktop.write(home / "paper.pdf", picture(200, 200, LINK_COLOUR, "PDF")),
            archive, home / "folder", shutil.copy(FILM, home / "film.avi"),
            desktop.write(home / "broken.png", picture(900, 700, IMAGE_COLOUR)[:60]),
            desktop.write(home / "broken.pdf", b"%PDF-1.4\nnothing"),
            desktop.write(home / "broken.zip", b"PK\3\4" + bytes(40)), pipe]


def test_every_kind_by_keyboard(desktop, program):
    program.start()
    files = make_files(desktop)
    program.add(*files)
    program.activate()
    shown = {"picture.png": IMAGE_COLOUR, "paper.pdf": LINK_COLOUR}
    plays = (Path(program.binary).parent / "vantle-player").exists()

    def players():
        return subprocess.run(["pgrep", "-P", str(program.process.pid), "vantle-player"]).returncode == 0

    def press(key, title):
        desktop.keys(key)
        desktop.wait_for_focus(title)
    desktop.keys("Down")
    program.wait_until_idle()
    for place, file in enumerate(files):
        press("Down" if place else "space", file.name)
        if plays:
            wait_for(lambda: players() == (file.name == "film.avi"), 5, f"the player at {file.name}")
        if file.name in shown:
            window = desktop.window(file.name)
            wait_for(lambda: desktop.find_colour(shown[file.name], desktop.rect(window), smallest=20000), 10, file.name)
    press("Escape", "Vantle")

    # Walking has left the selection where it was, and the window can be opened again.
    for how in ("space", "Escape"):
        program.wait_until_idle()
        press("space", "words.txt")
        program.wait_until_idle()
        press(how, "Vantle")
    press("space", "words.txt")
    press("Down", "picture.png")
    files[1].unlink()
    press("Down", "paper.pdf")
    press("space", "Vantle")
    program.assert_alive()


def test_beside_the_panel(desktop, program):
    """On the screen of the panel, which stays; what is chosen there is shown here."""
    two_monitors(desktop)
    program.prefer(dockToEdge=True, shakeToSummon=False, cornerToSummon=False, summonPosition="cursor")
    program.keep(*desktop.files("a.txt", "b.txt", "c.txt"))
    program.start()
    desktop.move(641, 200)
    program.summon()
    desktop.double_click(*program.row(1))
    window = desktop.window("b.txt")
    rect = program.panel_rect()
    assert desktop.rect(window).x >= rect.x + rect.width
    desktop.click(*program.row(2))
    wait_for(lambda: desktop.windows("c.txt"), 3, "the third one")
    desktop.move(300, 650)
    time.sleep(3)
    assert program.panel_rect() == rect and tab(program) is None, "it docked"
    desktop.activate(window)
    desktop.keys("Escape")
    wait_for(lambda: not desktop.windows("c.txt"), 3, "the preview to close")
    dock(program, (300, 650))


def test_a_dead_server_holds_up_its_own_files_alone(desktop, program, hung):  # noqa: F811
    """More of its files are looked at than the program has threads, some of them through a link."""
    (desktop.home / "link").symlink_to(hung)
    far = [place / f"{place.name} {number}.txt" for number in range(5) for place in (hung, desktop.home / "link")]
    words, old = desktop.files("words.txt", "Watched/old.txt")
    program.keep(*far, words)
    program.prefer(watchedFolders=[str(hung), str(old.parent)])
    program.start()
    program.activate()
    desktop.keys("Down")
    for file in [*far, words]:
        desktop.keys("space" if file == far[0] else "Down")
        desktop.wait_for_focus(file.name)
    window = desktop.rect(desktop.window(words.name))
    wait_for(lambda: desktop.find_colour((255, 255, 255), window, smallest=20000), 5, "its text")
    desktop.files("Watched/new.txt")
    wait_for(lambda: program.names()[-1] == b"new.txt", 5, "the watched folder's file")
