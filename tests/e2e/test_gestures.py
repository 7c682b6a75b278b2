"""When the panel comes up, when it does not, and when it goes."""
import time

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, Chromium, Editor, FileManager, source, uri_list
from program import CLOSE

main = pytest.mark.main


def file_source(desktop, **options):
    path = desktop.write(desktop.home / "file.txt", "content")
    return source(desktop, {"text/uri-list": uri_list(path)}, **options)


def assert_stays_down(shelf, seconds=0.8):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        assert not shelf.panel_is_up(), "the panel came up"
        time.sleep(0.02)


@main
def test_the_panel_goes_when_nothing_was_dropped(desktop, shelf):
    thunar = FileManager(desktop, "thunar", desktop.write(desktop.home / "from/a.txt", "x").parent)
    place = thunar.icons()[0].centre
    for _ in range(2):
        desktop.begin_drag(*place)
        wait_for(shelf.panel_is_up, 3, "the panel to come up")
        desktop.glide(700, 700)
        time.sleep(0.5)
        assert shelf.panel_is_up(), "the panel went before the drag ended"
        desktop.release()
        released = time.monotonic()
        wait_for(lambda: not shelf.panel_is_up(), 3, "the panel to go")
        assert 0.39 <= time.monotonic() - released <= 1.0
    assert shelf.items() == []


@main
def test_text_and_windows_call_nothing(desktop, shelf):
    editor = Editor(desktop, "mousepad", desktop.write(desktop.home / "t.txt", "some words\n" * 40))
    editor.select_all()
    desktop.begin_drag(*editor.text_place)
    desktop.glide(700, 600)
    assert_stays_down(shelf)
    desktop.release()
    window = file_source(desktop, place=(600, 100, 200, 200))
    rect = desktop.rect(window.window)
    desktop.press(rect.centre[0], rect.y - 8)
    desktop.glide(700, 500)
    assert_stays_down(shelf)
    desktop.release()
    wait_for(lambda: desktop.rect(window.window) != rect, what="the window to have moved")


@main
def test_an_ignored_application_calls_nothing_but_by_the_corner(desktop, program):
    program.prefer(onboarded=True, ignoredApps=["thunar"])
    program.start()
    thunar = FileManager(desktop, "thunar", desktop.write(desktop.home / "from/a.txt", "x").parent)
    desktop.activate(thunar.window)
    desktop.begin_drag(*thunar.icons()[0].centre)
    desktop.glide(700, 600)
    assert_stays_down(program)
    desktop.glide(desktop.size[0] - 2, 1)
    wait_for(program.panel_is_up, 3, "the panel to come up in the corner")
    program.drop()
    program.wait_for_items(1)


@pytest.mark.parametrize("preferences, keys, comes", [
    ({"shakeToSummon": False}, [], False),
    ({"dragModifier": "shift"}, [], False),
    ({"dragModifier": "shift"}, ["Shift_L"], True),
], ids=["off", "modifier missing", "modifier held"])
def test_preferences_of_the_drag_gesture(desktop, program, preferences, keys, comes):
    program.prefer(onboarded=True, **preferences)
    program.start()
    desktop.begin_drag(*file_source(desktop).centre)
    with desktop.held(*keys):
        desktop.glide(700, 600)
        if comes:
            wait_for(program.panel_is_up, 3, "the panel to come up")
        else:
            assert_stays_down(program)
    desktop.release()


@main
def test_the_corner_alone(desktop, program):
    program.prefer(onboarded=True, shakeToSummon=False)
    program.start()
    files = file_source(desktop)
    desktop.begin_drag(*files.centre)
    width = desktop.size[0]
    desktop.glide(width - 7, 7)
    assert_stays_down(program)
    desktop.move(width - 2, 1)
    wait_for(program.panel_is_up, 3, "the panel to come up")
    program.drop()
    program.wait_for_items(1)
    program.restart()
    desktop.move(10, 700)
    desktop.glide(width - 1, 0)  # No drag.
    assert_stays_down(program)


def test_where_it_comes_up(desktop, program):
    program.prefer(summonPosition="cursor")
    program.start()
    for x, y in ((300, 200), (310, 220)):  # Shown for the first time and again.
        desktop.move(x, y)
        program.summon()
        assert program.panel_rect() == (x + 14, y + 14, 240, 300)
        desktop.keys("Escape")
        program.wait_until_hidden()
    program.kill()
    program.prefer(summonPosition="topRight")
    program.start().summon()
    assert program.panel_rect() == (desktop.size[0] - 24 - 240, 24, 240, 300)
    desktop.begin_drag(*file_source(desktop).centre)  # A drag while it is up leaves it up.
    desktop.glide(700, 600)
    desktop.release()
    time.sleep(1.2)
    assert program.panel_is_up()


def test_it_is_moved_and_resized_and_stays_so(desktop, program):
    program.prefer(onboarded=True, summonPosition="last")
    program.start().summon()
    before = program.panel_rect()
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
    desktop.click(*program.header(CLOSE))
    program.wait_until_hidden()


def test_it_stands_on_every_desktop_and_above(desktop, shelf):
    thunar = FileManager(desktop, "thunar", desktop.write(desktop.home / "from/a.txt", "x").parent)
    shelf.summon()
    panel = shelf.panel()
    state = [desktop.display.get_atom_name(atom) for atom in desktop.property(panel, "_NET_WM_STATE")]
    assert {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"} <= set(state)
    assert desktop.cardinal(panel, "_NET_WM_DESKTOP") == 0xFFFFFFFF
    rect = shelf.panel_rect()
    desktop.place(thunar.window, rect.x - 100, rect.y, 300, 300)
    desktop.activate(thunar.window)
    order = list(desktop.property(desktop.root, "_NET_CLIENT_LIST_STACKING"))
    assert order.index(panel.id) > order.index(thunar.window.id)


@main
def test_chromium_finds_the_panel_and_its_tab_whenever_they_show(desktop, program):
    """It remembers the windows on the screen while the pointer is busy, and for seconds after that."""
    program.prefer(dockToEdge=True)
    program.start()
    browser = Chromium(desktop)
    link, picture = browser.find(LINK_COLOUR), browser.find(IMAGE_COLOUR)

    def hide():
        program.summon()
        desktop.keys("Control_L", "a")
        desktop.keys("BackSpace")
        program.wait_for_items(0)
        desktop.keys("Escape")
        program.wait_until_hidden()
    for shown in ("before", "again", "in mid-drag"):
        if shown == "in mid-drag":
            desktop.begin_drag(*link)
        program.desktop.run(program.binary)
        wait_for(program.panel_is_up, 3, "the panel")
        if shown != "in mid-drag":
            desktop.begin_drag(*link)
        program.drop()
        program.wait_for_items(1, 3)
        if shown != "in mid-drag":
            hide()
    desktop.move(640, 780)
    tab = wait_for(lambda: next(iter(desktop.windows("Vantle Tab")), None), 8, "the tab")
    desktop.begin_drag(*picture)
    desktop.glide(*desktop.rect(tab).centre)
    wait_for(program.panel_is_up, 3, "the panel")
    program.drop()
    program.wait_for_items(2, 3)


def test_hidden_it_takes_part_in_nothing(desktop, shelf):
    """Its window is mapped all the time."""
    hidden = wait_for(lambda: next((w for w in desktop.windows("Vantle", shelf.process.pid, hidden=True)
                                    if desktop.title(w) == "Vantle"), None), 3, "the hidden window")
    assert "WM_TAKE_FOCUS" not in map(desktop.display.get_atom_name, desktop.property(hidden, "WM_PROTOCOLS"))
    assert desktop.cardinal(hidden, "_NET_WM_WINDOW_OPACITY") == 0
    assert hidden.get_wm_hints().input == 0
    first = file_source(desktop)
    second = file_source(desktop, place=(500, 420, 300, 300))
    for former in (second, first):
        desktop.activate(former.window)
        time.sleep(0.5)  # mutter and the window have not settled it between them yet.
        shelf.summon()
        desktop.keys("Escape")
        shelf.wait_until_hidden()
        wait_for(lambda: desktop.active_window() == former.window.id, 2, "the keyboard where it was")
    shelf.summon()
    desktop.end(first.process)
    desktop.keys("Escape")
    shelf.wait_until_hidden()
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
def test_it_survives_another_window_manager(desktop, shelf):
    shelf.summon()
    before = shelf.panel_rect()
    for name in ("xfwm4", "mutter", "openbox"):
        desktop.end(desktop.manager)
        desktop.window_manager = name
        desktop.start_window_manager()
        panel = wait_for(shelf.panel, 5, "the panel")
        wait_for(lambda: desktop.cardinal(panel, "_NET_WM_DESKTOP") == 0xFFFFFFFF, 3, "it on every desktop")
        states = set(map(desktop.display.get_atom_name, desktop.property(panel, "_NET_WM_STATE")))
        assert {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"} <= states, (name, states)
        assert shelf.panel_rect() == before
        shelf.summon()
