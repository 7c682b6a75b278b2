"""The preview, by keyboard, in the real program."""
import os
import shutil
import subprocess
import time
import zipfile
from pathlib import Path

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, png
from test_docking import tab, two_monitors
from test_keyboard import activate
from test_moved_files import hung  # noqa: F401
from test_storage import state_of

main = pytest.mark.main
FILM = Path(__file__).resolve().parents[1] / "pictures/film.avi"


def pdf(colour):
    """One page, filled with a colour."""
    paint = "{:.4f} {:.4f} {:.4f} rg 0 0 200 200 re f".format(*(part / 255 for part in colour))
    objects = ["<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
               "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 200]/Contents 4 0 R>>",
               f"<</Length {len(paint)}>>stream\n{paint}\nendstream"]
    text = "%PDF-1.4\n"
    places = []
    for number, content in enumerate(objects, 1):
        places.append(len(text))
        text += f"{number} 0 obj{content}endobj\n"
    table = "".join(f"{place:010} 00000 n \n" for place in places)
    return (text + f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n{table}"
            f"trailer<</Size {len(objects) + 1}/Root 1 0 R>>\nstartxref\n{len(text)}\n%%EOF").encode()


def make_files(desktop):
    """One of each kind, and some that cannot be shown."""
    home = desktop.home
    archive = home / "archive.zip"
    with zipfile.ZipFile(archive, "w") as into:
        into.writestr("inside/one.txt", "1")
    pipe = home / "pipe.txt"
    os.mkfifo(pipe)
    (home / "folder/within").mkdir(parents=True)
    return [desktop.write(home / "words.txt", "some words\n"),
            desktop.write(home / "picture.png", png(900, 700, IMAGE_COLOUR)),
            desktop.write(home / "paper.pdf", pdf(LINK_COLOUR)),
            archive, home / "folder", shutil.copy(FILM, home / "film.avi"),
            desktop.write(home / "broken.png", png(900, 700, IMAGE_COLOUR)[:60]),
            desktop.write(home / "broken.pdf", b"%PDF-1.4\nnothing"),
            desktop.write(home / "broken.zip", b"PK\3\4" + bytes(40)), pipe]


@main
def test_every_kind_by_keyboard(desktop, program):
    program.start()
    files = make_files(desktop)
    desktop.run(program.binary, *files)
    program.wait_for_items(len(files))
    activate(program)
    shown = {"picture.png": IMAGE_COLOUR, "paper.pdf": LINK_COLOUR}

    plays = (Path(program.binary).parent / "vantle-player").exists()

    def players():
        return subprocess.run(["pgrep", "-P", str(program.process.pid), "vantle-player"]).returncode == 0

    def has_keyboard(title):
        wait_for(lambda: desktop.focused_title() == title, 5, f"{title} to have the keyboard")

    desktop.keys("Down")
    program.wait_until_idle()
    desktop.keys("space")
    for place, file in enumerate(files):
        if place:
            desktop.keys("Down")
        has_keyboard(file.name)
        if plays:
            wait_for(lambda: players() == (file.name == "film.avi"), 5, f"the player at {file.name}")
        if file.name in shown:
            window = desktop.window(file.name)
            wait_for(lambda: desktop.find_colour(shown[file.name], desktop.rect(window), smallest=20000), 10, file.name)
    desktop.keys("Escape")
    has_keyboard("Vantle")

    # The selection has come along, and the window can be opened again.
    for how in ("space", "Escape"):
        program.wait_until_idle()
        desktop.keys("space")
        has_keyboard("pipe.txt")
        program.wait_until_idle()
        desktop.keys(how)
        has_keyboard("Vantle")
    desktop.keys("space")
    has_keyboard("pipe.txt")
    desktop.keys("Up")
    has_keyboard("broken.zip")
    files[-2].unlink()
    desktop.keys("Up")
    has_keyboard("broken.pdf")
    desktop.keys("space")
    has_keyboard("Vantle")
    program.assert_alive()


@main
def test_beside_the_panel(desktop, program):
    """On the screen of the panel, which stays; what is chosen there is shown here."""
    two_monitors(desktop)
    files = [desktop.write(desktop.home / f"{name}.txt", name) for name in "abc"]
    program.prefer(onboarded=True, dockToEdge=True, shakeToSummon=False, cornerToSummon=False, summonPosition="cursor")
    desktop.write(program.state_file, state_of(*files))
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
    wait_for(lambda: tab(program), 8, "the panel to dock")


@main
def test_a_dead_server_holds_up_its_own_files_alone(desktop, program, hung):  # noqa: F811
    """More of its files are looked at than the program has threads, some of them through a link."""
    (desktop.home / "link").symlink_to(hung)
    far = [place / f"{place.name} {number}.txt" for number in range(5) for place in (hung, desktop.home / "link")]
    words = desktop.write(desktop.home / "words.txt", "some words\n")
    watched = desktop.home / "Watched"
    watched.mkdir()
    desktop.write(program.state_file, state_of(*far, words))
    program.prefer(watchedFolders=[str(hung), str(watched)])
    program.start()
    activate(program)
    desktop.keys("Down")
    for file in [*far, words]:
        desktop.keys("space" if file == far[0] else "Down")
        wait_for(lambda: desktop.focused_title() == file.name, 5, f"the preview of {file.name}")
    window = desktop.rect(desktop.window(words.name))
    wait_for(lambda: desktop.find_colour((255, 255, 255), window, smallest=20000), 5, "its text")
    desktop.write(watched / "new.txt", "x")
    wait_for(lambda: os.path.basename(program.paths()[-1]) == b"new.txt", 5, "the watched folder's file")
