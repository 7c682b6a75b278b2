"""The programs that drags are exchanged with: real ones, and scripted ones for what real ones never do."""
import base64
import functools
import http.server
import io
import itertools
import json
import sys
import threading
import time
from pathlib import Path

from Xlib import X, Xatom, display as xdisplay
from Xlib.protocol import event

from desktop import FILE_COLOUR, wait_for
from program import file_url

HERE = Path(__file__).parent
LEFT = (0, 0, 480, 390)
BELOW = (0, 400, 480, 390)
LINK_COLOUR = (0x0B, 0x6F, 0xA4)
TEXT_COLOUR = (0xE0, 0xA1, 0x00)
IMAGE_COLOUR = (0x4C, 0xAF, 0x20)
DROP_COLOUR = (0x33, 0x55, 0x77)


def picture(width, height, colour, form="PNG"):
    """A picture of one colour, as the bytes of its file."""
    from PIL import Image  # Not installed for ./run, which needs no pictures.
    data = io.BytesIO()
    Image.new("RGB", (width, height), colour).save(data, form)
    return data.getvalue()


def colour_places(desktop, window, colour, count=1, **options):
    """Where a window shows a colour, once it shows it that often at the same places twice."""
    seen = []

    def steady():
        seen.append(desktop.find_colour(colour, desktop.rect(window), **options))
        if len(seen[-1]) >= count and seen[-1] == (seen[-2:-1] or [None])[0]:
            return seen[-1]
        time.sleep(0.1)
        return None
    return wait_for(steady, 15, f"{count} places of colour {colour}")


class FileManager:
    """A window of a file manager that shows one folder."""
    commands = {
        "thunar": ["thunar"],
        "pcmanfm-qt": ["pcmanfm-qt", "--new-window"],
        "nautilus": ["nautilus", "--new-window"],
        "nemo": ["nemo"],
        "caja": ["caja", "--no-desktop", "--browser"],
    }

    def __init__(self, desktop, name, folder, place=LEFT):
        self.desktop = desktop
        self.name = name
        Path(folder).mkdir(parents=True, exist_ok=True)
        known = {w.id for w in desktop.windows(Path(folder).name)}
        self.process = desktop.start(f"{name}-{Path(folder).name}", *self.commands[name], folder)
        self.window = wait_for(lambda: next((w for w in desktop.windows(Path(folder).name) if w.id not in known),
                                            None), 20, f"{name} to show {folder}")
        desktop.place(self.window, *place)

    def icons(self, count=1, colour=FILE_COLOUR):
        """Where its files' icons stand; the sidebar's small ones are left out."""
        return colour_places(self.desktop, self.window, colour, count, smallest=500)

    @property
    def empty_place(self):
        return self.desktop.rect(self.window).at(0.8, 0.65)

    def select_all(self, count):
        """Selects all of at least this many files and returns the place of the first."""
        icons = self.icons(count)
        self.desktop.click(*icons[1].centre)  # Gives the view the keyboard.
        self.desktop.keys("Control_L", "a")
        time.sleep(0.3)
        return icons[0].centre

    def confirm(self):
        """PCManFM-Qt asks what to do with a drop, with copying as its first choice."""
        if self.name == "pcmanfm-qt":
            time.sleep(0.5)
            self.desktop.keys("Down")
            self.desktop.keys("Return")


class Firefox:
    """A browser window with a page that holds a link, selected text, a picture and a place to drop on."""
    link = "https://www.example.org/a/b/?q=1"
    text = "Grüße aus dem Text"
    preferences = {
        "browser.shell.checkDefaultBrowser": False, "browser.aboutwelcome.enabled": False,
        "browser.startup.homepage_override.mstone": "ignore", "browser.startup.page": 0,
        "browser.preonboarding.enabled": False, "termsofuse.bypassNotification": True,
        "datareporting.policy.dataSubmissionEnabled": False, "toolkit.telemetry.reportingpolicy.firstRun": False,
        "app.normandy.enabled": False, "app.update.enabled": False, "browser.tabs.inTitlebar": 0,
        "network.captive-portal-service.enabled": False, "network.connectivity-service.enabled": False,
        "browser.sessionstore.resume_from_crash": False, "layers.acceleration.disabled": True,
        "extensions.update.enabled": False, "browser.safebrowsing.malware.enabled": False,
        "browser.safebrowsing.phishing.enabled": False, "browser.newtabpage.enabled": False,
        "browser.toolbars.bookmarks.visibility": "never", "services.settings.server": "http://127.0.0.1:1",
    }

    def __init__(self, desktop, place=(0, 0, 600, 780)):
        self.desktop = desktop
        address = serve(desktop, write_page(desktop.home / "page", self.link, self.text))
        profile = desktop.home / "firefox"
        desktop.write(profile / "user.js", "".join(
            f"user_pref({json.dumps(k)}, {json.dumps(v)});\n" for k, v in self.preferences.items()))
        self.process = desktop.start("firefox", *self.command(profile), address)
        self.window = desktop.window("ready", timeout=60)
        desktop.place(self.window, *place)

    def command(self, profile):
        return ["firefox-esr", "--no-remote", "--profile", profile]

    def find(self, colour):
        rect = colour_places(self.desktop, self.window, colour)[0]
        return (rect.x + 60, rect.centre[1]) if colour == TEXT_COLOUR else rect.centre  # Its mark stands before it.

    def wait_for_drop(self, what):
        """The address or the names, sizes and texts of the files that were dropped on the page, as the page saw it."""
        wait_for(lambda: self.desktop.title(self.window).startswith(f"got {what}"), 10, f"the page to get {what}")


class Chromium(Firefox):
    def command(self, profile):
        return ["chromium", "--no-sandbox", "--password-store=basic", "--no-first-run", "--disable-gpu",
                "--disable-background-networking", "--disable-component-update", "--disable-sync",
                "--no-default-browser-check", "--test-type", f"--user-data-dir={profile}"]


def write_page(folder, link, text):
    folder.mkdir()
    (folder / "picture.png").write_bytes(picture(120, 80, IMAGE_COLOUR))
    page = folder / "page.html"
    page.write_text(f"""<!DOCTYPE html><meta charset="utf-8"><title>ready</title>
<style>body {{ margin: 0 }} * {{ font: 16px sans-serif }} a, p {{ display: block; width: 300px; height: 50px; margin: 0 }}
a {{ background: {css(LINK_COLOUR)}; color: {css(LINK_COLOUR)} }} p {{ border-left: 20px solid {css(TEXT_COLOUR)}; line-height: 50px }}
div {{ background: {css(DROP_COLOUR)}; height: 200px }} img {{ display: block }}</style>
<a href="{link}">A link</a><p id="text">{text}</p><img src="picture.png"><div></div><script>
getSelection().selectAllChildren(document.getElementById("text"));
document.ondragover = event => {{ event.preventDefault(); event.dataTransfer.dropEffect = "copy"; }};
document.ondrop = async event => {{
  event.preventDefault();
  const data = event.dataTransfer, files = [...data.files];
  if (!files.length) document.title = "got " + (data.getData("text/uri-list") || data.getData("text/plain"));
  else document.title = "got " + (await Promise.all(files.map(async f => `${{f.name}}:${{f.size}}:${{await f.text()}}`))).join("|");
}};</script>""")
    return page


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


def serve(desktop, page):
    """The page's address at a server of our own, which ends with the desktop."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(QuietHandler, directory=page.parent))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    desktop.at_end.append(server.shutdown)
    return f"http://127.0.0.1:{server.server_port}/{page.name}"


def css(colour):
    return "rgb({}, {}, {})".format(*colour)


class Editor:
    """A text editor that shows a file."""
    commands = {"mousepad": ["mousepad", "--disable-server"], "featherpad": ["featherpad", "--standalone"]}

    def __init__(self, desktop, name, file, place=LEFT):
        self.desktop = desktop
        self.process = desktop.start(name, *self.commands[name], file)
        self.window = desktop.window(file.name, timeout=20)
        desktop.place(self.window, *place)

    @property
    def text_place(self):
        """Within the first lines, whatever bars stand above and numbers to the left of them."""
        rect = self.desktop.rect(self.window)
        return rect.x + rect.width // 3, rect.y + rect.height // 2

    def select_all(self):
        self.desktop.click(*self.text_place)
        wait_for(lambda: self.desktop.active_window() == self.window.id, what="the focus")
        self.desktop.keys("Control_L", "a")
        time.sleep(0.3)

    def save(self):
        self.desktop.activate(self.window)
        self.desktop.keys("Control_L", "s")


class Scripted:
    """A window of the script beside this file at one end of drags, and the events that it prints."""
    numbers = itertools.count(1)

    def __init__(self, desktop, kind, *arguments, place):
        self.desktop = desktop
        self.log = f"{kind}-{next(self.numbers)}"
        self.process = desktop.start(self.log, sys.executable, HERE / "gtk_peer.py", kind, *arguments)
        self.window = desktop.window(kind, self.process.pid)
        desktop.place(self.window, *place)
        self.event("ready")

    def events(self, kind):
        lines = (self.desktop.logs / f"{self.log}.log").read_text(errors="replace").splitlines()
        return [json.loads(line) for line in lines if line.startswith(f'{{"event": "{kind}"')]

    def event(self, kind, timeout=10, number=1):
        """The last of at least so many."""
        return wait_for(lambda: self.events(kind)[number - 1:], timeout, f"{self.log} to tell of {kind}")[-1]

    @property
    def centre(self):
        return self.desktop.rect(self.window).centre


def source(desktop, offers, actions=("copy", "move"), place=LEFT):
    """A window that offers these formats: bytes, or a dict as gtk_peer.py takes it with bytes as data."""
    script = {"actions": list(actions), "offers": {}}
    for name, offer in offers.items():
        offer = dict(offer) if isinstance(offer, dict) else {"data": offer}
        script["offers"][name] = {**offer, "data": base64.b64encode(offer.get("data", b"")).decode()}
    path = desktop.write(desktop.root_dir / f"source-{next(Scripted.numbers)}.json", json.dumps(script))
    return Scripted(desktop, "source", path, place=place)


def target(desktop, *formats, place=BELOW):
    return Scripted(desktop, "target", *formats, place=place)


def carry(program, offers, place=(0, 400, 200, 200), **options):
    """Drags what a source offers onto the panel, to the end of the drag."""
    carried = source(program.desktop, offers, place=place, **options)
    program.desktop.begin_drag(*carried.centre)
    program.drop()
    carried.event("end")
    program.desktop.end(carried.process)
    return carried


def data(drop, name):
    return base64.b64decode(drop["data"][name])


def uri_list(*paths):
    return b"".join(file_url(p).encode() + b"\r\n" for p in paths)


def file_list(*paths):
    return {"text/uri-list": uri_list(*paths)}


class ClipboardOwner:
    """Offers these formats on the clipboard; a silent one hears every question and answers none."""

    def __init__(self, desktop, offers, silent=False):
        self.offers, self.silent, self.asked, self.ended = offers, silent, [], threading.Event()
        self.display = xdisplay.Display(desktop.environment["DISPLAY"])
        self.window = self.display.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        clipboard = self.display.intern_atom("CLIPBOARD")
        self.window.set_selection_owner(clipboard, X.CurrentTime)
        self.display.sync()
        self.thread = threading.Thread(target=self._serve, daemon=True)
        self.thread.start()
        desktop.at_end.append(self.end)

    def end(self):
        self.ended.set()
        self.thread.join()

    def _serve(self):
        while not self.ended.wait(0.005):
            while self.display.pending_events():
                happened = self.display.next_event()
                if happened.type == X.SelectionClear:
                    self.ended.set()
                elif happened.type == X.SelectionRequest:
                    self._answer(happened)
        self.display.close()

    def _answer(self, request):
        name = self.display.get_atom_name(request.target)
        self.asked.append(name)
        if self.silent:
            return
        given = request.property or request.target
        if name == "TARGETS":
            types = [self.display.intern_atom(t) for t in ("TARGETS", *self.offers)]
            request.requestor.change_property(given, Xatom.ATOM, 32, types)
        elif name in self.offers:
            request.requestor.change_property(given, request.target, 8, self.offers[name])
        else:
            given = X.NONE
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=given))
        self.display.flush()


def record_openings(desktop, *names):
    """Applications for text that write down what they are given, the last one by default; and a browser. What was
    opened comes as lists of the start-up id, the application and what it was given."""
    opened = desktop.home / "opened"
    script = desktop.write(desktop.home / "record", f'echo "$DESKTOP_STARTUP_ID|$*" >> {opened}\n')
    entries = [(name, "text/plain", "%F") for name in names] + [("Browser", "x-scheme-handler/https", "%u")]
    for name, types, given in entries:
        desktop.write(desktop.data_home / f"applications/{name}.desktop",
                      f"[Desktop Entry]\nType=Application\nName={name}\nExec=/bin/sh {script} {name} {given}\n"
                      f"StartupNotify=true\nMimeType={types};\nIcon=accessories-text-editor\n")
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\n"
                  + "".join(f"{types}={name}.desktop\n" for name, types, _ in entries[-2:])
                  + "[Added Associations]\ntext/plain=" + "".join(f"{name}.desktop;" for name in names) + "\n")
    return lambda: [line.split("|") for line in opened.read_text().splitlines()] if opened.exists() else []
