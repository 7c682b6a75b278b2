"""Entries follow their files: renamed, moved, trashed, deleted; with the panel up, hidden, and while nothing runs."""
import ctypes
import os
import time

import pytest

from desktop import wait_for
from test_storage import state_of

main = pytest.mark.main
CHECK = 60  # Seconds: two checks and two walks of the file system, on a busy machine.


def names(program):
    return [os.path.basename(path).decode() for path in program.paths()]


def is_saved(program, wanted):
    return lambda: program.state_file.exists() and names(program) == wanted


@main
@pytest.mark.any_wm
def test_entries_follow_their_files(desktop, program):
    files = [desktop.write(desktop.home / f"Files/{name}.txt", name) for name in "abcdefg"]
    other = desktop.home / "Elsewhere/deep er/ö"
    other.mkdir(parents=True)
    desktop.write(program.state_file, state_of(*files))
    program.start()
    program.summon()
    wait_for(lambda: all("bookmark" in item for item in program.items()), CHECK, "bookmarks to be made")

    a, b, c, d, e, f, g = files
    a.rename(a.with_name("renamed.txt"))
    b.rename(other / "moved.txt")
    desktop.run("gio", "trash", c)
    d.unlink()
    desktop.write(e.with_name("new"), "saved by an editor").rename(e)
    wait_for(is_saved(program, ["renamed.txt", "moved.txt", "e.txt", "f.txt", "g.txt"]), CHECK, "the moves to be seen")

    settled = program.state_file.stat().st_mtime_ns
    wait_for(lambda: len(program.items()[2]["bookmark"]) > 0, 1)
    desktop.keys("Escape")
    program.wait_until_hidden()
    f.rename(f.with_name("while hidden.txt"))
    program.wait_until_idle()
    assert program.state_file.stat().st_mtime_ns == settled, "nothing is looked for while the panel is hidden"
    program.summon()
    wait_for(is_saved(program, ["renamed.txt", "moved.txt", "e.txt", "while hidden.txt", "g.txt"]), CHECK)

    program.kill()
    g.parent.rename(g.parent.with_name("Files 2"))
    program.start()
    assert names(program) == ["renamed.txt", "moved.txt", "e.txt", "while hidden.txt", "g.txt"]
    assert all(os.path.exists(path) for path in program.paths())


@pytest.fixture
def hung(desktop):
    """A mounted file system whose server never answers: whoever looks at a file there waits."""
    if os.geteuid() != 0 or not os.path.exists("/dev/fuse"):
        pytest.skip("only root may mount, and only where there is FUSE")
    folder = desktop.home / "server"
    folder.mkdir()
    device = os.open("/dev/fuse", os.O_RDWR)
    libc = ctypes.CDLL(None, use_errno=True)
    options = f"fd={device},rootmode=40000,user_id=0,group_id=0".encode()
    assert libc.mount(b"sshfs", os.fsencode(folder), b"fuse.sshfs", 0, options) == 0, os.strerror(ctypes.get_errno())
    yield folder
    os.close(device)  # Ends every wait.
    libc.umount2(os.fsencode(folder), 2)


@main
@pytest.mark.any_wm
def test_a_server_that_does_not_answer_holds_nothing_up(desktop, program, hung):
    near = desktop.write(desktop.home / "near.txt", "x")
    desktop.write(program.state_file, state_of(near, hung / "far.txt", hung / "far/deep.txt"))
    begin = time.monotonic()
    program.start()
    assert time.monotonic() - begin < 3
    assert names(program) == ["near.txt", "far.txt", "deep.txt"], "nobody found them missing"
    program.summon()
    for name in ("one.txt", "two.txt"):  # The second in a later check, with the first one's look still waiting.
        near = near.rename(near.with_name(name))
        wait_for(is_saved(program, [name, "far.txt", "deep.txt"]), CHECK + 3, "the near file to be followed")
    desktop.click(*program.row(0))
    desktop.keys("Delete")
    program.wait_for_items(2)
    begin = time.monotonic()
    desktop.keys("Control_L", "z")
    program.wait_for_items(3)
    assert time.monotonic() - begin < 1.5
    program.restart()
    assert names(program) == ["two.txt", "far.txt", "deep.txt"]
