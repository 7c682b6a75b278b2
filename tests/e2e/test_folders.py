"""Watched folders: what lands there comes onto the shelf, whole and once."""
import os
import subprocess
import sys
import time

import pytest

from desktop import wait_for

SLOW = "import sys, time\nf = open(sys.argv[1], 'wb', 0)\nfor _ in range(30): f.write(b'x' * 1000); time.sleep(0.1)"


@pytest.mark.main
@pytest.mark.any_wm
def test_new_files_in_a_watched_folder(desktop, program):
    folder = desktop.home / "Screenshots"
    desktop.write(folder / "old.png", "was here before")
    program.prefer(watchedFolders=[str(folder), str(desktop.home / "none")])
    program.start()

    def names():
        return [os.path.basename(path).decode() for path in program.paths()]

    slow = subprocess.Popen([sys.executable, "-c", SLOW, str(folder / "slow.mkv")])
    partial = desktop.write(folder / "paper.pdf.part", "half")
    desktop.write(folder / "paper.pdf", "")  # As Firefox reserves the name.
    desktop.screenshot(folder / "shot.png")
    wait_for(program.panel_is_up, 5, "the panel to come up for the screenshot")
    assert names() == ["shot.png"]
    assert slow.poll() is None, "the other file was still being written"
    partial.rename(folder / "paper.pdf")
    wait_for(lambda: names() == ["shot.png", "paper.pdf"], 5, "the download")
    slow.wait()
    wait_for(lambda: names() == ["shot.png", "paper.pdf", "slow.mkv"], 5, "the file that is whole now")

    # Without the folder in the settings nothing is reported.
    program.kill()
    program.prefer(watchedFolders=[])
    program.start()
    desktop.write(folder / "later.png", "x")
    time.sleep(1.5)
    assert names() == ["shot.png", "paper.pdf", "slow.mkv"]
