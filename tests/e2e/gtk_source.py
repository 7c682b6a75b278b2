#!/usr/bin/python3
"""A GTK 3 window that can be dragged and offers what its script says: gtk_source.py SCRIPT.json

{"actions": ["copy", "move"], "offers": {FORMAT: {"data": base64, "times": n, "answers": n, "then": "hang"|"die", "after": seconds}}}
"times" repeats the data; an answer takes its time "after" the question; after that many "answers" the source hangs or dies instead of answering.
Each event is printed as one line of JSON.
"""
import base64
import json
import os
import sys
import time

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

script = json.load(open(sys.argv[1]))
offers = script["offers"]
answered = dict.fromkeys(offers, 0)


def log(event, **details):
    print(json.dumps({"event": event, **details}), flush=True)


def get(_widget, _context, selection, _info, _time):
    name = selection.get_target().name()
    offer = offers[name]
    if answered[name] >= offer.get("answers", 1 << 30):
        log(offer["then"], format=name)
        if offer["then"] == "die":
            os._exit(3)
        time.sleep(60)
    time.sleep(offer.get("after", 0))
    answered[name] += 1
    log("answer", format=name)
    selection.set(selection.get_target(), 8, base64.b64decode(offer["data"]) * offer.get("times", 1))


def end(_widget, context):
    log("end", action=int(context.get_selected_action()))


actions = Gdk.DragAction(0)
for action in script.get("actions", ["copy", "move"]):
    actions |= getattr(Gdk.DragAction, action.upper())
window = Gtk.Window(title="source")
window.set_default_size(200, 200)
box = Gtk.EventBox()
box.add(Gtk.Label(label="\n".join(offers)))
window.add(box)
box.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [Gtk.TargetEntry.new(name, 0, i) for i, name in enumerate(offers)],
                    actions)
box.connect("drag-begin", lambda *_: log("begin"))
box.connect("drag-data-get", get)
box.connect("drag-end", end)
box.connect("drag-failed", lambda *_: log("failed") or True)
box.connect("drag-data-delete", lambda *_: log("delete"))
window.connect("destroy", Gtk.main_quit)
window.show_all()
GLib.idle_add(lambda: log("ready"), priority=GLib.PRIORITY_LOW)  # After it was drawn.
Gtk.main()
