"""When the panel comes up, when it does not, and when it goes."""
import time

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, Chromium, Editor, FileManager, file_list, source
from program import CLOSE

main = pytest.mark.main
STATES = {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}


def file_source(desktop, **options):
    return source(desktop, file_list(*desktop.files("file.txt")), **options)


@main
def test_the_panel_goes_when_nothing_was_dropped(desktop, shelf):
    thunar = FileManager(desktop, "thunar", desktop.files("from/a.txt")[0].parent)
    place = thunar.icons()[0].centre
    for _ in range(2):
        desktop.begin_drag(*place)
        wait_for(shelf.panel_is_up, 3, "the panel to come up")
        desktop.glide(700, 700)
        time.sleep(0.5)
        assert shelf.panel_is_up(), "the panel went before the drag ended"
        desktop.release()
        released = time.monotonic()
        shelf.wait_until_hidden()
        assert 0.39 <= time.monotonic() - released <= 1.0
    assert shelf.items() == []


@main
def test_text_windows_and_an_ignored_application_call_nothing_but_by_the_corner(desktop, program):
    program.prefer(ignoredApps=["thunar"])
    program.start()
    editor = Editor(desktop, "mousepad", desktop.write(desktop.home / "t.txt", "some words\n" * 40))
    editor.select_all()
    desktop.begin_drag(*editor.text_place)
    desktop.glide(700, 600)
    program.assert_stays_down()
    desktop.release()
    window = file_source(desktop, place=(600, 100, 200, 200))
    rect = desktop.rect(window.window)
    desktop.press(rect.centre[0], rect.y - 8)
    desktop.glide(700, 500)
    program.assert_stays_down()
    desktop.release()
    wait_for(lambda: desktop.rect(window.window) != rect, what="the window to have moved")
    thunar = FileManager(desktop, "thunar", desktop.files("from/a.txt")[0].parent)
    desktop.activate(thunar.window)
    desktop.begin_drag(*thunar.icons()[0].centre)
    width = desktop.size[0]
    desktop.glide(width - 7, 7)
    program.assert_stays_down()
    desktop.move(width - 2, 1)
    program.drop()
    program.wait_for_items(1)
    program.restart()
    desktop.move(10, 700)
    desktop.glide(width - 1, 0)  # No drag.
    program.assert_stays_down()


@main
def test_it_comes_up_where_it_should_and_where_it_was_left(desktop, program):
    program.prefer(summonPosition="cursor")
    program.start()
    for x, y in ((300, 200), (310, 220)):  # Shown for the first time and again.
        desktop.move(x, y)
        program.summon()
        assert program.panel_rect() == (x + 14, y + 14, 240, 300)
        program.hide()
    program.kill()
    program.prefer(summonPosition="last")
    program.start().summon()
    before = program.panel_rect()
    assert before == (desktop.size[0] - 24 - 240, 24, 240, 300)
    desktop.press(*before.at(0.5, 0.8))
    desktop.glide(before.x - 200, before.y + 400)
    desktop.release()
    moved = wait_for(lambda: next((r for r in [program.panel_rect()] if r.x < before.x - 200), None), what="the move")
    assert (moved.width, moved.height) == (before.width, before.height)
    desktop.press(moved.x + moved.width - 5, moved.y + moved.height - 5)
    desktop.glide(moved.x + moved.width + 75, moved.y + moved.height + 35)
    desktop.release()
    wait_for(lambda: abs(program.panel_rect().width - moved.width - 80) <= 2, what="the new size")
    time.sleep(1.0)  # It is stored after a moment of rest.
    resized = program.panel_rect()
    program.restart().summon()
    assert program.panel_rect() == resized
    desktop.begin_drag(*file_source(desktop).centre)  # A drag while it is up leaves it up.
    desktop.glide(700, 600)
    desktop.release()
    time.sleep(1.2)
    assert program.panel_is_up()
    desktop.click(*program.header(CLOSE))
    program.wait_until_hidden()


@main
def test_chromium_finds_the_panel_and_its_tab_whenever_they_show(desktop, program):
    """It remembers the windows on the screen while the pointer is busy, and for seconds after that."""
    program.prefer(dockToEdge=True)
    program.start()
    browser = Chromium(desktop)
    link, picture = browser.find(LINK_COLOUR), browser.find(IMAGE_COLOUR)
    for shown in ("before", "again", "in mid-drag"):
        if shown == "in mid-drag":
            desktop.begin_drag(*link)
        desktop.run(program.binary)
        wait_for(program.panel_is_up, 3, "the panel")
        if shown != "in mid-drag":
            desktop.begin_drag(*link)
        program.drop()
        program.wait_for_items(1, 3)
        if shown != "in mid-drag":
            program.summon()
            desktop.keys("Control_L", "a")
            desktop.keys("BackSpace")
            program.wait_for_items(0)
            program.hide()
    desktop.move(640, 780)
    tab = wait_for(lambda: next(iter(desktop.windows("Vantle Tab")), None), 8, "the tab")
    desktop.begin_drag(*picture)
    desktop.glide(*desktop.rect(tab).centre)
    program.drop()
    program.wait_for_items(2, 3)


@main
def test_hidden_it_takes_part_in_nothing(desktop, shelf):
    """Its window is mapped all the time."""
    hidden = wait_for(lambda: next((w for w in desktop.windows("Vantle", shelf.process.pid, hidden=True)
                                    if desktop.title(w) == "Vantle"), None), 3, "the hidden window")
    assert "WM_TAKE_FOCUS" not in desktop.atoms(hidden, "WM_PROTOCOLS")
    assert desktop.cardinal(hidden, "_NET_WM_WINDOW_OPACITY") == 0
    assert hidden.get_wm_hints().input == 0
    first = file_source(desktop)
    second = file_source(desktop, place=(500, 420, 300, 300))
    for former in (second, first):
        desktop.activate(former.window)
        time.sleep(0.5)  # mutter and the window have not settled it between them yet.
        shelf.summon()
        shelf.hide()
        wait_for(lambda: desktop.active_window() == former.window.id, 2, "the keyboard where it was")
    shelf.summon()
    desktop.end(first.process)
    shelf.hide()
    wait_for(lambda: desktop.active_window() != hidden.id, 2, "the keyboard elsewhere")
    desktop.end(second.process)
    third = file_source(desktop)
    desktop.activate(third.window)
    desktop.end(third.process)
    time.sleep(0.3)
    assert desktop.active_window() != hidden.id, "the last window gave the keyboard to it"
    file_source(desktop)
    desktop.message(desktop.root, "_NET_SHOWING_DESKTOP", 1)
    wait_for(lambda: not desktop.windows("source") or desktop.window_manager == "mutter", 3, "the bare desktop")
    desktop.run(shelf.binary, desktop.home / "file.txt")
    wait_for(lambda: shelf.panel_is_up() and desktop.is_on_top(hidden), 3, "the panel on the bare desktop")


@pytest.mark.any_wm
def test_it_stands_above_on_every_desktop_and_survives_another_window_manager(desktop, shelf):
    shelf.summon()
    before = shelf.panel_rect()
    other = file_source(desktop)
    for name in ("xfwm4", "mutter", "openbox"):
        desktop.end(desktop.manager)
        desktop.window_manager = name
        desktop.start_window_manager()
        panel = wait_for(shelf.panel, 5, "the panel")
        wait_for(lambda: desktop.cardinal(panel, "_NET_WM_DESKTOP") == 0xFFFFFFFF, 3, "it on every desktop")
        assert STATES <= desktop.atoms(panel, "_NET_WM_STATE"), name
        assert shelf.panel_rect() == before
        desktop.activate(wait_for(lambda: desktop.windows("source"), what="the window")[0])
        order = list(desktop.property(desktop.root, "_NET_CLIENT_LIST_STACKING"))
        assert order.index(panel.id) > order.index(other.window.id), name
        shelf.summon()
