"""The menu of shelves and the question for a shelf's name, by pointer and by keyboard alone."""
import pytest

from desktop import wait_for

pytestmark = pytest.mark.main
TAIL = "Up", "Up", "Up"  # Past settings, tour and quit, with which the menu ends where there is no tray.


def names(program, key="shelves"):
    return [shelf.get("name") for shelf in program.state()[key]]


def current(program):
    state = program.state()
    return next(s for s in state["shelves"] if s["id"] == state["current"])


def type_name(program, name):
    """Into the question in the panel, which must have got the keyboard."""
    program.wait_for_keyboard()
    assert not program.desktop.windows("Rename", program.process.pid), "a window of its own"
    program.desktop.type(*name)


def menus(program):
    """The open menus, the last that opened last."""
    desktop = program.desktop
    return [w for w in desktop.windows(pid=program.process.pid) if w.get_attributes().override_redirect
            and "_NET_WM_WINDOW_TYPE_TOOLTIP" not in desktop.atoms(w, "_NET_WM_WINDOW_TYPE")]


def wait_for_menus(program, count):
    return wait_for(lambda: len(menus(program)) == count, 3, f"{count} menus")


def test_by_pointer_and_by_keyboard(desktop, shelf):
    shelf.add(*desktop.files("one.txt"))
    # Somebody types in another program; only the presses in the panel are for us.
    desktop.start("mousepad", "mousepad")
    rival = desktop.window("Mousepad")
    desktop.place(rival, 100, 100, 600, 400)
    desktop.activate(rival)
    desktop.keys("a")
    rect = shelf.panel_rect()
    for count in (1, 0, 1):  # The second closes it, and does not open it again.
        desktop.click(rect.x + 24, rect.y + 20)
        wait_for_menus(shelf, count)
    rect = desktop.rect(menus(shelf)[-1])
    desktop.click(rect.x + 30, rect.y + rect.height * 2.5 / 8.5)  # Of eight entries and two lines.
    type_name(shelf, "play")
    desktop.keys("Return")
    wait_for(lambda: names(shelf) == ["play"], what="the new name")
    shelf.restart().summon()

    def choose(*keys, opener="space"):
        """Opens the menu from the title and walks it."""
        desktop.keys(opener)
        wait_for_menus(shelf, 1)
        desktop.type(*keys)
        wait_for_menus(shelf, 0)
    desktop.keys("Tab")  # To the title, where the keyboard stays.
    choose("Down", "Down", "Down", "Return")  # Rename, behind the one shelf and "new".
    type_name(shelf, "work")
    desktop.keys("Return")
    wait_for(lambda: names(shelf) == ["work"], what="the new name")
    shelf.wait_for_keyboard()

    choose(*TAIL, "Up", "Return", opener="Return")  # Closing the only shelf is off: the entry before it.
    wait_for(lambda: current(shelf)["pinned"], what="the pin")
    desktop.keys("Control_L", "t")
    wait_for(lambda: len(names(shelf)) == 2, what="a new shelf")
    choose("Down", "Return")
    wait_for(lambda: current(shelf)["name"] == "work", what="the first shelf")
    choose(*TAIL, "Up", "Return")
    wait_for(lambda: names(shelf, "closed") == ["work"], what="the shelf to be closed")
    choose(*TAIL, "Up", "Right", "Return")
    wait_for(lambda: names(shelf)[-1] == "work" and current(shelf)["name"] == "work", what="it to be open again")
    assert current(shelf)["pinned"] and len(shelf.items()) == 1

    choose(*TAIL, "Up", "Up", "Up", "Return")
    type_name(shelf, "x")
    desktop.keys("Escape")
    choose(*TAIL, "Up", "Up", "Up", "Return")
    type_name(shelf, "x")
    shelf.act("toggle")  # The question goes with the panel, and the keyboard to who had it.
    shelf.wait_until_hidden()
    desktop.keys("Return")
    desktop.wait_for_focus(desktop.title(rival))
    shelf.summon()
    choose("Escape")
    assert "x" not in names(shelf)
    assert shelf.panel_is_up()
    choose(*TAIL, "Return")
    desktop.window("Vantle Settings")
