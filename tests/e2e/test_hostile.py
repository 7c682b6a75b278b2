"""Sources that hang, die, send too much or lie, and files that are none."""
import os
import signal
import socket
import time

import pytest

from desktop import wait_for
from peers import source, uri_list

main = pytest.mark.main


def good_file(desktop):
    return desktop.write(desktop.home / "good.txt", "content")


def assert_takes_the_next_drop(desktop, shelf, before=0):
    good = source(desktop, {"text/uri-list": uri_list(good_file(desktop))}, place=(0, 400, 200, 200))
    shelf.take(*good.centre, before + 1)
    assert shelf.paths()[-1] == os.fsencode(good_file(desktop))


@main
@pytest.mark.parametrize("then", ["hang", "die"])
def test_a_source_that_fails_in_mid_drop(desktop, shelf, then):
    """It answers the question what it carries, and then no more."""
    first = source(desktop, {"text/uri-list": uri_list("/etc/hostname")})
    shelf.take(*first.centre, 1)
    desktop.end(first.process)
    bad = source(desktop, {"text/uri-list": {"data": uri_list("/etc/hosts"), "answers": 1, "then": then}})
    desktop.begin_drag(*bad.centre)
    busy = shelf.processor_time()
    shelf.drop()
    bad.event(then)
    asked = time.monotonic()
    shelf.desktop.run(shelf.binary)  # A second start is answered by the main thread.
    assert time.monotonic() - asked < 1.0
    assert shelf.processor_time() - busy < 0.5
    assert shelf.paths() == [b"/etc/hostname"]
    desktop.end(bad.process, signal.SIGKILL)
    assert_takes_the_next_drop(desktop, shelf, 1)


@main
@pytest.mark.any_wm
def test_a_source_answers_late_or_never(desktop, shelf):
    mute = source(desktop, {"text/uri-list": {"answers": 0, "then": "hang"}})
    desktop.begin_drag(*mute.centre)
    mute.event("hang")
    desktop.end(mute.process, signal.SIGKILL)
    desktop.release()
    assert not shelf.panel_is_up()
    slow = source(desktop, {"text/uri-list": {"data": uri_list(good_file(desktop)), "after": 2.5}})
    desktop.begin_drag(*slow.centre)
    slow.event("answer")
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    desktop.end(slow.process, signal.SIGKILL)
    desktop.release()
    assert_takes_the_next_drop(desktop, shelf)


def test_two_hundred_megabytes_of_text(desktop, shelf):
    big = source(desktop, {"text/plain;charset=utf-8": {"data": b"x" * 1_000_000, "times": 200}})
    shelf.summon()
    desktop.begin_drag(*big.centre)
    busy = shelf.processor_time()
    shelf.drop()
    big.event("answer", 30)
    for _ in range(10):
        asked = time.monotonic()
        desktop.run(shelf.binary)
        assert time.monotonic() - asked < 1.0
    wait_for(lambda: big.events("end") or big.events("failed"), 30, "the end of the drag")
    assert shelf.processor_time() - busy < 1.5
    assert shelf.memory() < 400
    shelf.assert_alive()
    before = len(shelf.items())
    assert_takes_the_next_drop(desktop, shelf, before)


@main
def test_a_move_is_refused(desktop, shelf):
    mover = source(desktop, {"text/uri-list": uri_list(good_file(desktop))}, ["move"])
    desktop.begin_drag(*mover.centre)
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    shelf.drop()
    mover.event("failed")
    assert not mover.events("delete") and shelf.items() == []
    shelf.wait_until_hidden()


def test_nothing_but_a_copy_is_asked_for(desktop, shelf):
    both = source(desktop, {"text/uri-list": uri_list(good_file(desktop))}, ["copy", "move", "link"])
    shelf.take(*both.centre, 1)
    assert both.event("end")["action"] == 2  # Copy.
    assert not both.events("delete")


@main
def test_odd_files_are_taken_without_being_opened(desktop, shelf):
    folder = desktop.home / "odd"
    folder.mkdir()
    names = ["fifo", "socket", "dangling", "loop", "locked", "gone.txt"]
    os.mkfifo(folder / "fifo")
    listening = socket.socket(socket.AF_UNIX)
    listening.bind(os.fspath(folder / "socket"))
    os.symlink(folder / "nowhere", folder / "dangling")
    os.symlink(folder / "loop", folder / "loop")
    (folder / "locked").mkdir(mode=0)
    desktop.at_end.append(lambda: (folder / "locked").chmod(0o700))  # So that it can be cleared away.
    paths = [folder / name for name in names] + ["/dev/zero", "/dev/tty", "/proc/self/mem", good_file(desktop)]
    odd = source(desktop, {"text/uri-list": uri_list(*paths)})
    desktop.begin_drag(*odd.centre)
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    busy = shelf.processor_time()
    shelf.drop()
    wait_for(lambda: os.fsencode(good_file(desktop)) in shelf.paths(), what="the good file")
    shelf.summon()
    time.sleep(0.5)
    assert shelf.processor_time() - busy < 1.0
    shelf.assert_alive()
    shelf.restart()
    assert os.fsencode(good_file(desktop)) in shelf.paths()


def test_addresses_that_lie(desktop, shelf):
    good = uri_list(good_file(desktop)).strip()
    lines = [b"# a comment", b"file://localhost" + good.removeprefix(b"file://"), b"file://elsewhere/etc/passwd",
             b"file:///nul%00byte", b"file:///%zz%", b"file:relative", b"", b"\xff\xfe", b"javascript:alert(1)",
             b"file://" + b"/x" * 5000, good]
    liar = source(desktop, {"text/uri-list": b"\r\n".join(lines)})
    desktop.begin_drag(*liar.centre)
    wait_for(shelf.panel_is_up, 3, "the panel to come up")
    shelf.drop()
    wait_for(lambda: os.fsencode(good_file(desktop)) in shelf.paths(), what="the good file")
    assert shelf.paths().count(os.fsencode(good_file(desktop))) == 1
    assert all(b"\0" not in path and b"comment" not in path for path in shelf.paths())
    shelf.restart()
    assert shelf.paths().count(os.fsencode(good_file(desktop))) == 1
