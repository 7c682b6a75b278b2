"""The desktop's look: light and dark, contrast, motion and text size, changed while the program runs."""
import struct
import sys
import time
from pathlib import Path

import pytest
from gi.repository import GLib
from Xlib import X

from desktop import wait_for
from test_settings import open_settings

main = pytest.mark.main
APPEARANCE, INTERFACE = "org.freedesktop.appearance", "org.gnome.desktop.interface"


class Look:
    """The test's portal, and what the screen shows of its words."""

    def __init__(self, desktop, program):
        self.desktop, self.program = desktop, program
        desktop.start("portal", sys.executable, Path(__file__).with_name("portal_settings.py"))
        wait_for(self._has_portal, what="the portal")

    def _call(self, path, interface, method, arguments, name):
        return self.program.bus.call_sync(name, path, interface, method, arguments, None, 0, 5000)

    def _has_portal(self):
        return self._call("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                          GLib.Variant("(s)", ("org.freedesktop.portal.Desktop",)), "org.freedesktop.DBus").unpack()[0]

    def set(self, space, key, value):
        self._call("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "Change",
                   GLib.Variant("(ssv)", (space, key, value)), "org.freedesktop.portal.Desktop")

    def picture(self, x, y, width, height):
        return self.desktop.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def background(self, window):
        """Near the lower left corner, where no window of ours has anything: its brightness from 0 to 255."""
        rect = self.desktop.rect(window)
        return sum(self.picture(rect.x + 7, rect.y + rect.height - 16, 1, 1)[:3]) / 3

    def rows(self):
        """Heights of the selected rows, by their colour at their leading edge."""
        rect = self.program.panel_rect()
        column = self.picture(rect.x + 14, rect.y + 1, 1, rect.height - 2)
        pixels = [column[i:i + 3] for i in range(0, len(column), 4)]
        heights, ground = [0], pixels[20]
        for pixel in pixels:
            if pixel != ground:
                heights[-1] += 1
            elif heights[-1]:
                heights.append(0)
        return [h for h in heights if h > 20]

    def frames(self, seconds=0.5):
        """How many different pictures the list shows within a time."""
        rect, seen, end = self.program.panel_rect(), set(), time.monotonic() + seconds
        while time.monotonic() < end:
            seen.add(self.picture(rect.x + 10, rect.y + 60, 200, 150))
        return len(seen)


@main
@pytest.mark.any_wm
def test_every_window_follows_the_desktop_at_run_time(desktop, program):
    look = Look(desktop, program)
    look.set(APPEARANCE, "color-scheme", GLib.Variant("u", 1))
    program.start()
    names = [desktop.write(desktop.home / f"{n}.txt", n) for n in ("one", "two", "three", "four")]
    desktop.run(program.binary, *names)
    program.wait_for_items(4)
    windows = [open_settings(desktop, program), program.panel()]
    desktop.move(300, 700)

    def shows(darkest, brightest, what):
        wait_for(lambda: all(darkest <= look.background(w) <= brightest for w in windows), 5, what)
    shows(20, 80, "dark, as the desktop was from the start")
    look.set(APPEARANCE, "color-scheme", GLib.Variant("u", 2))
    shows(220, 254, "light")
    look.set(APPEARANCE, "contrast", GLib.Variant("u", 1))
    shows(255, 255, "white")
    look.set(APPEARANCE, "color-scheme", GLib.Variant("u", 1))
    shows(0, 0, "black")
    look.set(APPEARANCE, "contrast", GLib.Variant("u", 0))
    shows(20, 80, "dark")

    program.summon()
    desktop.keys("Control_L", "a")
    small = wait_for(look.rows, 3, "selected rows")
    assert small == [44] * 4
    look.set(INTERFACE, "text-scaling-factor", GLib.Variant("d", 2.0))
    wait_for(lambda: look.rows() and max(look.rows()) > 58, 5, "higher rows")
    look.set(INTERFACE, "text-scaling-factor", GLib.Variant("d", 1.0))
    wait_for(lambda: look.rows() == small, 5, "rows as they were")

    for animations, fewest, most in ((True, 5, 100), (False, 1, 3)):
        look.set(INTERFACE, "enable-animations", GLib.Variant("b", animations))
        count = len(program.items())
        desktop.click(*program.row(0))
        desktop.move(300, 700)
        time.sleep(0.5)
        desktop.keys("BackSpace")
        frames = look.frames()
        assert fewest <= frames <= most, (animations, frames)
        program.wait_for_items(count - 1)


class SettingsManager:
    """An XSETTINGS manager: https://specifications.freedesktop.org/xsettings-spec."""

    def __init__(self, desktop):
        self.display = desktop.display
        self.window = desktop.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self.serial = 0

    def publish(self, **settings):
        def padded(data):
            return data + b"\0" * (-len(data) % 4)
        body = b""
        for name, value in settings.items():
            name = name.replace("_", "/").encode()
            body += struct.pack("<BxH", isinstance(value, str), len(name)) + padded(name) + struct.pack("<I", self.serial)
            body += struct.pack("<I", len(value)) + padded(value.encode()) if isinstance(value, str) else struct.pack("<i", value)
        self.serial += 1
        atom = self.display.intern_atom("_XSETTINGS_SETTINGS")
        self.window.change_property(atom, atom, 8, struct.pack("<BxxxII", 0, self.serial, len(settings)) + body)
        self.window.set_selection_owner(self.display.intern_atom("_XSETTINGS_S0"), X.CurrentTime)
        self.display.sync()


@pytest.mark.any_wm
def test_without_a_portal_the_settings_manager_tells_the_look(desktop, program):
    look = Look.__new__(Look)
    look.desktop, look.program = desktop, program
    program.start()
    program.summon()
    assert look.background(program.panel()) > 200
    manager = SettingsManager(desktop)
    for theme, darkest, brightest in (("Some-dark", 20, 80), ("HighContrast", 255, 255), ("HighContrastInverse", 0, 0),
                                      ("Plain", 200, 254)):
        manager.publish(Net_ThemeName=theme, Gtk_EnableAnimations=0)
        wait_for(lambda: darkest <= look.background(program.panel()) <= brightest, 5, f"the look of {theme}")
    manager.publish(Net_ThemeName="Some-dark")
    wait_for(lambda: look.background(program.panel()) < 80, 5, "dark")
    manager.window.destroy()
    desktop.display.sync()
    wait_for(lambda: look.background(program.panel()) > 200, 5, "the toolkit's own look, without a manager")


@main
def test_windows_grow_and_shrink_with_the_dots_per_inch(desktop, program):
    manager = SettingsManager(desktop)
    manager.publish(Xft_DPI=96 * 1024)
    program.start()
    desktop.run(program.binary, desktop.write(desktop.home / "one.txt", "one"))
    program.wait_for_items(1)
    windows = [wait_for(program.panel, 5, "the panel"), open_settings(desktop, program)]
    sizes = [desktop.rect(w)[2:] for w in windows]

    def have(scale):
        def fits(window, size):
            rect = desktop.rect(window)
            return (all(abs(is_now - scale * was) <= 2 for is_now, was in zip(rect[2:], size))
                    and rect.x >= 0 and rect.x + rect.width <= 1280)
        return all(fits(w, s) for w, s in zip(windows, sizes))
    for dots, scale in ((120, 1.25), (144, 1.5), (96, 1), (144, 1.5)):
        manager.publish(Xft_DPI=dots * 1024)
        wait_for(lambda: have(scale), 10, f"windows for {dots} dots per inch")
