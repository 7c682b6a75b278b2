"""An untouched panel leaves a tab at the screen's edge, and the ways back."""
import time

import pytest
from Xlib import X, Xatom
from Xlib.ext import xtest
from Xlib.protocol import event

from desktop import Rect, wait_for
from peers import source, uri_list

main = pytest.mark.main
any_wm = pytest.mark.any_wm
TAB = (22, 60)
FAR = (300, 700)  # From the panel and from every edge.


def tab(program):
    found = program.desktop.windows("Vantle Tab", program.process.pid)
    return Rect(program.desktop.rect(found[0])) if found else None


def wait_for_tab(program, timeout=6):
    wait_for(lambda: tab(program) and not program.panel_is_up(), timeout, "the panel to dock")
    return tab(program)


def wait_for_panel(program, timeout=3):
    wait_for(lambda: program.panel_is_up() and not tab(program), timeout, "the panel to come back")
    return program.panel_rect()


def text_source(desktop, **options):
    return source(desktop, {"text/plain;charset=utf-8": b"a note", "UTF8_STRING": b"a note"}, **options)


def with_one_item(program, **preferences):
    """Started, with a text on the shelf, and the panel up."""
    desktop = program.desktop
    program.prefer(onboarded=True, dockToEdge=True, shakeToSummon=False, cornerToSummon=False, **preferences)
    program.start()
    program.summon()
    text = text_source(desktop)
    desktop.activate(text.window)
    desktop.begin_drag(*text.centre)
    text.event("begin")
    program.drop()
    program.wait_for_items(1)
    return text


def two_monitors(desktop):
    """The right one hangs lower; both are half as wide as the root window."""
    desktop.run("xrandr", "--setmonitor", "left", "640/200x700/200+0+0", "screen")
    add_right_monitor(desktop)


def add_right_monitor(desktop):
    desktop.run("xrandr", "--setmonitor", "right", "640/200x700/200+640+100", "none")


@main
@any_wm
def test_an_idle_panel_docks_and_its_tab_brings_it_back(desktop, program):
    text = with_one_item(program)
    file = source(desktop, {"text/uri-list": uri_list(desktop.write(desktop.home / "file.txt", "x"))},
                  place=(0, 420, 300, 300))
    place = program.panel_rect()
    time.sleep(2)
    assert tab(program) is None, "it docked under the pointer"
    desktop.move(*FAR)
    left = time.monotonic()
    rect = wait_for_tab(program)
    assert 0.9 <= time.monotonic() - left <= 2.5  # It looks at the pointer four times a second.
    assert rect == (desktop.size[0] - TAB[0], place.centre[1] - TAB[1] // 2, *TAB)

    desktop.glide(*rect.at(-0.5, 0.5))
    desktop.move(*rect.centre)
    back = wait_for_panel(program)
    assert back == (desktop.size[0] - place.width - 10, place.y, place.width, place.height)

    desktop.move(*FAR)
    wait_for_tab(program)
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
        desktop.move(*FAR)
        wait_for_tab(program)
        desktop.begin_drag(*dragged.centre)
        desktop.glide(*rect.centre)
        wait_for_panel(program)
        program.drop()
        program.wait_for_items(count)


@any_wm
def test_a_drag_may_stay_on_the_tab_but_a_drop_there_is_refused(desktop, program):
    """Told by the protocol's messages: a real source's drop comes too late, when the tab has gone."""
    with_one_item(program)
    desktop.move(*FAR)
    wait_for_tab(program)
    target = desktop.windows("Vantle Tab", program.process.pid)[0]
    peer = desktop.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
    peer.set_selection_owner(desktop.atom("XdndSelection"), X.CurrentTime)

    def send(kind, *data):
        message = event.ClientMessage(window=target, client_type=desktop.atom(kind),
                                      data=(32, ([peer.id, *data] + [0] * 5)[:5]))
        target.send_event(message)
        desktop.display.sync()

    def answer(kind):
        while desktop.display.pending_events():
            got = desktop.display.next_event()
            if got.type == X.ClientMessage and got.client_type == desktop.atom(kind):
                return list(got.data[1])
        return None
    send("XdndEnter", 5 << 24, desktop.atom("text/uri-list"))
    send("XdndPosition", 0, 0, X.CurrentTime, desktop.atom("XdndActionCopy"))
    status = wait_for(lambda: answer("XdndStatus"), 3, "an answer to the drag")
    assert status[1] & 1 and status[4] == desktop.atom("XdndActionCopy")
    send("XdndDrop", 0, X.CurrentTime)
    finished = wait_for(lambda: answer("XdndFinished"), 3, "an answer to the drop")
    assert finished[1:3] == [0, 0]
    wait_for_panel(program)
    assert len(program.items()) == 1


@main
@any_wm
def test_it_docks_on_the_second_of_two_screens_and_leaves_it_with_the_screen(desktop, program):
    two_monitors(desktop)
    with_one_item(program, summonPosition="cursor")
    desktop.move(700, 300)  # The left half of the right screen: its tab stands on the border of the two.
    program.summon()
    assert program.panel_rect()[:2] == (714, 314)
    desktop.move(300, 650)
    rect = wait_for_tab(program, 8)
    assert rect == (640, 314 + 150 - 30, *TAB)
    desktop.move(*rect.centre)
    desktop.move(rect.x + 12, rect.y + 40)
    assert wait_for_panel(program)[:2] == (650, 314)

    desktop.move(300, 650)
    wait_for_tab(program)
    desktop.run("xrandr", "--delmonitor", "right")
    wait_for(lambda: tab(program) and tab(program)[:2] == (0, 434), 5, "the tab to follow")
    desktop.move(5, 440)
    desktop.move(6, 441)
    assert wait_for_panel(program)[:2] == (10, 314)
    desktop.move(300, 650)
    wait_for_tab(program)
    add_right_monitor(desktop)
    time.sleep(1)
    assert tab(program)[:2] == (0, 434)


@any_wm
def test_the_tab_follows_what_the_desktops_panels_take(desktop, program):
    two_monitors(desktop)
    with_one_item(program, summonPosition="cursor")
    desktop.move(900, 300)
    program.summon()
    desktop.move(300, 650)
    assert wait_for_tab(program, 8)[0] == 1280 - TAB[0]
    bar = desktop.root.create_window(1240, 100, 40, 700, 0, X.CopyFromParent)
    bar.change_property(desktop.atom("_NET_WM_WINDOW_TYPE"), Xatom.ATOM, 32,
                        [desktop.atom("_NET_WM_WINDOW_TYPE_DOCK")])

    def take(pixels):
        bar.change_property(desktop.atom("_NET_WM_STRUT_PARTIAL"), Xatom.CARDINAL, 32,
                            [0, pixels, 0, 0, 0, 0, 100, 799, 0, 0, 0, 0])
        desktop.display.sync()
    take(40)
    bar.map()
    desktop.display.sync()
    for pixels in (40, 60):
        take(pixels)
        wait_for(lambda: tab(program)[0] == 1280 - pixels - TAB[0], 5, "the tab to stand beside the bar")
    bar.destroy()
    desktop.display.sync()
    wait_for(lambda: tab(program)[0] == 1280 - TAB[0], 5, "the tab to go back to the edge")
    for areas, edge in (([0, 0, 640, 700, 640, 100, 610, 700], 1250), ([], 1280)):  # As shells with bars of their own do.
        desktop.root.change_property(desktop.atom("_GTK_WORKAREAS_D0"), Xatom.CARDINAL, 32, areas)
        desktop.display.sync()
        wait_for(lambda: tab(program)[0] == edge - TAB[0], 5, "the tab to stay in the work area")


def test_the_tab_stands_above_a_full_screen_window_and_takes_no_focus(desktop, program):
    with_one_item(program)
    film = text_source(desktop, place=(100, 420, 300, 300))
    desktop.activate(film.window)
    desktop.message(film.window, "_NET_WM_STATE", 1, desktop.atom("_NET_WM_STATE_FULLSCREEN"))
    wait_for(lambda: desktop.rect(film.window)[2:] == desktop.size, what="a full-screen window")
    desktop.move(*FAR)
    rect = wait_for_tab(program)

    def on_top():
        at = desktop.root.translate_coords(desktop.root, *rect.centre).child
        return at and desktop.title(at) == "Vantle Tab"
    assert on_top()
    desktop.click(640, 400)
    desktop.activate(film.window)
    time.sleep(0.3)
    assert on_top(), "the full-screen window came above the tab"
    assert desktop.active_window() == film.window.id
    desktop.move(*rect.centre)
    desktop.move(rect.x + 5, rect.y + 5)
    wait_for_panel(program)
    assert desktop.active_window() == film.window.id
    lock = desktop.root.create_window(0, 0, *desktop.size, 0, X.CopyFromParent, override_redirect=True)
    lock.map()
    desktop.move(*FAR)
    wait_for_tab(program)
    assert not on_top(), "the tab stands above a screen lock"


@any_wm
def test_summons_in_the_middle_of_fading_out_and_of_docking(desktop, program):
    desktop.start("picom", "picom", "--backend", "xrender")
    wait_for(lambda: desktop.display.get_selection_owner(desktop.atom("_NET_WM_CM_S0")), what="the compositor")
    with_one_item(program)

    def stays_up():
        end = time.monotonic() + 1.5
        while time.monotonic() < end:
            assert program.panel_is_up(), "the panel went"
            time.sleep(0.01)
        opacity = desktop.cardinal(program.panel(), "_NET_WM_WINDOW_OPACITY")
        assert opacity in (None, 0xFFFFFFFF)

    program.summon()
    desktop.keys("Escape")
    desktop.run(program.binary)
    stays_up()
    desktop.move(*FAR)
    wait_for(lambda: tab(program), 6, "the tab")
    desktop.run(program.binary)
    stays_up()
    assert tab(program) is None
