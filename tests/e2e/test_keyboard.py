"""Every key of the panel, which has got the keyboard by D-Bus alone."""
import pytest
from gi.repository import GLib
from Xlib import XK

from desktop import wait_for
from peers import uri

main = pytest.mark.main

RECORDER = """[Desktop Entry]
Type=Application
Name=Recorder
Exec=/bin/sh {script} %U
StartupNotify=true
MimeType=text/plain;x-scheme-handler/https;
"""


def activate(program):
    program.bus.call_sync("app.vantleapp.Vantle", "/app/vantleapp/Vantle", "org.freedesktop.Application", "Activate",
                          GLib.Variant("(a{sv})", ({},)), None, 0, 5000)
    desktop = program.desktop
    wait_for(lambda: program.panel_is_up() and desktop.active_window() == program.panel().id, 5, "the keyboard")


def shelf_number(program):
    state = program.state()
    return [s["id"] for s in state["shelves"]].index(state["current"]) + 1, len(state["shelves"])


def record_openings(desktop):
    """A default application that writes down what it is given, and with which start-up id."""
    opened = desktop.home / "opened"
    script = desktop.write(desktop.home / "record", f'echo "$DESKTOP_STARTUP_ID $*" >> {opened}\n')
    desktop.write(desktop.data_home / "applications/recorder.desktop", RECORDER.format(script=script))
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\ntext/plain=recorder.desktop\n"
                  "x-scheme-handler/https=recorder.desktop\n")
    return lambda: [line.split(" ") for line in opened.read_text().splitlines()] if opened.exists() else []


@main
def test_the_whole_table(desktop, program):
    opened = record_openings(desktop)
    program.start()
    files = [desktop.write(desktop.home / f"{name}.txt", name) for name in ("one", "two", "three")]
    desktop.run(program.binary, *files)
    program.wait_for_items(3)
    activate(program)

    def press(*names):
        desktop.keys(*names)
        program.wait_until_idle()

    def copied():
        press("Control_L", "c")
        return desktop.run("xclip", "-o", "-selection", "clipboard").decode().splitlines()

    def count(expected):
        wait_for(lambda: len(program.items()) == expected, 3, f"{expected} entries")

    names = [str(f) for f in files]
    press("Down")
    assert copied() == names[:1]
    press("Shift_L", "Down")
    assert copied() == names[:2]
    press("Up")
    assert copied() == names[:1]
    for keys, total in ((["Return"], 1), (["KP_Enter"], 2), (["Control_L", "o"], 3)):
        press(*keys)
        wait_for(lambda: len(opened()) == total, 5, "the default application")
        activate(program)
    assert all(line[1] == uri(files[0]).decode() or line[1] == str(files[0]) for line in opened()), opened()
    assert all("_TIME" in line[0] and line[0].split("_TIME")[1] != "0" for line in opened()), opened()

    press("Control_L", "t")
    wait_for(lambda: shelf_number(program) == (2, 2), what="the new shelf")
    press("Control_L", "v")
    count(1)
    press("Control_L", "3")
    press("Control_L", "0")
    assert shelf_number(program) == (2, 2)
    press("Control_L", "1")
    wait_for(lambda: shelf_number(program) == (1, 2), what="the first shelf")
    press("Control_L", "a")
    assert copied() == names
    press("BackSpace")
    count(0)
    press("Control_L", "Shift_L", "z")
    assert program.items() == []
    press("Control_L", "z")
    count(3)
    press("Down")
    press("Delete")
    count(2)
    press("Down")
    # A focused button has its own keys; an arrow is not among them.
    press("Tab")
    press("Down")
    press("Escape")
    assert program.panel_is_up()
    press("Escape")
    program.wait_until_hidden()


@pytest.mark.any_wm
@pytest.mark.parametrize("layout,letter_a", [("ru", "a"), ("ru,fr", "q"), ("fr", "q")])
def test_other_layouts(desktop, shelf, layout, letter_a):
    """Characters are those of the first Latin layout, digits those of the digit row. Keys are named as on a US one."""
    desktop.run(shelf.binary, desktop.write(desktop.home / "a", "x"))
    shelf.wait_for_items(1)
    desktop.run("setxkbmap", layout)
    activate(shelf)
    desktop.keys("Control_L", "t")
    wait_for(lambda: shelf_number(shelf) == (2, 2), what="the new shelf")
    desktop.keys("Control_L", "1")
    wait_for(lambda: shelf_number(shelf) == (1, 2), what="the first shelf")
    desktop.keys("Control_L", letter_a)
    desktop.keys("Delete")
    shelf.wait_for_items(0)


@pytest.mark.any_wm
def test_a_web_location_opens_its_address(desktop, program):
    opened = record_openings(desktop)
    program.start()
    desktop.run(program.binary, "https://example.org/a?b=c")
    program.wait_for_items(1)
    activate(program)
    desktop.keys("Down")
    desktop.keys("Return")
    wait_for(opened, 5, "the browser")
    assert opened()[0][1] == "https://example.org/a?b=c"


@main
def test_what_is_opened_comes_to_the_front(desktop, program):
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\n"
                  "text/plain=org.xfce.mousepad.desktop\ninode/directory=thunar.desktop\n")
    program.start()
    file = desktop.write(desktop.home / "folder/read me.txt", "x")
    for number, path in enumerate((file, file.parent)):
        desktop.run(program.binary, path)
        program.wait_for_items(number + 1)
        activate(program)
        desktop.keys("Up")
        desktop.keys("Return")
        wait_for(lambda: path.name in desktop.focused_title(), 15, f"the keyboard in the window of {path.name}")


@pytest.mark.any_wm
def test_a_named_key_is_where_the_map_puts_it(desktop, program):
    """Not every X server numbers its keys as the kernel does."""
    back_space, f9, number = XK.string_to_keysym("BackSpace"), XK.string_to_keysym("F9"), 248
    desktop.display.change_keyboard_mapping(number, [[back_space] * 2, [f9] * 2])
    desktop.display.change_keyboard_mapping(desktop.display.keysym_to_keycode(f9), [[0] * 2])
    desktop.display.sync()
    program.prefer(hotKeyCode=101, hotKeyModifiers=4096, hotKeyLabel="F9")
    program.start()
    desktop.run(program.binary, desktop.write(desktop.home / "one.txt", "one"))
    program.wait_for_items(1)
    program.summon()
    desktop.keys("Control_L", "a")
    desktop.tap(number)
    program.wait_for_items(0)
    with desktop.held("Super_L"):
        desktop.tap(number + 1)
    program.wait_until_hidden()
