"""What a screen reader finds, does and hears, by the accessibility bus."""
import json
import subprocess
import threading
import time
from pathlib import Path

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, picture
from program import SETTINGS, TOUR
from test_rowmenu import ONE, RowMenu

pytestmark = [pytest.mark.main, pytest.mark.any_wm]
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
CONTROLS = {"push button", "push button menu", "button", "check box", "combo box", "list", "list item", "text", "image", "tool bar"}


class Reader:
    def __init__(self, desktop, program):
        desktop.start("a11y-bus", LAUNCHER, "--launch-immediately", "--a11y=1")
        wait_for(lambda: desktop.is_named("org.a11y.Bus"), what="the accessibility bus")
        self.desktop, self.answers, self.events = desktop, [], []
        self.process = subprocess.Popen(
            ["/usr/bin/python3", Path(__file__).with_name("screen_reader.py")], env=desktop.environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=open(desktop.logs / "screen-reader.log", "w"),
            start_new_session=True)
        desktop.processes[self.process.pid] = self.process
        threading.Thread(target=self._listen, daemon=True).start()
        wait_for(lambda: self.answers, what="the screen reader")

    def _listen(self):
        for line in self.process.stdout:
            message = json.loads(line)
            if "answer" in message:
                self.answers.append(message["answer"])
            else:
                self.events.append(message)

    def ask(self, *command):
        count = len(self.answers)
        self.process.stdin.write(json.dumps(command) + "\n")
        self.process.stdin.flush()
        wait_for(lambda: len(self.answers) > count, 20, f"an answer to {command}")
        return self.answers[-1]

    def find(self, title, role, name):
        return wait_for(lambda: self.ask("find", title, role, name), 10, f"{role} {name}")

    def do(self, title, role, name, action):
        self.find(title, role, name)
        return self.ask("do", title, role, name, action)

    def shows_panel(self):
        return any("showing" in node["states"] for node in self.ask("all", "Vantle")[:1])

    def row(self, name):
        return self.find("Vantle", "list item", name)

    def has_heard(self, event, role, name, detail=None):
        return any(e["event"].startswith(event) and (e["role"], e["name"]) == (role, name)
                   and detail in (e["detail"], None) for e in list(self.events))

    def hear(self, *what):
        wait_for(lambda: self.has_heard(*what), 5, f"{what} among {self.events[-20:]}")

    def walk_menu_to(self, entry):
        """The toolkit keeps menus out of the tree and tells of the entry that the keyboard is on."""
        wait_for(lambda: self.desktop.keys("Down") or self.has_heard("object:state-changed:focused", "menu item", entry, 1),
                 5, f"the menu to be walked to {entry}")


@pytest.fixture
def reader(desktop, program):
    return Reader(desktop, program)


def test_a_shelf_is_worked_and_heard(desktop, program, reader):
    program.start()
    assert not reader.shows_panel(), "the hidden panel is told of"
    files = desktop.files("alpha report.txt", "beta.txt")
    program.add(*files)
    reader.hear("object:children-changed:add", "list", "Vantle")
    program.summon()
    assert reader.shows_panel()
    panel = program.panel_rect()
    for file in files:
        row = reader.row(file.name)
        assert row["description"] == str(desktop.home)
        assert {"selectable", "focusable", "showing"} <= set(row["states"]) and "selected" not in row["states"]
        x, y, width, height = row["box"]
        assert panel.x < x and panel.y < y and x + width < panel.x + panel.width and height >= 32
    controls = [n for n in reader.ask("all", "Vantle") if n["role"] in CONTROLS and "showing" in n["states"]]
    assert all(n["name"] for n in controls), controls
    assert [n["name"] for n in controls if n["role"].startswith("push button")] == ["Vantle", "Clear shelf", "Hide shelf"]

    reader.do("Vantle", "list item", "beta.txt", "Press")
    wait_for(lambda: {"selected", "focused"} <= set(reader.row("beta.txt")["states"]), what="the row to be selected")
    reader.hear("object:state-changed:selected", "list item", "beta.txt", 1)
    reader.hear("object:state-changed:focused", "list item", "beta.txt", 1)
    reader.do("Vantle", "list item", "alpha report.txt", "Toggle")
    wait_for(lambda: all("selected" in reader.row(f.name)["states"] for f in files), what="both to be selected")
    reader.do("Vantle", "list item", "beta.txt", "Toggle")
    reader.hear("object:state-changed:selected", "list item", "beta.txt", 0)

    reader.do("Vantle", "list item", "alpha report.txt", "ShowMenu")
    reader.walk_menu_to("Copy Path")
    desktop.keys("Return")
    reader.hear("object:state-changed:showing", "notification", "Copied", 1)

    reader.events.clear()
    reader.do("Vantle", "list item", "alpha report.txt", "remove")
    program.wait_for_items(1)
    reader.hear("object:children-changed:remove", "list", "Vantle")
    assert reader.ask("find", "Vantle", "list item", "alpha report.txt") is None
    desktop.keys("Control_L", "z")
    program.wait_for_items(2)
    reader.row("alpha report.txt")
    reader.do("Vantle", "push button", "Clear shelf", "Press")
    program.wait_for_items(0)
    reader.find("Vantle", "label", "Drop anything here")
    program.hide()
    wait_for(lambda: not reader.shows_panel(), 5, "the hidden panel to be told of no more")


def test_other_windows_are_named_and_speak_the_language_that_is_picked(desktop, program, reader):
    """The tour, the settings with their recorder, the preview's pages and the question for a name."""
    first = "A shelf for whatever you drag"
    program.prefer(onboarded=False)
    program.start(LANGUAGE="pt:ja", LC_ALL="pt_PT.UTF-8")
    tour = desktop.window("Vantle へようこそ", program.process.pid)
    program.act("settings")
    settings = desktop.window("Vantle の設定", program.process.pid)
    for key, code, titles in (("e", "en", (TOUR, SETTINGS)), ("Home", "system", ("Vantle へようこそ", "Vantle の設定")),
                              ("d", "de", ("Willkommen bei Vantle", "Vantle-Einstellungen"))):
        desktop.activate(settings)
        desktop.keys(key)
        program.wait_for_stored("language", code)
        wait_for(lambda: (desktop.title(tour), desktop.title(settings)) == titles, 5, f"the titles in {code}")
        time.sleep(0.5)  # Letters that come sooner are searched for together.
    reader.find("Vantle-Einstellungen", "check box", "Beim Ziehen in eine Bildschirmecke")
    program.summon()
    for button in ("Ablage leeren", "Ablage ausblenden"):
        reader.find("Vantle", "push button", button)
    desktop.type("Tab", "space")
    reader.walk_menu_to("Ablage umbenennen\xa0…")
    desktop.keys("Escape")
    program.kill()

    program.prefer(onboarded=False, language="en")
    program.start(LANGUAGE="de", LC_ALL="de_AT.UTF-8")
    reader.find(TOUR, "notification", first)
    assert "checked" in reader.find(TOUR, "radio button", first)["states"]
    reader.do(TOUR, "push button", "Next", "Press")
    second = wait_for(lambda: next((n["name"] for n in reader.ask("all", TOUR) if n["role"] == "radio button"
                                    and "checked" in n["states"] and n["name"] != first), None), 5, "the next dot")
    reader.hear("object:state-changed:showing", "notification", second, 1)
    program.open_settings()
    controls = [n for n in reader.ask("all", SETTINGS) if n["role"] in CONTROLS - {"list", "list item"}]
    assert len(controls) > 12 and all(n["name"] and n["actions"] for n in controls), controls
    assert all(n["label"] for n in controls if n["role"] == "combo box"), controls
    corner = "When a drag reaches a corner of the screen"
    assert "checked" in reader.find(SETTINGS, "check box", corner)["states"]
    reader.do(SETTINGS, "check box", corner, "Toggle")
    program.wait_for_stored("cornerToSummon", False)
    assert "checked" not in reader.find(SETTINGS, "check box", corner)["states"]
    desktop.type(*["Tab"] * 7)
    recorder = next(n for n in reader.ask("all", SETTINGS) if "focused" in n["states"])
    assert (recorder["role"], recorder["name"]) == ("push button", "Ctrl+Alt+S") and recorder["actions"], recorder
    desktop.type("Tab", "space")
    desktop.wait_for_focus("Add Application")
    assert any(n["role"] == "list item" and n["name"] for n in reader.ask("all", "Add Application"))
    desktop.keys("Escape")

    image = desktop.write(desktop.home / "picture.png", picture(90, 70, IMAGE_COLOUR))
    paper = desktop.write(desktop.home / "paper.pdf", picture(90, 70, LINK_COLOUR, "PDF"))
    notes = desktop.write(desktop.home / "notes.txt", "line\n" * 500)
    program.add(image, paper, notes)
    program.activate()
    desktop.type("Down", "space")
    reader.find(image.name, "image", image.name)
    reader.find(image.name, "push button", "Open")
    desktop.keys("Down")
    reader.find(paper.name, "document frame", paper.name)
    desktop.keys("Down")
    reader.find(notes.name, "scroll bar", "Vertical scroll bar")
    desktop.keys("Escape")
    RowMenu(program, "keyboard").use(0, 1, ONE, "rename")
    question = "Rename the file"
    assert "modal" in reader.find("Vantle", "dialog", question)["states"]
    assert "focused" in reader.find("Vantle", "text", question)["states"]
    assert "sensitive" not in reader.find("Vantle", "push button", "Clear shelf")["states"]
    reader.find("Vantle", "push button", "Rename")
    reader.do("Vantle", "push button", "Cancel", "Press")
