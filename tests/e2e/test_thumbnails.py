"""Rows show pictures of their files, and live with files that are no pictures or no longer there."""
import os
import struct
import zlib
from pathlib import Path

import pytest
from PIL import Image

from desktop import wait_for
from program import CLOSE

main = pytest.mark.main
RED, GREEN, BLUE, YELLOW = (200, 30, 40), (30, 160, 60), (40, 60, 200), (230, 190, 20)
SIDE = 32  # Of a row's picture, in points.


def jpeg(path, colour):
    """Written in its place, as cameras' and painters' programs do."""
    with open(path, "wb") as file:
        Image.new("RGB", (1600, 1600), colour).save(file, "JPEG", quality=95)
    return path


def document(path, colour):
    Image.new("RGB", (400, 400), colour).save(path)
    return path


def film(path, colour):
    Image.new("RGB", (256, 256), colour).save(path, "PNG")
    return path


def bomb(path, edge=60000):
    """A PNG file of a few bytes that says it has billions of pixels."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", edge, edge, 8, 6, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(1 << 20))))
    return path


def thumbnailer(desktop):
    """An application's program for videos, which are pictures. It leaves processes behind that would run for minutes."""
    script = desktop.write(desktop.home / "bin/make", '#!/bin/sh\nsleep 611 &\nsetsid sleep 611 &\ncp "$1" "$2"\n')
    script.chmod(0o700)
    desktop.write(desktop.data_home / "thumbnailers/test.thumbnailer",
                  f"[Thumbnailer Entry]\nExec={script} %i %o %s\nMimeType=video/mp4;\n")


class Rows:
    def __init__(self, desktop, program):
        self.desktop, self.program = desktop, program

    def shows(self, row, colour):
        """Whether a square of that colour is where the row's picture belongs."""
        y, rect = self.program.row(row)[1], self.program.panel_rect()
        found = self.desktop.find_colour(colour, (rect.x, y - 22, 70, 44))
        return any(abs(r.width - SIDE) <= 4 and abs(r.height - SIDE) <= 4 for r in found)

    def wait_for(self, row, colour):
        wait_for(lambda: self.shows(row, colour), 15, f"the picture in row {row}")

    def processes(self, name):
        """Those of that name that came from this desktop."""
        def is_one(pid):
            try:
                return Path(f"/proc/{pid}/comm").read_text().strip() == name
            except OSError:
                return False
        return [pid for pid in self.desktop._marked_processes() if is_one(pid)]


@main
@pytest.mark.any_wm
def test_rows_show_their_files_and_survive_what_is_none(desktop, program):
    thumbnailer(desktop)
    program.start()
    rows = Rows(desktop, program)
    files = [jpeg(desktop.home / "red.jpg", RED), document(desktop.home / "blue.pdf", BLUE),
             film(desktop.home / "film.mp4", YELLOW), bomb(desktop.home / "bomb.png"),
             desktop.write(desktop.home / "broken.jpg", b"\xff\xd8\xff\xe0 and no more")]
    desktop.run(program.binary, *files)
    program.wait_for_items(len(files))
    order = [os.path.basename(path) for path in program.paths()]
    photograph = order.index(b"red.jpg")
    desktop.move(300, 700)
    rows.wait_for(photograph, RED)
    rows.wait_for(order.index(b"blue.pdf"), BLUE)
    rows.wait_for(order.index(b"film.mp4"), YELLOW)
    wait_for(lambda: not rows.processes("sleep"), 5, "what the thumbnailer left behind to be ended")
    assert program.memory() < 200

    jpeg(files[0], GREEN)
    files[3].unlink()
    desktop.click(*program.header(CLOSE))
    program.wait_until_hidden()
    program.summon()
    desktop.move(300, 700)
    rows.wait_for(photograph, GREEN)
    assert rows.processes("vantle-decoder")
    program.kill()
    wait_for(lambda: not rows.processes("vantle-decoder"), 5, "the decoders to end with the program")
