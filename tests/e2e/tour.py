#!/usr/bin/python3
"""Carries a file to the shelf, through a kill, and out again, on a desktop of its own; leaves pictures in shots/."""
import os
import sys
import time

from desktop import Desktop, wait_for
from peers import FileManager, carry
from program import TREE, Program

SHOTS = TREE / "shots"


def shot(desktop, name):
    time.sleep(0.5)  # Until nothing moves any more.
    print(desktop.screenshot(SHOTS / f"{name}.png"), flush=True)


def tour(desktop):
    desktop.run("xsetroot", "-solid", "#4a6572")
    program = Program(desktop)
    program.start()
    path = desktop.write(desktop.home / "Documents/Report 2026.txt", "the report\n")
    documents = FileManager(desktop, "thunar", path.parent)
    outbox = FileManager(desktop, "thunar", desktop.home / "Outbox", (0, 400, 480, 390))

    desktop.begin_drag(*documents.icons()[0].centre)
    wait_for(program.panel_is_up, 3, "the panel to come up for the drag")
    desktop.glide(*program.panel_rect().at(0.5, 0.6))
    shot(desktop, "1-drag")
    desktop.release()
    program.wait_for_items(1)
    shot(desktop, "2-dropped")

    program.restart()
    assert program.paths() == [os.fsencode(path)], "the row did not survive"
    program.summon()
    shot(desktop, "3-restarted")

    for row, offer in enumerate((b"https://www.debian.org/", b"A note on the way"), 1):
        carry(program, {"text/plain;charset=utf-8": offer}, place=(560, 100, 160, 120))
        program.wait_for_items(row + 1)
    shot(desktop, "4-link-and-text")

    program.give(0, *outbox.empty_place)
    copy = desktop.home / "Outbox" / path.name
    wait_for(lambda: copy.exists() and copy.read_bytes() == path.read_bytes(), what="the file to arrive")
    outbox.icons()
    shot(desktop, "5-arrived")
    assert path.exists(), "the original went"


def main():
    with Desktop() as desktop:
        try:
            tour(desktop)
        except AssertionError as failure:
            shot(desktop, "failed")
            print(failure, *(f"{log}:\n{log.read_text(errors='replace')}" for log in desktop.logs.glob("vantle*")),
                  sep="\n", file=sys.stderr)
            return 1
    print("The file came onto the shelf, survived the kill, and arrived.")
    return 0


sys.exit(main())
