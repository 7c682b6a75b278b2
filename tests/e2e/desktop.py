"""A virtual X desktop of its own: server, session bus, window manager, fresh home, pointer."""
import contextlib
import functools
import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import uuid
from pathlib import Path

from gi.repository import Gio, GLib
from Xlib import X, XK, display as xdisplay, error
from Xlib.ext import xtest
from Xlib.protocol import event

PATIENCE = float(os.environ.get("VANTLE_PATIENCE", 1))  # For a program that was built to run slowly.

# Every file and folder is drawn in one flat colour of its own, so that icons
# are found on the screen in whatever view a file manager shows them.
FILE_COLOUR = (0xD6, 0x24, 0x9F)
FOLDER_COLOUR = (0x2B, 0xB3, 0xA3)
FILE_ICONS = ("text-x-generic text-plain text-html text-markdown unknown application-octet-stream"
              " application-x-zerosize application-x-generic image-x-generic image-png empty").split()
FOLDER_ICONS = ["folder", "inode-directory"]
SVG = '<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64">{}</svg>'
FILE_ICON = SVG.format('<path fill="{0}" d="M12 4h28l12 12v44h-40z"/><path fill="#ffffff" opacity="0.6" d="M40 4l12 12h-12z"/>'
                       '<path d="M18 46h28M18 53h18" stroke="#ffffff" stroke-width="3"/>')
FOLDER_ICON = SVG.format('<path fill="{0}" d="M4 10h20l6 6h30v40h-56z"/>'
                         '<path d="M4 24h56" stroke="#ffffff" stroke-width="2" opacity="0.6"/>')

# Started by the bus for whoever asks; a test must not depend on whether they are installed.
BLOCKED_SERVICES = ["org.freedesktop.Tracker3.Miner.Files", "org.freedesktop.portal.Desktop",
                    "org.freedesktop.portal.Documents", "org.freedesktop.secrets", "org.a11y.Bus"]

WINDOW_MANAGERS = {
    "openbox": ["openbox", "--sm-disable"],
    "xfwm4": ["xfwm4", "--sm-client-disable", "--vblank=off"],
    "mutter": ["mutter", "--x11", "--sm-disable"],
}


def wait_for(predicate, timeout=10.0, what=None):
    """The first true result of predicate, which is polled; fails after timeout seconds."""
    timeout *= PATIENCE
    end = time.monotonic() + timeout
    while True:
        result = predicate()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"waited {timeout} s in vain for {what or predicate}")
        time.sleep(0.02)


@functools.lru_cache
def main_loop():
    """Where services of the tests answer."""
    threading.Thread(target=GLib.MainLoop().run, daemon=True).start()


class Rect(tuple):
    """x, y, width, height in pixels of the root window."""
    __slots__ = ()
    x, y, width, height = (property(lambda self, i=i: self[i]) for i in range(4))

    @property
    def centre(self):
        return self.at(0.5, 0.5)

    def at(self, across, down):
        return round(self.x + self.width * across), round(self.y + self.height * down)


class Desktop:
    """Ends exactly what it started. Use as a context manager."""

    def __init__(self, window_manager="openbox", size=(1280, 800), icons="Markers"):
        self.window_manager = window_manager
        self.size = size
        self.icons = icons
        self.token = uuid.uuid4().hex  # Marks the environment of all that was started here.
        self.root_dir = Path(tempfile.mkdtemp(prefix="vantle-e2e-"))
        self.home = self.root_dir / "home"
        self.logs = self.root_dir / "logs"
        self.mounts = []
        self.at_end = []
        self.processes = {}
        self.display = None

    def __enter__(self):
        try:
            self._make_home()
            self._start_server()
            self._start_bus()
            if self.window_manager:
                self.start_window_manager()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    # Set-up and end

    @property
    def data_home(self):
        return self.home / ".local/share"

    @property
    def config_home(self):
        return self.home / ".config"

    def _make_home(self):
        runtime = self.root_dir / "run"
        for folder in (self.logs, self.data_home, self.config_home, self.home / "Downloads",
                       self.home / ".cache", self.home / ".local/state", runtime):
            folder.mkdir(parents=True)
        runtime.chmod(0o700)
        theme = self.data_home / "icons/Markers"
        for folder, names, icon, colour in (("mimetypes", FILE_ICONS, FILE_ICON, FILE_COLOUR),
                                            ("places", FOLDER_ICONS, FOLDER_ICON, FOLDER_COLOUR)):
            for name in names:
                self.write(theme / folder / f"{name}.svg", icon.format("#%02x%02x%02x" % colour))
        entry = "[{0}]\nSize=64\nMinSize=8\nMaxSize=512\nType=Scalable\n"
        (theme / "index.theme").write_text(
            "[Icon Theme]\nName=Markers\nInherits=Adwaita,hicolor\nDirectories=mimetypes,places\n"
            + entry.format("mimetypes") + entry.format("places"))
        for version in ("3.0", "4.0"):
            self.write(self.config_home / f"gtk-{version}/settings.ini",
                       f"[Settings]\ngtk-icon-theme-name={self.icons}\ngtk-enable-animations=0\n"
                       "gtk-cursor-blink=0\n")
        self.write(self.config_home / "pcmanfm-qt/default/settings.conf",
                   f"[System]\nFallbackIconThemeName={self.icons}\n[Window]\nRememberWindowSize=false\n"
                   "FixedWidth=480\nFixedHeight=380\n[Behavior]\nConfirmDelete=false\n")
        for name in BLOCKED_SERVICES:
            self.write(self.data_home / f"dbus-1/services/{name}.service",
                       f"[D-BUS Service]\nName={name}\nExec=/bin/false\n")
        keep = {k: v for k, v in os.environ.items()
                if k in ("PATH", "TMPDIR", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "VANTLE_DATA_DIR")}
        self.environment = {
            **keep, "LANG": "C.UTF-8", "HOME": str(self.home), "USER": "e2e", "SHELL": "/bin/sh", "VANTLE_E2E": self.token,
            "XDG_DATA_HOME": str(self.data_home), "XDG_CONFIG_HOME": str(self.config_home),
            "XDG_CACHE_HOME": str(self.home / ".cache"), "XDG_RUNTIME_DIR": str(runtime),
            "XDG_STATE_HOME": str(self.home / ".local/state"), "XDG_SESSION_TYPE": "x11",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus",
            "GDK_BACKEND": "x11", "GSK_RENDERER": "cairo", "LIBGL_ALWAYS_SOFTWARE": "1",
            "GSETTINGS_BACKEND": "memory", "GTK_USE_PORTAL": "0", "NO_AT_BRIDGE": "1",
            "GTK_A11Y": "none", "QT_QPA_PLATFORM": "xcb", "PYTHONDONTWRITEBYTECODE": "1",
            # Its mounts would outlive the desktop: after hundreds of tests the machine has hundreds of them.
            "GVFS_DISABLE_FUSE": "1",
        }

    @staticmethod
    def write(path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def files(self, *names):
        """Small files of these names at home, each with its name in it."""
        return [self.write(self.home / name, os.fsencode(name)) for name in names]

    def _start_server(self):
        self.start("Xvfb", "Xvfb", "-displayfd", "1", "-screen", "0", "{}x{}x24".format(*self.size), "-nolisten", "tcp",
                   "-noreset")
        log = self.logs / "Xvfb.log"
        number = wait_for(lambda: re.search(r"^(\d+)\n", log.read_text(), re.MULTILINE), what="the X server")[1]
        self.environment["DISPLAY"] = f":{number}"
        self.display = xdisplay.Display(f":{number}")
        self.display.set_error_handler(lambda *_: None)  # Windows of others may go at any time.
        self.root = self.display.screen().root

    def _start_bus(self):
        self.start("bus", "dbus-daemon", "--session", "--nofork", "--nopidfile",
                   f"--address={self.environment['DBUS_SESSION_BUS_ADDRESS']}")
        wait_for(self._bus_listens, what="the session bus")

    def _bus_listens(self):
        with socket.socket(socket.AF_UNIX) as attempt:
            return attempt.connect_ex(str(self.root_dir / "run/bus")) == 0

    @functools.cached_property
    def bus(self):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        bus = Gio.DBusConnection.new_for_address_sync(self.environment["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)
        bus.set_exit_on_close(False)
        return bus

    def call(self, name, path, method, form=None, *arguments):
        """What a method, named with its interface, returns."""
        interface, _, method = method.rpartition(".")
        packed = GLib.Variant(form, arguments) if form else None
        return self.bus.call_sync(name, path, interface, method, packed, None, 0, 5000).unpack()

    def call_bus(self, method, form=None, *arguments):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", f"org.freedesktop.DBus.{method}", form,
                         *arguments)

    def is_named(self, name):
        return self.call_bus("NameHasOwner", "(s)", name)[0]

    def serve(self, name, path, interface, answer, properties=None):
        """A service of the test's own. Answer gets a method's name, its arguments and its call, on a thread of the
        harness, and gives what makes the variant to return. The name's number is for Gio.bus_unown_name."""
        main_loop()

        def called(_bus, _sender, _path, _interface, method, arguments, invocation):
            answered = answer(method, arguments.unpack(), invocation)
            invocation.return_value(answered and GLib.Variant(answered[0], answered[1:]))
        node = Gio.DBusNodeInfo.new_for_xml(f"<node>{interface}</node>")
        self.bus.register_object(path, node.interfaces[0], called, lambda *key: GLib.Variant(*properties[key[-1]]), None)
        number = Gio.bus_own_name_on_connection(self.bus, name, 0, None, None)
        wait_for(lambda: self.is_named(name), what=name)
        return number

    def start_window_manager(self):
        name = self.window_manager
        self.manager = self.start(name, *WINDOW_MANAGERS[name])
        wait_for(lambda: self.cardinal(self.root, "_NET_SUPPORTING_WM_CHECK"), what=name)

    def start(self, log, *command, environment=None, cwd=None):
        """Starts a program in a process group of its own; its output goes to logs/<log>.log."""
        with open(self.logs / f"{log}.log", "ab") as output:
            process = subprocess.Popen(
                [os.fspath(c) for c in command], stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                env={**self.environment, **(environment or {})}, cwd=cwd or self.home,
                start_new_session=True)
        self.processes[process.pid] = process
        return process

    def run(self, *command, **options):
        return subprocess.run([os.fspath(c) for c in command], env=self.environment, check=True,
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=30, **options).stdout

    def clipboard(self, kind="UTF8_STRING"):
        return self.run("xclip", "-o", "-selection", "clipboard", "-t", kind).decode()

    def end(self, process, how=signal.SIGTERM):
        """Ends a program and its group, and waits for it."""
        try:
            os.killpg(process.pid, how)
        except ProcessLookupError:
            pass
        try:
            process.wait(3)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait(3)
        self.processes.pop(process.pid, None)

    def close(self):
        for action in self.at_end:
            action()
        if self.display:
            try:
                self.display.close()
            except (error.ConnectionClosedError, OSError):
                pass
        for process in reversed(list(self.processes.values())):
            # The server takes its lock file away only when it is asked to end.
            self.end(process, signal.SIGTERM if process.args[0] == "Xvfb" else signal.SIGKILL)
        for pid in self.marked_processes():  # What the bus or a program started behind our back.
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        for mount in reversed(self.mounts):
            subprocess.run(["umount", "-l", mount], check=False)
        shutil.rmtree(self.root_dir, ignore_errors=True)

    def marked_processes(self):
        mark = f"VANTLE_E2E={self.token}".encode()
        for entry in Path("/proc").iterdir():
            if entry.name.isdigit():
                try:
                    if mark in (entry / "environ").read_bytes().split(b"\0"):
                        yield int(entry.name)
                except OSError:
                    pass

    def mount(self, folder, *arguments):
        """mount(8) on a folder for as long as the desktop lives."""
        subprocess.run(["mount", *arguments, folder], check=True, capture_output=True)
        self.mounts.append(folder)

    # Looking

    def screenshot(self, path):
        Path(path).parent.mkdir(parents=True, exist_ok=True)
        self.run("import", "-window", "root", path)
        return path

    def find_colour(self, colour, area=None, smallest=40):
        """Rectangles around the connected areas of a colour, from top to bottom."""
        x, y, width, height = area or (0, 0, *self.size)
        x, y = max(x, 0), max(y, 0)
        width, height = min(width, self.size[0] - x), min(height, self.size[1] - y)
        data = self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data
        near = b"".join(b"[%s-%s]" % (re.escape(bytes([max(c - 3, 0)])), re.escape(bytes([min(c + 3, 255)])))
                        for c in reversed(colour))
        run = re.compile(b"(?:" + near + b".){4,}", re.DOTALL)
        blobs = []
        for row in range(height):
            line = data[row * width * 4:(row + 1) * width * 4]
            for match in run.finditer(line):
                left, right = (match.start() + 3) // 4, match.end() // 4
                blob = [left, row, right, row + 1, right - left]
                for other in [b for b in blobs if b[3] >= row and left <= b[2] and right >= b[0]]:  # It touches them.
                    blobs.remove(other)
                    blob = [min(blob[0], other[0]), min(blob[1], other[1]), max(blob[2], other[2]), row + 1,
                            blob[4] + other[4]]
                blobs.append(blob)
        return sorted((Rect((x + b[0], y + b[1], b[2] - b[0], b[3] - b[1])) for b in blobs if b[4] >= smallest),
                      key=lambda r: (r.y, r.x))

    # Windows

    def atom(self, name):
        return self.display.intern_atom(name)

    def property(self, window, name):
        try:
            value = window.get_full_property(self.atom(name), X.AnyPropertyType)
        except (error.BadWindow, error.BadDrawable):
            return None
        return value.value if value else None

    def cardinal(self, window, name):
        value = self.property(window, name)
        return value[0] if value is not None and len(value) else None

    def atoms(self, window, name):
        """The names in a property that is a list of atoms."""
        return {self.display.get_atom_name(atom) for atom in self.property(window, name) or ()}

    def title(self, window):
        value = self.property(window, "_NET_WM_NAME")
        if value is None:
            value = self.property(window, "WM_NAME") or b""
        return value.decode("utf-8", "replace") if isinstance(value, bytes) else str(value)

    def windows(self, title=None, pid=None, hidden=False):
        """Application windows that show, those unknown to the window manager included. One that is mapped
        but has no shape does not, and belongs to the hidden ones."""
        ids = dict.fromkeys(self.property(self.root, "_NET_CLIENT_LIST") or ())
        try:
            ids.update(dict.fromkeys(child.id for child in self.root.query_tree().children))
        except error.BadWindow:
            pass
        found = []
        for window in (self.display.create_resource_object("window", i) for i in ids):
            try:
                if window.get_attributes().map_state != X.IsViewable or self.has_shape(window) == hidden:
                    continue
            except (error.BadWindow, error.BadDrawable):
                continue
            if title is not None and title not in self.title(window):
                continue
            if pid is not None and self.cardinal(window, "_NET_WM_PID") != pid:
                continue
            found.append(window)
        return found

    @staticmethod
    def has_shape(window):
        """Whether any of it can be seen."""
        shape = window.shape_query_extents()
        return not shape.bounding_shaped or shape.bounding_shape_extents_width > 0

    def window(self, title=None, pid=None, timeout=15):
        return wait_for(lambda: next(iter(self.windows(title, pid)), None), timeout,
                        f"a window {title or ''} of process {pid or 'any'}")

    def rect(self, window):
        size = window.get_geometry()
        place = self.root.translate_coords(window, 0, 0)
        return Rect((place.x, place.y, size.width, size.height))

    def is_on_top(self, window):
        """At its centre."""
        rect, frame = self.rect(window), window
        while (parent := frame.query_tree().parent) != self.root:
            frame = parent
        return self.root.translate_coords(self.root, *rect.centre).child == frame

    def active_window(self):
        return self.cardinal(self.root, "_NET_ACTIVE_WINDOW")

    def focused_title(self):
        active = self.active_window()
        return self.title(self.display.create_resource_object("window", active)) if active else ""

    def message(self, window, kind, *data):
        values = (list(data) + [0] * 5)[:5]
        self.root.send_event(event.ClientMessage(window=window, client_type=self.atom(kind), data=(32, values)),
                             event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.display.sync()

    def wait_for_focus(self, title, timeout=5):
        wait_for(lambda: self.focused_title() == title, timeout, f"{title} to have the keyboard")

    def activate(self, window):
        self.message(window, "_NET_ACTIVE_WINDOW", 2, X.CurrentTime)
        wait_for(lambda: self.active_window() == window.id, what="the window to become active")

    def place(self, window, x, y, width, height):
        """Puts a window where the scene needs it and waits until it stands there."""
        self.message(window, "_NET_WM_STATE", 0, self.atom("_NET_WM_STATE_MAXIMIZED_VERT"),
                     self.atom("_NET_WM_STATE_MAXIMIZED_HORZ"), 2)
        self.message(window, "_NET_MOVERESIZE_WINDOW", 1 | 0xF00 | 2 << 12, x, y, width, height)
        before = None
        for _ in range(60):
            time.sleep(0.05)
            now = self.rect(window)
            if now == before and abs(now.x - x) < 80 and abs(now.y - y) < 80:
                break
            before = now
        return now

    # Pointer and keyboard: the pauses are what GTK, Qt and the browsers need to take part.

    def move(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=int(x), y=int(y))
        self.display.sync()

    def glide(self, x, y, seconds=0.4, steps=20):
        at = self.root.query_pointer()
        for step in range(1, steps + 1):
            self.move(at.root_x + (x - at.root_x) * step / steps, at.root_y + (y - at.root_y) * step / steps)
            time.sleep(seconds / steps)

    def press(self, x, y, button=1):
        self.move(x, y)
        time.sleep(0.2)
        xtest.fake_input(self.display, X.ButtonPress, button)
        self.display.sync()
        time.sleep(0.1)

    def release(self, button=1):
        xtest.fake_input(self.display, X.ButtonRelease, button)
        self.display.sync()

    def begin_drag(self, x, y, dx=24, dy=12):
        self.press(x, y)
        self.glide(x + dx, y + dy, 0.2, 10)

    def drop(self, x, y):
        self.glide(x, y, 0.4)
        for step in (1, 0):  # A source that was slow to find the target learns of it now.
            time.sleep(0.25)
            self.move(x + step, y)
        time.sleep(0.1)
        self.release()

    def click(self, x, y, button=1):
        self.press(x, y, button)
        self.release(button)
        time.sleep(0.1)

    def double_click(self, x, y):
        self.move(x, y)
        time.sleep(0.2)
        for kind in (X.ButtonPress, X.ButtonRelease) * 2:
            xtest.fake_input(self.display, kind, 1)
            self.display.sync()
            time.sleep(0.03)

    def keys(self, *names):
        """Presses keys together, by keysym name or number, and lets them go in reverse order."""
        with self.held(*names):
            pass

    def type(self, *names):
        """Presses keys one after the other."""
        for name in names:
            self.keys(name)

    @contextlib.contextmanager
    def held(self, *names):
        codes = [name if isinstance(name, int) else self.display.keysym_to_keycode(XK.string_to_keysym(name))
                 for name in names]

        def each(kind, order):
            for code in order:
                xtest.fake_input(self.display, kind, code)
                self.display.sync()
                time.sleep(0.03)
        each(X.KeyPress, codes)
        try:
            yield
        finally:
            each(X.KeyRelease, codes[::-1])
