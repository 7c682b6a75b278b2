#!/usr/bin/python3
"""A GTK 4 window that takes files and texts; each drop is printed as one line of JSON."""
import json

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Gdk", "4.0")
from gi.repository import Gdk, GLib, GObject, Gtk  # noqa: E402


def dropped(target, value, _x, _y):
    files = [file.get_uri() for file in value.get_files()] if isinstance(value, Gdk.FileList) else []
    text = value if isinstance(value, str) else None
    formats = target.get_current_drop().get_formats().get_mime_types()
    print(json.dumps({"event": "drop", "uris": files, "text": text, "formats": formats}), flush=True)
    return True


def activate(application):
    window = Gtk.ApplicationWindow(application=application, title="target4")
    window.set_default_size(300, 200)
    label = Gtk.Label(label="drop", hexpand=True, vexpand=True)
    target = Gtk.DropTarget(actions=Gdk.DragAction.COPY)
    target.set_gtypes([Gdk.FileList, GObject.TYPE_STRING])
    target.connect("enter", lambda *_: Gdk.DragAction.COPY)
    target.connect("drop", dropped)
    label.add_controller(target)
    window.set_child(label)
    window.present()
    GLib.idle_add(lambda: print('{"event": "ready"}', flush=True), priority=GLib.PRIORITY_LOW)  # After it was drawn.


app = Gtk.Application(application_id="test.target4")
app.connect("activate", activate)
app.run([])
