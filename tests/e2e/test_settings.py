"""The settings' window: it opens in front, each change holds at once and after a restart."""
import pytest

from desktop import wait_for
from peers import Editor, record_openings, target
from program import SETTINGS
from test_gestures import file_source

pytestmark = pytest.mark.main
HOT_KEY = "Control_L", "Alt_L", "j"


def test_the_window_comes_to_the_front_and_stays_where_it_was_left(desktop, shelf):
    Editor(desktop, "mousepad", *desktop.files("other.txt"))
    other = desktop.window("other.txt")
    desktop.activate(other)
    window = shelf.open_settings()
    rect = desktop.rect(window)
    assert (rect.width, rect.height) == (460, 560)
    assert abs(rect.centre[0] - 640) < 20 and abs(rect.centre[1] - 400) < 45  # The title bar's height.
    left = desktop.place(window, 100, 90, 460, 560)
    for hide in ("cover", "close"):
        if hide == "close":
            desktop.keys("Control_L", "w")
            wait_for(lambda: not desktop.windows(SETTINGS), what="the window to close")
        desktop.activate(other)
        window = shelf.open_settings()
        assert len(desktop.windows(SETTINGS)) == 1
        rect = desktop.rect(window)
        assert abs(rect.x - left.x) < 8 and abs(rect.y - left.y) < 40, hide

    desktop.write(desktop.data_home / "applications/org.example.Zebra.desktop",
                  "[Desktop Entry]\nType=Application\nName=Zebra Viewer\nExec=true\nIcon=folder\n")
    desktop.type(*["Tab"] * 8, "space")
    dialog = desktop.window("Add Application", shelf.process.pid)
    wait_for(lambda: desktop.active_window() == dialog.id, 5, "the dialog to get the keyboard")
    desktop.type(*"zebra", "Return")
    shelf.wait_for_stored("ignoredApps", ["org.example.Zebra"])


def test_changes_hold_at_once_and_after_a_restart(desktop, program):
    """By keyboard alone in the form."""
    opened = record_openings(desktop, "Viewer")
    old, new = desktop.files("old.txt", "new.txt")
    program.keep(old)
    program.start()
    program.add(new)
    files = file_source(desktop, place=(20, 20, 160, 160))
    receiver = target(desktop, place=(20, 420, 200, 200))
    folder = desktop.home / "Pictures/Screenshots"

    def hide():
        if program.panel_is_up():
            program.activate()
            program.hide()

    def assert_drag(summons, *keys):
        hide()
        desktop.begin_drag(*files.centre)
        with desktop.held(*keys):
            desktop.glide(600, 300)
            if summons:
                wait_for(program.panel_is_up, 3, "the panel to come up for the drag")
            else:
                program.assert_stays_down(0.4)
        desktop.release()
        program.wait_until_hidden()

    def walk(tabs, keys, preference, value):
        desktop.type(*["Tab"] * tabs, *keys)
        program.wait_for_stored(preference, value)
    hide()
    assert_drag(True)
    program.open_settings()
    desktop.type("Tab", "space")
    wait_for((desktop.config_home / "autostart/app.vantleapp.Vantle.desktop").exists, what="the entry for the login")
    walk(1, ["space"], "shakeToSummon", False)
    assert_drag(False)
    program.open_settings()
    walk(0, ["space"], "shakeToSummon", True)
    walk(1, ["End"], "dragModifier", "shift")
    walk(1, ["space"], "cornerToSummon", False)
    walk(1, ["Down"], "summonPosition", "cursor")
    desktop.type("Tab", "Tab", "space")  # Records.
    program.wait_until_idle()
    desktop.keys(*HOT_KEY)
    program.wait_for_stored("hotKeyLabel", "⌥⌘J")
    walk(4, ["space"], "watchedFolders", [str(folder)])
    walk(2, ["Down"], "autoCleanup", "1h")  # From the new entry: the button has done its work and is gone.
    program.wait_for_items(1)
    walk(1, ["Down"], "doubleClickAction", "open")
    walk(1, ["space"], "removeAfterDragOut", True)
    desktop.keys("Control_L", "w")

    for turn in range(2):
        assert_drag(False)
        assert_drag(True, "Shift_L")
        desktop.move(300, 300)
        desktop.keys(*HOT_KEY)
        wait_for(program.panel_is_up, 3, "the panel to come up by the new key")
        assert program.panel_rect()[:2] == (314, 314)
        desktop.keys(*HOT_KEY)
        program.wait_until_hidden()
        shot = desktop.write(folder / f"shot {turn}.png", "x")
        program.wait_for_items(2)
        assert program.names() == [b"new.txt", shot.name.encode()]
        desktop.double_click(*program.row(0))
        wait_for(lambda: [what for _, what in opened()] == [f"Viewer {new}"] * (turn + 1), 5, "the file to be opened")
        program.give(1, *receiver.centre)
        receiver.event("drop", number=turn + 1)
        program.wait_for_items(1)
        assert program.names() == [b"new.txt"]
        program.restart()
    program.open_settings()
    walk(4, ["space"], "cornerToSummon", True)
