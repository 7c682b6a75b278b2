"""Text, links and pictures from browsers and editors."""
import re
from pathlib import Path

import pytest

from desktop import wait_for
from peers import (DROP_COLOUR, IMAGE_COLOUR, LINK_COLOUR, TEXT_COLOUR, Chromium, Editor, FileManager, Firefox, data,
                   png, source, target)


def managed(shelf, item):
    """The file that the shelf wrote for an entry."""
    path = Path(item["url"].removeprefix("file://").replace("%20", " "))
    assert path.parent == shelf.data / "dropped"
    assert re.fullmatch(r".+-\d{9,}-[0-9A-F]{4}\.[a-z]+", path.name), path.name
    return path


def take(desktop, shelf, browser, colour, count):
    desktop.begin_drag(*browser.find(colour))
    shelf.drop()
    return shelf.wait_for_items(count)[-1]


@pytest.mark.parametrize("browser_class", [pytest.param(Firefox, marks=pytest.mark.main), Chromium],
                         ids=["firefox", "chromium"])
def test_link_text_and_picture_come_in_and_the_link_goes_out(desktop, shelf, browser_class):
    browser = browser_class(desktop)
    shelf.summon()
    text = take(desktop, shelf, browser, TEXT_COLOUR, 1)
    assert text["preview"] == browser.text and "link" not in text
    assert managed(shelf, text).read_text() == browser.text
    link = take(desktop, shelf, browser, LINK_COLOUR, 2)
    assert link["link"] == browser.link and link["preview"] == "example.org/a/b"
    assert managed(shelf, link).suffix == ".webloc" and browser.link in managed(shelf, link).read_text()
    picture = take(desktop, shelf, browser, IMAGE_COLOUR, 3)
    if browser_class is Chromium:  # Which offers of a picture only its address, and a promise.
        assert picture["link"].endswith("/picture.png")
    else:
        assert "preview" not in picture and "link" not in picture
        file = managed(shelf, picture)
        assert file.suffix == ".png" and file.read_bytes()[:8] == png(1, 1, IMAGE_COLOUR)[:8]

    shelf.restart()
    assert [item["id"] for item in shelf.items()] == [text["id"], link["id"], picture["id"]]
    shelf.summon()
    shelf.give(1, *browser.find(DROP_COLOUR))
    assert browser.dropped().rstrip("/") == f"got {browser.link}"
    (desktop.home / "to").mkdir()
    manager = FileManager(desktop, "thunar", desktop.home / "to", (610, 400, 400, 380))
    for item, row in ((text, 0), (picture, 2)):
        if "link" in item:
            continue
        shelf.give(row, *manager.empty_place)
        original = managed(shelf, item)
        copy = desktop.home / "to" / original.name
        wait_for(lambda: copy.exists() and copy.read_bytes() == original.read_bytes(), what="the copy")


@pytest.mark.parametrize("name", [pytest.param("mousepad", marks=pytest.mark.main), "featherpad"])
def test_text_comes_in_from_an_editor_and_a_link_goes_out_to_one(desktop, shelf, name):
    text = "  Grüße, 100 % 日本\n" + "und noch eine Zeile\n" * 30
    file = desktop.write(desktop.home / "text.txt", text)
    editor = Editor(desktop, name, file)
    editor.select_all()
    shelf.summon()
    desktop.begin_drag(*editor.text_place)
    shelf.drop()
    [item] = shelf.wait_for_items(1)
    assert item["preview"] == "Grüße, 100 % 日本"
    assert managed(shelf, item).read_text().rstrip("\n") == text.rstrip("\n")
    assert file.read_text() == text, "the editor moved its text"
    if name == "featherpad":  # Takes no browser's links either.
        return

    link = source(desktop, {"text/plain": Firefox.link.encode()}, place=(640, 500, 200, 200))
    desktop.begin_drag(*link.centre)
    shelf.drop()
    assert shelf.wait_for_items(2)[-1]["link"] == Firefox.link
    desktop.click(*editor.text_place)  # Nothing is dropped into what is selected.
    shelf.give(1, *editor.text_place)
    wait_for(lambda: editor.save() or Firefox.link in file.read_text(), what="the link in the text")


LESSER_FORMATS = [
    ({"text/x-moz-url": "https://example.org/x\nA title".encode("utf-16-le")}, "https://example.org/x"),
    ({"text/uri-list": b"https://example.org/x\r\n"}, "https://example.org/x"),
    ({"_NETSCAPE_URL": b"https://example.org/x\nA title"}, "https://example.org/x"),
    ({"UTF8_STRING": "Übung".encode()}, "Übung"),
    ({"STRING": "Übung".encode("latin-1")}, "Übung"),
    ({"text/plain;charset=utf-8": b"\xef\xbb\xbfwith a mark"}, None),
    ({"text/html": b'<meta charset="utf-8"><a href="https://example.org/x">A link</a>'}, None),
    ({"image/png": png(4, 4, (1, 2, 3)), "text/plain": b"other"}, ".png"),
    ({"application/x-color": b"\0" * 8}, ""),
]


@pytest.mark.any_wm
@pytest.mark.parametrize("offers, expected", LESSER_FORMATS, ids=[next(iter(offers)) for offers, _ in LESSER_FORMATS])
def test_lesser_formats(desktop, shelf, offers, expected):
    """None: something is taken, whatever; empty: nothing is, and nothing breaks."""
    lone = source(desktop, offers)
    shelf.summon()
    desktop.begin_drag(*lone.centre)
    shelf.drop()
    if expected == "":
        lone.event("end")
        assert shelf.items() == []
        return
    [item] = shelf.wait_for_items(1)
    if expected:
        assert expected in (item.get("link"), item.get("preview"), managed(shelf, item).suffix)
    receiver = target(desktop)
    shelf.give(0, *receiver.centre)
    drop = receiver.event("drop")
    if item.get("link"):
        assert data(drop, "text/plain").decode() == item["link"]
    else:
        assert data(drop, "text/uri-list").decode().strip() == item["url"]
        if "preview" in item:
            assert data(drop, "text/plain") == managed(shelf, item).read_bytes()
        else:
            assert drop["formats"][1] == "image/png"
