"""Sources that hang, die, send too much or lie, and files that are none."""
import os
import signal
import socket
import time

import pytest

from desktop import wait_for
from peers import carry, file_list, source, uri_list

main = pytest.mark.main
TOAST = (29, 29, 29)


def assert_takes_the_next_drop(desktop, shelf):
    rows = shelf.paths()
    [good] = desktop.files(f"good {len(rows)}.txt")
    carry(shelf, file_list(good))
    shelf.wait_for_items(len(rows) + 1)
    assert shelf.paths() == [*rows, os.fsencode(good)]


def assert_says_no(desktop, shelf):
    for _ in range(4):  # Long enough to be read.
        wait_for(lambda: desktop.find_colour(TOAST, shelf.panel_rect(), 400), 1, "the words that nothing was taken")
        time.sleep(0.4)


def assert_answers(desktop, shelf):
    asked = time.monotonic()
    desktop.run(shelf.binary)  # A second start is answered by the main thread.
    assert time.monotonic() - asked < 1.0


@main
def test_sources_that_fail_in_mid_drop_or_answer_late_or_never(desktop, shelf):
    for then in ("die", "hang"):  # Each answers the question what it carries, and then no more.
        before = shelf.paths()
        bad = source(desktop, {"text/uri-list": {"data": uri_list("/etc/hosts"), "answers": 1, "then": then}})
        desktop.begin_drag(*bad.centre)
        busy = shelf.processor_time()
        shelf.drop()
        bad.event(then)
        if then == "die":
            assert_says_no(desktop, shelf)
        assert_answers(desktop, shelf)
        assert shelf.processor_time() - busy < 0.5
        assert shelf.paths() == before
        desktop.end(bad.process, signal.SIGKILL)
        assert_takes_the_next_drop(desktop, shelf)
    shelf.summon()
    shelf.hide()
    mute = source(desktop, {"text/uri-list": {"answers": 0, "then": "hang"}})
    desktop.begin_drag(*mute.centre)
    mute.event("hang")
    desktop.end(mute.process, signal.SIGKILL)
    desktop.release()
    assert not shelf.panel_is_up()
    slow = source(desktop, {"text/uri-list": {"data": uri_list("/etc/hosts"), "after": 2.5}})
    desktop.begin_drag(*slow.centre)
    slow.event("answer")
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    desktop.end(slow.process, signal.SIGKILL)
    desktop.release()
    assert_takes_the_next_drop(desktop, shelf)


@pytest.mark.any_wm
def test_two_hundred_megabytes_of_text(desktop, shelf):
    big = source(desktop, {"text/plain;charset=utf-8": {"data": b"x" * 1_000_000, "times": 200}})
    shelf.summon()
    desktop.begin_drag(*big.centre)
    busy = shelf.processor_time()
    shelf.drop()
    big.event("answer", 30)
    for _ in range(10):
        assert_answers(desktop, shelf)
    wait_for(lambda: big.events("end") or big.events("failed"), 30, "the end of the drag")
    assert shelf.processor_time() - busy < 1.5
    assert shelf.memory() < 400
    assert_takes_the_next_drop(desktop, shelf)


@main
def test_a_copy_is_asked_for_and_a_move_alone_is_refused(desktop, shelf):
    files = file_list(*desktop.files("good.txt"))
    mover = carry(shelf, files, actions=["move"])
    assert mover.events("failed") and not mover.events("delete") and shelf.items() == []
    shelf.wait_until_hidden()
    both = carry(shelf, files, actions=["copy", "move", "link"])
    shelf.wait_for_items(1)
    assert both.event("end")["action"] == 2 and not both.events("delete")  # Copy.
    carry(shelf, {"XdndDirectSave0": b"later"})
    assert_says_no(desktop, shelf)


@main
def test_odd_files_and_addresses_that_lie_are_taken_without_being_opened(desktop, shelf):
    folder = desktop.home / "odd"
    folder.mkdir()
    os.mkfifo(folder / "fifo")
    listening = socket.socket(socket.AF_UNIX)
    listening.bind(os.fspath(folder / "socket"))
    os.symlink(folder / "nowhere", folder / "dangling")
    os.symlink(folder / "loop", folder / "loop")
    (folder / "locked").mkdir(mode=0)
    desktop.at_end.append(lambda: (folder / "locked").chmod(0o700))  # So that it can be cleared away.
    [good] = desktop.files("good.txt")
    odd = uri_list(*(folder / name for name in ("fifo", "socket", "dangling", "loop", "locked", "gone.txt")),
                   "/dev/zero", "/dev/tty", "/proc/self/mem")
    lies = [b"# a comment", b"file://localhost" + os.fsencode(good), b"file://elsewhere/etc/passwd",
            b"file:///nul%00byte", b"file:///%zz%", b"file:relative", b"", b"\xff\xfe", b"javascript:alert(1)",
            b"file://" + b"/x" * 5000, b""]
    busy = shelf.processor_time()
    carry(shelf, {"text/uri-list": odd + b"\r\n".join(lies) + uri_list(good)})

    def holds_the_good_one():
        return shelf.paths().count(os.fsencode(good)) == 1
    wait_for(holds_the_good_one, what="the good file")
    shelf.summon()
    shelf.wait_until_idle()
    assert shelf.processor_time() - busy < 1.5
    assert all(b"\0" not in path and b"comment" not in path for path in shelf.paths())
    shelf.restart()
    assert holds_the_good_one()
