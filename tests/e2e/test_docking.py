"""An untouched panel leaves a tab at the screen's edge, and the ways back."""
import time

import pytest
from Xlib import X, Xatom
from Xlib.ext import xtest

from desktop import Rect, wait_for
from peers import carry, file_list, source

main = pytest.mark.main
any_wm = pytest.mark.any_wm
TAB = (22, 60)
FAR = (300, 700)  # From the panel and from every edge.
TEXT = {"text/plain;charset=utf-8": b"a note", "UTF8_STRING": b"a note"}


def tab(program):
    found = program.desktop.windows("Vantle Tab", program.process.pid)
    return Rect(program.desktop.rect(found[0])) if found else None


def dock(program, place=FAR):
    """Waits away from the panel until the tab stands in its place."""
    program.desktop.move(*place)
    wait_for(lambda: tab(program) and not program.panel_is_up(), 8, "the panel to dock")
    return tab(program)


def undock(program, x, y):
    """Hovers over the tab."""
    program.desktop.move(x, y)
    program.desktop.move(x + 1, y + 1)
    return wait_for_panel(program)


def wait_for_panel(program, timeout=3):
    wait_for(lambda: program.panel_is_up() and not tab(program), timeout, "the panel to come back")
    return program.panel_rect()


def with_one_item(program, **preferences):
    """Started, with a text on the shelf, and the panel up."""
    program.prefer(dockToEdge=True, shakeToSummon=False, cornerToSummon=False, **preferences)
    program.start()
    program.summon()
    carry(program, TEXT)
    program.wait_for_items(1)


def two_monitors(desktop):
    """The right one hangs lower; both are half as wide as the root window."""
    desktop.run("xrandr", "--setmonitor", "left", "640/200x700/200+0+0", "screen")
    add_right_monitor(desktop)


def add_right_monitor(desktop):
    desktop.run("xrandr", "--setmonitor", "right", "640/200x700/200+640+100", "none")


@main
@any_wm
def test_an_idle_panel_docks_and_its_tab_brings_it_back(desktop, program):
    with_one_item(program)
    text = source(desktop, TEXT)
    file = source(desktop, file_list(*desktop.files("file.txt")), place=(0, 420, 300, 300))
    place = program.panel_rect()
    desktop.move(*place.centre)
    time.sleep(2)
    assert tab(program) is None, "it docked under the pointer"
    assert all(desktop.property(window, "_NET_WM_ICON") is not None
               for window in (program.panel(), *desktop.windows("Vantle Tab", hidden=True)))
    left = time.monotonic()
    rect = dock(program)
    assert 0.9 <= time.monotonic() - left <= 2.5  # It looks at the pointer four times a second.
    assert rect == (desktop.size[0] - TAB[0], place.centre[1] - TAB[1] // 2, *TAB)

    desktop.glide(*rect.at(-0.5, 0.5))
    desktop.move(*rect.centre)
    back = wait_for_panel(program)
    assert back == (desktop.size[0] - place.width - 10, place.y, place.width, place.height)

    dock(program)
    desktop.move(*rect.centre)
    time.sleep(0.1)
    desktop.move(*FAR)
    time.sleep(0.5)
    assert tab(program), "passing over the tab was enough"
    focus = desktop.active_window()
    desktop.move(*rect.at(0.2, 0.5))
    xtest.fake_input(desktop.display, X.ButtonPress, 1)  # At once: a moment later it would be hovered over.
    desktop.display.sync()
    wait_for_panel(program, 0.15)
    desktop.release()
    time.sleep(0.1)
    assert desktop.active_window() == focus

    for count, dragged in ((2, text), (3, file)):
        dock(program)
        desktop.begin_drag(*dragged.centre)
        desktop.glide(*rect.centre)
        wait_for_panel(program)
        program.drop()
        program.wait_for_items(count)


@main
@any_wm
def test_it_docks_on_the_second_of_two_screens_and_leaves_it_with_the_screen(desktop, program):
    two_monitors(desktop)
    with_one_item(program, summonPosition="cursor")
    desktop.move(700, 300)  # The left half of the right screen: its tab stands on the border of the two.
    program.summon()
    assert program.panel_rect()[:2] == (714, 314)
    rect = dock(program, (300, 650))
    assert rect == (640, 314 + 150 - 30, *TAB)
    assert undock(program, *rect.centre)[:2] == (650, 314)
    dock(program, (300, 650))
    desktop.run("xrandr", "--delmonitor", "right")
    wait_for(lambda: tab(program) and tab(program)[:2] == (0, 434), 5, "the tab to follow")
    assert undock(program, 5, 440)[:2] == (10, 314)
    dock(program, (300, 650))
    add_right_monitor(desktop)
    time.sleep(1)
    assert tab(program)[:2] == (0, 434)

    # The tab follows what the desktop's panels take.
    desktop.move(900, 300)
    program.summon()

    def stands_at(edge, what):
        wait_for(lambda: tab(program) and tab(program)[0] == edge - TAB[0], 8, f"the tab to stand {what}")
    desktop.move(300, 650)
    stands_at(1280, "at the edge")
    bar = desktop.root.create_window(1240, 100, 40, 700, 0, X.CopyFromParent)
    bar.change_property(desktop.atom("_NET_WM_WINDOW_TYPE"), Xatom.ATOM, 32, [desktop.atom("_NET_WM_WINDOW_TYPE_DOCK")])
    for pixels in (40, 60):
        bar.change_property(desktop.atom("_NET_WM_STRUT_PARTIAL"), Xatom.CARDINAL, 32,
                            [0, pixels, 0, 0, 0, 0, 100, 799, 0, 0, 0, 0])
        bar.map()
        desktop.display.sync()
        stands_at(1280 - pixels, "beside the bar")
    bar.destroy()
    desktop.display.sync()
    stands_at(1280, "at the edge again")
    for areas, edge in (([0, 0, 640, 700, 640, 100, 610, 700], 1250), ([], 1280)):  # As shells with bars of their own do.
        desktop.root.change_property(desktop.atom("_GTK_WORKAREAS_D0"), Xatom.CARDINAL, 32, areas)
        desktop.display.sync()
        stands_at(edge, "in the work area")


def test_the_tab_stands_above_a_full_screen_window_and_takes_no_focus(desktop, program):
    with_one_item(program)
    film = source(desktop, TEXT, place=(100, 420, 300, 300))
    desktop.activate(film.window)
    desktop.message(film.window, "_NET_WM_STATE", 1, desktop.atom("_NET_WM_STATE_FULLSCREEN"))
    wait_for(lambda: desktop.rect(film.window)[2:] == desktop.size, what="a full-screen window")
    rect = dock(program)

    def on_top():
        at = desktop.root.translate_coords(desktop.root, *rect.centre).child
        return at and desktop.title(at) == "Vantle Tab"
    assert on_top()
    desktop.click(640, 400)
    desktop.activate(film.window)
    time.sleep(0.3)
    assert on_top(), "the full-screen window came above the tab"
    assert desktop.active_window() == film.window.id
    undock(program, *rect.centre)
    assert desktop.active_window() == film.window.id
    lock = desktop.root.create_window(0, 0, *desktop.size, 0, X.CopyFromParent, override_redirect=True)
    lock.map()
    dock(program)
    assert not on_top(), "the tab stands above a screen lock"
