"""Text, links and pictures from browsers and editors."""
import re
from pathlib import Path

import pytest

from desktop import wait_for
from peers import (DROP_COLOUR, IMAGE_COLOUR, LINK_COLOUR, TEXT_COLOUR, Chromium, Editor, FileManager, Firefox, carry,
                   data, picture, target)

main = pytest.mark.main


def managed(shelf, item):
    """The file that the shelf wrote for an entry."""
    path = Path(item["url"].removeprefix("file://").replace("%20", " "))
    assert path.parent == shelf.data / "dropped"
    assert re.fullmatch(r".+-\d{9,}-[0-9A-F]{4}\.[a-z]+", path.name), path.name
    return path


@pytest.mark.parametrize("browser_class", [pytest.param(Firefox, marks=main), Chromium], ids=["firefox", "chromium"])
def test_link_text_and_picture_come_in_and_link_and_files_go_out(desktop, shelf, browser_class):
    browser = browser_class(desktop)
    shelf.summon()
    text, link, image = (shelf.take(*browser.find(colour), count)[-1]
                         for count, colour in enumerate((TEXT_COLOUR, LINK_COLOUR, IMAGE_COLOUR), 1))
    assert text["preview"] == browser.text and "link" not in text
    assert managed(shelf, text).read_text() == browser.text
    assert link["link"] == browser.link and link["preview"] == "example.org/a/b"
    assert managed(shelf, link).suffix == ".webloc" and browser.link in managed(shelf, link).read_text()
    if browser_class is Chromium:  # Which offers of a picture only its address, and a promise.
        assert image["link"].endswith("/picture.png")
    else:
        assert "preview" not in image and "link" not in image
        file = managed(shelf, image)
        assert file.suffix == ".png" and file.read_bytes()[:8] == picture(1, 1, IMAGE_COLOUR)[:8]

    shelf.restart()
    assert [item["id"] for item in shelf.items()] == [item["id"] for item in (text, link, image)]
    shelf.summon()
    shelf.give(1, *browser.find(DROP_COLOUR))
    browser.wait_for_drop(browser.link)
    manager = FileManager(desktop, "thunar", desktop.home / "to", (610, 400, 400, 380))
    for row, item in ((0, text), (2, image)):
        if "link" not in item:
            shelf.give(row, *manager.empty_place)
            original = managed(shelf, item)
            copy = desktop.home / "to" / original.name
            wait_for(lambda: copy.exists() and copy.read_bytes() == original.read_bytes(), what="the copy")
    shelf.add(*desktop.files("a b.txt", "two.txt"))
    desktop.click(*shelf.row(3))
    with desktop.held("Control_L"):
        desktop.click(*shelf.row(4))
    shelf.give(3, *browser.find(DROP_COLOUR))
    browser.wait_for_drop("a b.txt:7:a b.txt|two.txt:7:two.txt")


@pytest.mark.parametrize("name", [pytest.param("mousepad", marks=main), "featherpad"])
def test_text_comes_in_from_an_editor_and_links_and_files_go_out_to_one(desktop, shelf, name):
    text = "  Grüße, 100 % 日本\n" + "und noch eine Zeile\n" * 30
    file = desktop.write(desktop.home / "text.txt", text)
    editor = Editor(desktop, name, file)
    editor.select_all()
    shelf.summon()
    [item] = shelf.take(*editor.text_place, 1)
    assert item["preview"] == "Grüße, 100 % 日本"
    assert managed(shelf, item).read_text().rstrip("\n") == text.rstrip("\n")
    assert file.read_text() == text, "the editor moved its text"
    if name == "mousepad":  # The other takes no browser's links either.
        carry(shelf, {"text/plain": Firefox.link.encode()}, place=(640, 500, 200, 200))
        assert shelf.wait_for_items(2)[-1]["link"] == Firefox.link
        desktop.click(*editor.text_place)  # Nothing is dropped into what is selected.
        shelf.give(1, *editor.text_place)
        wait_for(lambda: editor.save() or Firefox.link in file.read_text(), what="the link in the text")
    row = len(shelf.items())
    shelf.add(*desktop.files("dragged file.txt"))
    shelf.give(row, *editor.text_place)
    wait_for(lambda: desktop.windows("dragged file.txt", editor.process.pid), what="the editor to open it")


@main
@pytest.mark.any_wm
def test_lesser_formats(desktop, shelf):
    """What each is taken as, and what it is offered as."""
    shelf.summon()
    carry(shelf, {"application/x-color": b"\0" * 8})
    assert shelf.items() == [], "nothing is taken, and nothing breaks"
    receiver = target(desktop)
    for number, (offers, expected) in enumerate([
            ({"text/x-moz-url": "https://example.org/x\nA title".encode("utf-16-le")}, "https://example.org/x"),
            ({"_NETSCAPE_URL": b"https://example.org/y\nA title"}, "https://example.org/y"),
            ({"STRING": "Übung".encode("latin-1")}, "Übung"),
            ({"text/html": b'<meta charset="utf-8"><a href="https://example.org/z">A link</a>'}, "https://example.org/z"),
            ({"image/png": picture(4, 4, (1, 2, 3)), "text/plain": b"other"}, ".png")], 1):
        carry(shelf, offers, place=(0, 40, 200, 200))
        item = shelf.wait_for_items(number)[-1]
        assert expected in (item.get("link"), item.get("preview"), managed(shelf, item).suffix), offers
        shelf.give(number - 1, *receiver.centre)
        drop = receiver.event("drop", number=number)
        if "link" in item:
            assert data(drop, "text/plain").decode() == item["link"], offers
        else:
            assert data(drop, "text/uri-list").decode().strip() == item["url"], offers
            if "preview" in item:
                assert data(drop, "text/plain") == managed(shelf, item).read_bytes(), offers
            else:
                assert drop["formats"][1] == "image/png"
