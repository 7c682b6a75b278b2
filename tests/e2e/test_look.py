"""The desktop's look: light and dark, contrast, motion and text size, changed while the program runs."""
import struct
import time

import pytest
from gi.repository import GLib
from Xlib import X

from desktop import wait_for

pytestmark = [pytest.mark.main, pytest.mark.any_wm]
APPEARANCE, INTERFACE = "org.freedesktop.appearance", "org.gnome.desktop.interface"


class Portal:
    """It starts with nothing."""
    name, path = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
    interface = """<interface name="org.freedesktop.portal.Settings"><method name="ReadAll"><arg type="as" direction="in"/>
<arg type="a{sa{sv}}" direction="out"/></method></interface>"""

    def __init__(self, desktop):
        self.desktop, self.settings = desktop, {}
        desktop.serve(self.name, self.path, self.interface, self._answer)

    def _answer(self, _method, arguments, _call):
        return "(a{sa{sv}})", {space: of for space, of in self.settings.items() if space in arguments[0]}

    def set(self, space, key, form, value):
        variant = GLib.Variant(form, value)
        self.settings.setdefault(space, {})[key] = variant
        self.desktop.bus.emit_signal(None, self.path, "org.freedesktop.portal.Settings", "SettingChanged",
                                     GLib.Variant("(ssv)", (space, key, variant)))


class Screen:
    def __init__(self, program):
        self.desktop, self.program = program.desktop, program

    def picture(self, x, y, width, height):
        return self.desktop.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def wait_for_background(self, windows, darkest, brightest, what):
        """Near the lower left corner, where no window of ours has anything: its brightness from 0 to 255."""
        def brightness(window):
            rect = self.desktop.rect(window)
            return sum(self.picture(rect.x + 7, rect.y + rect.height - 16, 1, 1)[:3]) / 3
        wait_for(lambda: all(darkest <= brightness(w) <= brightest for w in windows), 5, what)

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


def test_every_window_follows_the_portal_at_run_time(desktop, program):
    portal, screen = Portal(desktop), Screen(program)
    portal.set(APPEARANCE, "color-scheme", "u", 1)
    program.start()
    program.add(*desktop.files("one.txt", "two.txt", "three.txt", "four.txt"))
    windows = [program.open_settings(), program.panel()]
    desktop.move(300, 700)
    screen.wait_for_background(windows, 20, 80, "dark, as the desktop was from the start")
    for key, value, darkest, brightest, what in (
            ("color-scheme", 2, 220, 254, "light"), ("contrast", 1, 255, 255, "white"), ("color-scheme", 1, 0, 0, "black"),
            ("contrast", 0, 20, 80, "dark")):
        portal.set(APPEARANCE, key, "u", value)
        screen.wait_for_background(windows, darkest, brightest, what)

    program.summon()
    desktop.keys("Control_L", "a")
    small = wait_for(screen.rows, 3, "selected rows")
    assert small == [44] * 4
    portal.set(INTERFACE, "text-scaling-factor", "d", 2.0)
    wait_for(lambda: screen.rows() and max(screen.rows()) > 58, 5, "higher rows")
    portal.set(INTERFACE, "text-scaling-factor", "d", 1.0)
    wait_for(lambda: screen.rows() == small, 5, "rows as they were")

    for animations, fewest, most in ((True, 4, 100), (False, 1, 3)):
        portal.set(INTERFACE, "enable-animations", "b", animations)
        count = len(program.items())
        desktop.click(*program.row(0))
        desktop.move(300, 700)
        time.sleep(0.5)
        desktop.keys("BackSpace")
        frames = screen.frames()
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


def test_without_a_portal_the_settings_manager_tells_the_look_and_the_dots_per_inch(desktop, program):
    manager = SettingsManager(desktop)
    manager.publish(Xft_DPI=96 * 1024)
    program.start()
    program.add(*desktop.files("one.txt"))
    windows = [wait_for(program.panel, 5, "the panel"), program.open_settings()]
    sizes = [desktop.rect(w)[2:] for w in windows]

    def fits(window, size, scale):
        rect = desktop.rect(window)
        return (all(abs(is_now - scale * was) <= 2 for is_now, was in zip(rect[2:], size))
                and rect.x >= 0 and rect.x + rect.width <= 1280)
    for dots, scale in ((120, 1.25), (144, 1.5), (96, 1), (144, 1.5)):
        manager.publish(Xft_DPI=dots * 1024)
        wait_for(lambda: all(fits(w, s, scale) for w, s in zip(windows, sizes)), 10, f"windows for {dots} dots per inch")
    for theme, darkest, brightest in (("Some-dark", 20, 80), ("HighContrast", 255, 255), ("HighContrastInverse", 0, 0),
                                      ("Plain", 200, 254), ("Some-dark", 20, 80)):
        manager.publish(Xft_DPI=96 * 1024, Net_ThemeName=theme, Gtk_EnableAnimations=0)
        Screen(program).wait_for_background(windows, darkest, brightest, theme)
    manager.window.destroy()
    desktop.display.sync()
    Screen(program).wait_for_background(windows, 200, 254, "the toolkit's own look, without a manager")
