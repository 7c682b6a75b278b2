"""The language: that of the desktop, or the one that is chosen while windows show."""
import time

import pytest

from desktop import wait_for
from test_accessibility import reader  # noqa: F401
from test_settings import act, open_settings, stored

main = pytest.mark.main
SETTINGS = {"en": "Vantle Settings", "de": "Vantle-Einstellungen", "ja": "Vantle の設定"}
TOUR = {"en": "Welcome to Vantle", "de": "Willkommen bei Vantle", "ja": "Vantle へようこそ"}


@pytest.mark.parametrize("language, locale, title", [
    ("", "de_AT.UTF-8", SETTINGS["de"]),
    ("pt", "pt_PT.UTF-8", SETTINGS["en"]),
    ("pt:ja", "pt_PT.UTF-8", SETTINGS["ja"]),
    ("zh_HK:de", "de_DE.UTF-8", "Vantle 設定"),
    ("zh_TW", "zh_TW.UTF-8", "Vantle 設定"),
    ("de", "C.UTF-8", SETTINGS["en"]),
])
def test_the_desktops_list_finds_the_closest_language(desktop, program, language, locale, title):
    program.start(LANGUAGE=language, LC_ALL=locale)
    act(program, "settings")
    desktop.window(title, program.process.pid)


@main
def test_a_language_that_is_picked_reaches_open_windows_and_the_next_start(desktop, program, reader):  # noqa: F811
    program.prefer(onboarded=False)
    program.start(LANGUAGE="", LC_ALL="en_US.UTF-8")
    tour = desktop.window(TOUR["en"], program.process.pid)
    settings = open_settings(desktop, program)
    for key, code, shown in (("d", "de", "de"), ("Home", "system", "en"), ("d", "de", "de")):
        desktop.keys(key)
        wait_for(lambda: stored(program).get("language") == code, 5, f"the language {code}")
        wait_for(lambda: desktop.title(settings) == SETTINGS[shown], 5, "the settings' title")
        wait_for(lambda: desktop.title(tour) == TOUR[shown], 5, "the tour's title")
        time.sleep(0.5)  # Letters that come sooner are searched for together.
    reader.find(SETTINGS["de"], "check box", "Beim Ziehen in eine Bildschirmecke")
    program.summon()
    for button in ("Ablage leeren", "Ablage ausblenden"):
        reader.find("Vantle", "push button", button)
    desktop.keys("Tab")
    desktop.keys("space")
    wait_for(lambda: desktop.keys("Down") or reader.has_heard("object:state-changed:focused", "menu item",
                                                               "Ablage umbenennen\xa0…", 1), 5, "the menu in German")
    desktop.keys("Escape")
    program.kill()
    program.start(LANGUAGE="", LC_ALL="en_US.UTF-8")
    act(program, "settings")
    desktop.window(SETTINGS["de"], program.process.pid)
