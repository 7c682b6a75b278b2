"""The menu of a row, by pointer and by keyboard, in the real program."""
import pytest

from desktop import wait_for
from peers import record_openings
from program import file_url
from test_shelves import type_name, wait_for_menus

pytestmark = pytest.mark.main
FILE_MANAGER = "org.freedesktop.FileManager1"
INTERFACE = f"<interface name='{FILE_MANAGER}'><method name='ShowItems'><arg type='as'/><arg type='s'/></method></interface>"

# What stands in the menu, from top to bottom, without the lines.
ONE = ("open", "open with", "preview", "reveal", "rename", "copy", "move", "remove")
SEVERAL = tuple(entry for entry in ONE if entry != "rename")
LINKS = tuple(entry for entry in SEVERAL if entry != "reveal")


class RowMenu:
    """Opens it by one device, and chooses by keyboard."""

    def __init__(self, program, device):
        self.program, self.device = program, device

    def use(self, first, count, menu, entry, below=None):
        """Of so many rows from the first one; below is the place in a submenu."""
        getattr(self, f"_select_by_{self.device}")(first, count)
        wait_for_menus(self.program, 1)
        desktop = self.program.desktop
        desktop.type(*["Down"] * (menu.index(entry) + 1))
        if below is not None:
            desktop.keys("Right")
            wait_for_menus(self.program, 2)
            desktop.type(*["Down"] * below)
        desktop.keys("Return")
        wait_for_menus(self.program, 0)

    def _select_by_keyboard(self, first, count):
        desktop = self.program.desktop
        self.program.activate()
        desktop.type(*["Up"] * len(self.program.items()), *["Down"] * first)
        for _ in range(count - 1):
            desktop.keys("Shift_L", "Down")
        desktop.keys(*(("Menu",) if count == 1 else ("Shift_L", "F10")))

    def _select_by_pointer(self, first, count):
        program = self.program
        program.wait_until_idle()
        program.desktop.click(*program.row(first))
        for row in range(first + 1, first + count):
            with program.desktop.held("Control_L"):
                program.desktop.click(*program.row(row))
        program.desktop.click(*program.row(first), button=3)


@pytest.mark.parametrize("device", ["pointer", "keyboard"])
def test_every_entry(desktop, program, device):
    """Each once, on one row, several, a web link, or a file and a link together."""
    opened = record_openings(desktop, "First", "Second")
    asked = []
    desktop.serve(FILE_MANAGER, "/org/freedesktop/FileManager1", INTERFACE, lambda _, arguments, __: asked.append(arguments))
    program.start()
    one, two, three, four, five = files = desktop.files("one.txt", "two.txt", "three.txt", "four.txt", "five.txt")
    link = "https://example.org/a"
    program.add(*files)
    program.activate()
    desktop.keys("Control_L", "t")
    program.wait_for_shelf(2, 2)
    desktop.keys("Control_L", "1")
    program.wait_for_shelf(1, 2)
    use = RowMenu(program, device).use

    def wait_for_opening(what):
        wait_for(lambda: opened() and opened()[-1][1] == what, 5, what)

    def wait_for_clipboard(*lines):
        wait_for(lambda: desktop.clipboard().splitlines() == [str(line) for line in lines], 3, f"{lines} on the clipboard")

    def wait_for_shelves(*shelves):
        wait_for(lambda: [[item["url"] for item in shelf["items"]] for shelf in program.state()["shelves"]]
                 == [[file_url(file) for file in shelf] for shelf in shelves], 3, f"{shelves} on the shelves")

    use(0, 1, ONE, "open")
    wait_for_opening(f"Second {one}")
    use(0, 1, ONE, "open with", 1)
    wait_for_opening(f"First {one}")
    use(0, 1, ONE, "preview")
    desktop.wait_for_focus(one.name)
    desktop.keys("Escape")
    wait_for(lambda: not desktop.windows(one.name), 3, "the preview to go")
    use(0, 1, ONE, "reveal")
    wait_for(lambda: asked, what="the file manager")
    assert asked[0][0] == [file_url(one)] and asked[0][1].startswith("vantle-"), asked
    use(0, 1, ONE, "copy")
    wait_for_clipboard(one)
    assert "text/uri-list" not in desktop.clipboard("TARGETS")
    use(1, 1, ONE, "rename")
    type_name(program, "n")
    desktop.keys("Return")
    renamed = desktop.home / "n.txt"
    wait_for_shelves([one, renamed, three, four, five], [])
    assert renamed.read_text() == "two.txt" and not two.exists()

    use(0, 1, ONE, "move", 0)
    wait_for_shelves([renamed, three, four, five], [one])
    use(0, 2, SEVERAL, "move", 1)
    wait_for_shelves([four, five], [one], [renamed, three])

    program.add(link)
    use(2, 1, LINKS, "open")
    wait_for_opening(f"Browser {link}")
    use(1, 2, SEVERAL, "copy")
    wait_for_clipboard(five, link)
    use(1, 2, SEVERAL, "remove")
    program.wait_for_items(1)


@pytest.mark.any_wm
def test_what_is_opened_comes_to_the_front_and_a_folder_shows_what_is_revealed(desktop, program):
    """The latter where no file manager has the bus name."""
    desktop.write(desktop.config_home / "mimeapps.list", "[Default Applications]\n"
                  "text/plain=org.xfce.mousepad.desktop\ninode/directory=thunar.desktop\n")
    desktop.write(desktop.data_home / f"dbus-1/services/{FILE_MANAGER}.service",
                  f"[D-BUS Service]\nName={FILE_MANAGER}\nExec=/bin/false\n")
    desktop.call_bus("ReloadConfig")
    program.start()
    program.add(*desktop.files("some folder/read me.txt"))
    menu = RowMenu(program, "keyboard")
    for entry, title in (("open", "read me.txt"), ("reveal", "some folder")):
        menu.use(0, 1, ONE, entry)
        wait_for(lambda: title in desktop.focused_title(), 15, f"the keyboard in the window of {title}")
