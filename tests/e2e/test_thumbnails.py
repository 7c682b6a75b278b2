"""Rows show pictures of their files, and live with files that are no pictures or no longer there."""
import struct
import zlib
from pathlib import Path

import pytest

from desktop import wait_for
from peers import picture
from program import CLOSE

RED, GREEN, BLUE, YELLOW = (200, 30, 40), (30, 160, 60), (40, 60, 200), (230, 190, 20)
SIDE = 32  # Of a row's picture, in points.


def bomb(edge=60000):
    """A PNG file of a few bytes that says it has billions of pixels."""
    small = picture(1, 1, RED)
    header = b"IHDR" + struct.pack(">II", edge, edge) + small[24:29]
    return small[:12] + header + struct.pack(">I", zlib.crc32(header)) + small[33:]


@pytest.mark.main
@pytest.mark.any_wm
def test_rows_show_their_files_and_survive_what_is_none(desktop, program):
    # An application's program for videos, which are pictures. It leaves processes behind that would run for minutes.
    script = desktop.write(desktop.home / "bin/make", '#!/bin/sh\nsleep 611 &\nsetsid sleep 611 &\ncp "$1" "$2"\n')
    script.chmod(0o700)
    desktop.write(desktop.data_home / "thumbnailers/test.thumbnailer",
                  f"[Thumbnailer Entry]\nExec={script} %i %o %s\nMimeType=video/mp4;\n")
    program.start()
    files = [desktop.write(desktop.home / name, content) for name, content in (
        ("red.jpg", picture(1600, 1600, RED, "JPEG")), ("blue.pdf", picture(400, 400, BLUE, "PDF")),
        ("film.mp4", picture(256, 256, YELLOW)), ("bomb.png", bomb()), ("broken.jpg", b"\xff\xd8\xff\xe0 and no more"))]
    program.add(*files)
    rows = program.names()

    def wait_for_picture(file, colour):
        """A square of that colour where the row's picture belongs."""
        def shows():
            y, rect = program.row(rows.index(file))[1], program.panel_rect()
            found = desktop.find_colour(colour, (rect.x, y - 22, 70, 44))
            return any(abs(r.width - SIDE) <= 4 and abs(r.height - SIDE) <= 4 for r in found)
        wait_for(shows, 15, f"the picture of {file}")

    def processes(name):
        """Those of that name that came from this desktop."""
        def is_one(pid):
            try:
                return Path(f"/proc/{pid}/comm").read_text().strip() == name
            except OSError:
                return False
        return [pid for pid in desktop.marked_processes() if is_one(pid)]
    desktop.move(300, 700)
    for file, colour in ((b"red.jpg", RED), (b"blue.pdf", BLUE), (b"film.mp4", YELLOW)):
        wait_for_picture(file, colour)
    wait_for(lambda: not processes("sleep"), 5, "what the thumbnailer left behind to be ended")
    assert program.memory() < 200

    files[0].write_bytes(picture(1600, 1600, GREEN, "JPEG"))  # In its place, as cameras' and painters' programs do.
    files[3].unlink()
    desktop.click(*program.header(CLOSE))
    program.wait_until_hidden()
    program.summon()
    desktop.move(300, 700)
    wait_for_picture(b"red.jpg", GREEN)
    assert processes("vantle-decoder")
    program.kill()
    wait_for(lambda: not processes("vantle-decoder"), 5, "the decoders to end with the program")
