"""What a screen reader finds, does and hears, by the accessibility bus."""
import json
import subprocess
import threading
from pathlib import Path

import pytest

from desktop import wait_for
from peers import IMAGE_COLOUR, LINK_COLOUR, png
from program import TOUR
from test_keyboard import activate
from test_preview import pdf
from test_rowmenu import ONE, RowMenu
from test_settings import open_settings, stored, tab

main = pytest.mark.main
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
CONTROLS = {"push button", "push button menu", "button", "check box", "combo box", "list", "list item", "text", "image", "tool bar"}


class Reader:
    def __init__(self, desktop, program):
        desktop.start("a11y-bus", LAUNCHER, "--launch-immediately", "--a11y=1")
        wait_for(lambda: program.is_named("org.a11y.Bus"), what="the accessibility bus")
        self.answers, self.events = [], []
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

    def row(self, name):
        return self.find("Vantle", "list item", name)

    def has_heard(self, event, role, name, detail=None):
        return any(e["event"].startswith(event) and (e["role"], e["name"]) == (role, name)
                   and detail in (e["detail"], None) for e in list(self.events))

    def hear(self, *what):
        wait_for(lambda: self.has_heard(*what), 5, f"{what} among {self.events[-20:]}")


@pytest.fixture
def reader(desktop, program):
    return Reader(desktop, program)


@main
@pytest.mark.any_wm
def test_a_shelf_is_worked_and_heard(desktop, program, reader):
    program.start()
    files = [desktop.write(desktop.home / name, name) for name in ("alpha report.txt", "beta.txt")]
    desktop.run(program.binary, *files)
    program.wait_for_items(2)
    reader.hear("object:children-changed:add", "list", "Vantle")
    program.summon()
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
    # The toolkit keeps menus out of the tree and tells of the entry that the keyboard is on.
    wait_for(lambda: desktop.keys("Down") or reader.has_heard("object:state-changed:focused", "menu item", "Copy Path", 1),
             5, "the menu to be walked to the entry")
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


@pytest.mark.any_wm
def test_the_tour_is_read_page_by_page(desktop, program, reader):
    program.prefer(onboarded=False)
    program.start()
    reader.find(TOUR, "notification", "A shelf for whatever you drag")
    assert "checked" in reader.find(TOUR, "radio button", "A shelf for whatever you drag")["states"]
    reader.do(TOUR, "push button", "Next", "Press")
    second = wait_for(lambda: next((n["name"] for n in reader.ask("all", TOUR)
                                    if n["role"] == "radio button" and "checked" in n["states"]
                                    and n["name"] != "A shelf for whatever you drag"), None), 5, "the next dot")
    reader.hear("object:state-changed:showing", "notification", second, 1)


@pytest.mark.any_wm
def test_settings_are_named_and_switched(desktop, program, reader):
    program.start()
    open_settings(desktop, program)
    title = "Vantle Settings"
    controls = [n for n in reader.ask("all", title) if n["role"] in CONTROLS - {"list", "list item"}]
    assert len(controls) > 12 and all(n["name"] and n["actions"] for n in controls), controls
    assert all(n["label"] for n in controls if n["role"] == "combo box"), controls
    corner = "When a drag reaches a corner of the screen"
    assert "checked" in reader.find(title, "check box", corner)["states"]
    reader.do(title, "check box", corner, "Toggle")
    wait_for(lambda: stored(program).get("cornerToSummon") is False, what="the corner to be off")
    assert "checked" not in reader.find(title, "check box", corner)["states"]


@pytest.mark.any_wm
def test_what_comes_and_goes_is_named(desktop, program, reader):
    """The preview's pages, the question for a name and the recorder of a hot key."""
    program.start()
    picture = desktop.write(desktop.home / "picture.png", png(90, 70, IMAGE_COLOUR))
    paper = desktop.write(desktop.home / "paper.pdf", pdf(LINK_COLOUR))
    desktop.run(program.binary, picture, paper)
    program.wait_for_items(2)
    activate(program)
    desktop.keys("Down")
    desktop.keys("space")
    reader.find(picture.name, "image", picture.name)
    reader.find(picture.name, "push button", "Open")
    desktop.keys("Down")
    reader.find(paper.name, "document frame", paper.name)
    desktop.keys("Escape")
    RowMenu(program, "keyboard").use(0, 1, ONE, "rename")
    question = "Rename the file"
    assert "focused" in reader.find(question, "text", question)["states"]
    for button in ("Rename", "Cancel"):
        reader.find(question, "push button", button)
    reader.do(question, "push button", "Cancel", "Press")
    open_settings(desktop, program)
    tab(desktop, 7)
    recorder = next(n for n in reader.ask("all", "Vantle Settings") if "focused" in n["states"])
    assert recorder["name"] == "Ctrl+Alt+S" and recorder["actions"], recorder
