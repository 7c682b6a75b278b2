"""The program under test: starting, killing, what it saved, where its panel and its rows are."""
import json
import os
import signal
import time
from pathlib import Path
from urllib.parse import quote_from_bytes, unquote_to_bytes

from desktop import Rect, wait_for

BUS_NAME = "app.vantleapp.Vantle"
SHELF = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F"
SETTINGS = "Vantle Settings"
TOUR = "Welcome to Vantle"
TREE = Path(__file__).resolve().parents[2]
HEADER, PADDING, ROW, SPACING = 44, 8, 44, 5  # Of the panel's list, in points.
REMOVE_BUTTON = 47  # From the panel's right edge to the middle of a row's remove button,
CLOSE, CLEAR, HANDLE = 21, 45, 83  # of the buttons and of the drag handle in the header.


def file_url(path):
    """A file's address with everything but plain letters escaped, from its bytes."""
    return "file://" + quote_from_bytes(os.fsencode(path))


def state_of(*paths):
    items = [{"id": f"00000000-0000-4000-8000-{i:012X}", "url": file_url(p), "addedAt": 785000000.25}
             for i, p in enumerate(paths)]
    return json.dumps({"current": SHELF, "shelves": [{"id": SHELF, "pinned": False, "items": items}], "closed": []})


class Program:
    def __init__(self, desktop):
        self.desktop = desktop
        self.binary = Path(os.environ.get("VANTLE", TREE / "build/dev/bin/vantle")).absolute()
        self.process = None
        self.data = desktop.data_home / "Vantle"
        self.state_file = self.data / "shelves.json"

    # Process

    def is_named(self):
        return self.desktop.is_named(BUS_NAME)

    def call(self, method, form=None, *arguments):
        return self.desktop.call(BUS_NAME, "/app/vantleapp/Vantle", method, form, *arguments)

    def act(self, name):
        self.call("org.freedesktop.Application.ActivateAction", "(sava{sv})", name, [], {})

    @property
    def preferences(self):
        return self.desktop.config_home / "Vantle/preferences.json"

    def prefer(self, **values):
        """The panel stays where it is and the tour is over, unless a test wants it otherwise."""
        self.desktop.write(self.preferences, json.dumps({"dockToEdge": False, "onboarded": True} | values))

    def open_settings(self):
        """They have the keyboard, whoever had it."""
        self.act("settings")
        window = self.desktop.window(SETTINGS, self.process.pid)
        wait_for(lambda: self.desktop.active_window() == window.id, 5, "the settings to get the keyboard")
        return window

    def wait_for_stored(self, key, value):
        wait_for(lambda: self.stored(key) == value, 5, f"{key} to be {value}")

    def stored(self, key):
        return json.loads(self.preferences.read_text()).get(key)

    def start(self, *arguments, **environment):
        if not self.preferences.exists():
            self.prefer()
        self.process = self.desktop.start("vantle", self.binary, *arguments, environment=environment)
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
        self.wait_for_keyboard()

    def activate(self):
        """The panel comes up and gets the keyboard, by the bus alone."""
        self.call("org.freedesktop.Application.Activate", "(a{sv})", {})
        self.wait_for_keyboard()

    def wait_for_keyboard(self):
        wait_for(self.panel_is_up, 5, "the panel to come up")
        wait_for(lambda: self.desktop.active_window() == self.panel().id, 5, "the panel to get the keyboard")

    def add(self, *what):
        """Puts files and addresses on the shelf, by a second start with arguments."""
        count = len(self.items()) + len(what)
        self.desktop.run(self.binary, *what)
        return self.wait_for_items(count)

    # What it saved

    def keep(self, *paths):
        """Has a state file with these files for the next start."""
        self.desktop.write(self.state_file, state_of(*paths))

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

    def names(self):
        return [os.path.basename(path) for path in self.paths()]

    def shelf_number(self):
        """Which of how many shows."""
        state = self.state()
        return [s["id"] for s in state["shelves"]].index(state["current"]) + 1, len(state["shelves"])

    def wait_for_shelf(self, *number):
        wait_for(lambda: self.shelf_number() == number, 3, "shelf {} of {}".format(*number))

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

    def hide(self):
        """By its key; it has to have the keyboard."""
        self.desktop.keys("Escape")
        self.wait_until_hidden()

    def assert_stays_down(self, seconds=0.8):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            assert not self.panel_is_up(), "the panel came up"
            time.sleep(0.02)

    # Drags

    def take(self, x, y, items):
        """Drags what lies at a place onto the panel, which has to come up for it or to be up."""
        self.desktop.begin_drag(x, y)
        self.drop()
        return self.wait_for_items(items)

    def drop(self):
        """Ends a drag on the panel, once that is up."""
        wait_for(self.panel_is_up, 3, "the panel to come up for the drag")
        self.desktop.drop(*self.panel_rect().at(0.5, 0.6))

    def give(self, row, x, y):
        """Drags a row to a place."""
        self.desktop.begin_drag(*self.row(row), dx=-24, dy=12)
        self.desktop.drop(x, y)
