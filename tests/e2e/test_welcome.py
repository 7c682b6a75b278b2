"""The tour: it greets the first start alone, its pages turn, and its sample really lands on the shelf."""
import time

import pytest

from desktop import wait_for
from program import TOUR

pytestmark = pytest.mark.main
BOTTOM = 37  # From the window's lower edge to the middle of its buttons,
LEFT, RIGHT = 72, 75  # from its sides to their middles,
DOT = 18  # from dot to dot.
SAMPLE = 0.5, 0.26  # Where the sample lies in the window.


class Tour:
    def __init__(self, desktop, program):
        self.desktop = desktop
        self.window = desktop.window(TOUR, program.process.pid)
        wait_for(lambda: desktop.active_window() == self.window.id, 5, "the tour to get the keyboard")
        self.rect = desktop.rect(self.window)
        x, y = self.rect.x + self.rect.width - 40, self.rect.y + self.rect.height - BOTTOM - 10
        self.accent = wait_for(lambda: self._accent(x, y), 5, "the button to be painted")
        self.first = wait_for(self._dot, 5, "the dots")

    def _accent(self, x, y):
        """Of the button that leads on, which has the present page's dot's colour, once it has come
        up: window managers fade windows in."""
        looks = []
        for _ in range(2):
            blue, green, red, _ = self.desktop.root.get_image(x, y, 1, 1, 2, 0xFFFFFFFF).data
            looks.append((red, green, blue))
            time.sleep(0.3)
        return looks[0] if looks[0] == looks[1] and max(looks[0]) - min(looks[0]) > 60 else None

    def _dot(self):
        area = (self.rect.x + 200, self.rect.y + self.rect.height - BOTTOM - 12, 240, 24)
        blobs = self.desktop.find_colour(self.accent, area, smallest=25)
        return blobs[0].centre[0] if blobs else None

    def page(self):
        dot = self._dot()
        return None if dot is None else round((dot - self.first) / DOT)

    def wait_for_page(self, page):
        wait_for(lambda: self.page() == page, 3, f"page {page}")
        time.sleep(0.6)  # It slides in.

    def click(self, from_left):
        self.desktop.click(self.rect.x + from_left, self.rect.y + self.rect.height - BOTTOM)

    def moves(self):
        """Whether the picture does: that of the last page is at rest once the sample is on the shelf."""
        area = self.rect.x + 100, self.rect.y + 20, self.rect.width - 200, 260
        looks = []
        for _ in range(2):
            looks.append(self.desktop.root.get_image(*area, 2, 0xFFFFFFFF).data)
            time.sleep(0.25)
        return looks[0] != looks[1]

    def is_open(self):
        return bool(self.desktop.windows(TOUR))


def test_first_start_leads_by_pointer_to_a_real_drag_and_the_second_shows_nothing(desktop, program):
    program.prefer(onboarded=False)
    program.start()
    assert program.stored("onboarded") is True
    tour = Tour(desktop, program)
    assert (tour.rect.width, tour.rect.height) == (640, 640)
    assert tour.moves()
    tour.click(tour.rect.width - RIGHT)
    tour.wait_for_page(1)
    for page, key in ((2, "Right"), (3, "Return")):
        desktop.keys(key)
        tour.wait_for_page(page)
    tour.click(LEFT)
    tour.wait_for_page(2)
    desktop.click(tour.first + 4 * DOT, tour.rect.y + tour.rect.height - BOTTOM)
    tour.wait_for_page(4)
    desktop.move(tour.rect.x + 40, tour.rect.y + 40)
    assert not program.panel_is_up()

    sample = tour.rect.at(*SAMPLE)
    desktop.begin_drag(*sample)
    wait_for(program.panel_is_up, 3, "the panel to come up for the sample")
    desktop.drop(tour.rect.x + 100, tour.rect.y + 560)
    program.wait_until_hidden()
    assert tour.moves() and program.items() == []

    program.take(*sample, items=1)
    assert program.paths() == [bytes(program.data / "dropped/Drag me.txt")]
    wait_for(lambda: not tour.moves(), 3, "the page to say that it is done")
    program.give(0, *program.panel_rect().at(0.5, 0.8))  # What the shelf itself drags stays refused.
    time.sleep(0.6)
    assert program.panel_is_up() and len(program.items()) == 1

    tour.click(tour.rect.width - RIGHT)
    wait_for(lambda: not tour.is_open(), 3, "the tour to close")
    assert program.panel_is_up()
    program.restart()
    time.sleep(0.5)
    assert not tour.is_open()
