"""The program under test: starting, killing, what it saved, where its panel and its rows are."""
import json
import os
import signal
import time
from pathlib import Path
from urllib.parse import unquote_to_bytes

from gi.repository import Gio, GLib

from desktop import Rect, wait_for

BUS_NAME = "app.vantleapp.Vantle"
TOUR = "Welcome to Vantle"
TREE = Path(__file__).resolve().parents[2]
HEADER, PADDING, ROW, SPACING = 44, 8, 44, 5  # Of the panel's list, in points.
REMOVE_BUTTON = 47  # From the panel's right edge to the middle of a row's remove button,
CLOSE, CLEAR, HANDLE = 21, 45, 83  # of the buttons and of the drag handle in the header.


class Program:
    def __init__(self, desktop):
        self.desktop = desktop
        self.binary = Path(os.environ.get("VANTLE", TREE / "build/dev/bin/vantle")).absolute()
        self.process = None
        self.data = desktop.data_home / "Vantle"
        self.state_file = self.data / "shelves.json"
        self._bus = None

    # Process

    @property
    def bus(self):
        if self._bus is None:
            flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
            self._bus = Gio.DBusConnection.new_for_address_sync(
                self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)
            self._bus.set_exit_on_close(False)
        return self._bus

    def is_named(self, name=BUS_NAME):
        reply = self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                   "NameHasOwner", GLib.Variant("(s)", (name,)), None, 0, 5000)
        return reply.unpack()[0]

    @property
    def preferences(self):
        return self.desktop.config_home / "Vantle/preferences.json"

    def prefer(self, **values):
        """The panel stays where it is and the tour is over, unless a test wants it otherwise."""
        self.desktop.write(self.preferences, json.dumps({"dockToEdge": False, "onboarded": True} | values))

    def start(self, **environment):
        if not self.preferences.exists():
            self.prefer()
        self.process = self.desktop.start("vantle", self.binary, environment=environment)
        wait_for(lambda: self.process.poll() is not None or self.is_named(), what="the program's bus name")
        self.assert_alive()
        self.wait_until_idle()
        return self

    def wait_until_idle(self):
        """Its start-up ends when it has slept, using no processor time, for a while, or shows the
        tour, which moves."""
        def sleeps():
            before = self.processor_time()
            time.sleep(0.1)
            return before == self.processor_time()
        wait_for(lambda: self.desktop.windows(TOUR) or sleeps(), 10, "the program to become idle")

    def processor_time(self):
        """Seconds of processor time of the main thread."""
        pid = self.process.pid
        fields = Path(f"/proc/{pid}/task/{pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def memory(self):
        """Its largest resident size so far, in megabytes."""
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        return int(status.partition("VmHWM:")[2].split()[0]) / 1024

    def assert_alive(self):
        assert self.process.poll() is None, f"the program ended with {self.process.returncode}"

    def kill(self):
        """As a power cut would: no chance to save anything."""
        self.assert_alive()
        self.desktop.end(self.process, signal.SIGKILL)

    def restart(self):
        self.kill()
        return self.start()

    def summon(self):
        """By a second start, which has to end by itself; the panel then has the keyboard."""
        self.desktop.run(self.binary)
        wait_for(self.panel_is_up, 5, "the panel to come up")
        wait_for(lambda: self.desktop.active_window() == self.panel().id, 5, "the panel to get the keyboard")

    # What it saved

    def state(self):
        return json.loads(self.state_file.read_text())

    def items(self):
        """The entries of the shelf on show."""
        if not self.state_file.exists():
            return []
        state = self.state()
        return next(s["items"] for s in state["shelves"] if s["id"] == state["current"])

    def paths(self):
        """Their files, as bytes, in order."""
        urls = [item["url"] for item in self.items()]
        assert all(url.startswith("file:///") for url in urls), urls
        return [unquote_to_bytes(url.removeprefix("file://")).rstrip(b"/") for url in urls]

    def wait_for_items(self, count, timeout=10):
        wait_for(lambda: len(self.items()) == count, timeout, f"{count} entries to be saved")
        return self.items()

    # Panel

    def panel(self):
        pid = self.process.pid
        return next((w for w in self.desktop.windows("Vantle", pid) if self.desktop.title(w) == "Vantle"), None)

    def panel_is_up(self):
        return self.panel() is not None

    def panel_rect(self):
        panel = wait_for(self.panel, 5, "the panel")
        return Rect(self.desktop.rect(panel))

    def row(self, index):
        rect = self.panel_rect()
        return rect.centre[0] - 40, rect.y + HEADER + PADDING + index * (ROW + SPACING) + ROW // 2

    def remove_button(self, index):
        rect = self.panel_rect()
        return rect.x + rect.width - REMOVE_BUTTON, self.row(index)[1]

    def header(self, from_right):
        rect = self.panel_rect()
        return rect.x + rect.width - from_right, rect.y + HEADER // 2 - 2

    def wait_until_hidden(self, timeout=3):
        wait_for(lambda: not self.panel_is_up(), timeout, "the panel to go")

    # Drags

    def take(self, x, y, items):
        """Drags what lies at a place onto the panel, which has to come up for it."""
        self.desktop.begin_drag(x, y)
        wait_for(self.panel_is_up, 3, "the panel to come up for the drag")
        self.drop()
        return self.wait_for_items(items)

    def drop(self):
        """Ends a drag on the panel."""
        self.desktop.drop(*self.panel_rect().at(0.5, 0.6))

    def give(self, row, x, y):
        """Drags a row to a place."""
        self.desktop.begin_drag(*self.row(row), dx=-24, dy=12)
        self.desktop.drop(x, y)
