#!/usr/bin/python3
"""A GTK 3 window that takes every drop: gtk_target.py [FORMAT…]

Reads the named formats of a drop that it offers, else all of text/uri-list, text/plain and
text/x-moz-url; a portal's key is redeemed. Each drop is printed as one line of JSON.
"""
import base64
import json
import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, Gio, GLib, Gtk  # noqa: E402

PORTAL = "application/vnd.portal.filetransfer"
wanted = sys.argv[1:] or ["text/uri-list", "text/plain", "text/plain;charset=utf-8", "text/x-moz-url"]
drop = {}


def redeem(key):
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    reply = bus.call_sync("org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents",
                          "org.freedesktop.portal.FileTransfer", "RetrieveFiles",
                          GLib.Variant("(sa{sv})", (key, {})), None, Gio.DBusCallFlags.NONE, 5000)
    return reply.unpack()[0]


def dropped(widget, context, _x, _y, at):
    formats = [target.name() for target in context.list_targets()]
    drop.update(formats=formats, actions=int(context.get_actions()), data={}, open=0)
    for name in wanted:
        if name in formats:
            drop["open"] += 1
            widget.drag_get_data(context, Gdk.Atom.intern(name, False), at)
    if not drop["open"]:
        Gtk.drag_finish(context, False, False, at)
    return True


def received(_widget, context, _x, _y, selection, _info, at):
    name = selection.get_target().name()
    data = selection.get_data()
    if data is not None:
        drop["data"][name] = base64.b64encode(bytes(data)).decode()
    drop["open"] -= 1
    if drop["open"] == 0:
        if PORTAL in drop["data"]:
            drop["files"] = redeem(base64.b64decode(drop["data"][PORTAL]).rstrip(b"\0").decode())
        print(json.dumps({"event": "drop", **drop}), flush=True)
        Gtk.drag_finish(context, bool(drop["data"]), False, at)


def motion(_widget, context, _x, _y, at):
    Gdk.drag_status(context, Gdk.DragAction.COPY, at)
    return True


window = Gtk.Window(title="target")
window.set_default_size(300, 200)
window.drag_dest_set(Gtk.DestDefaults(0), None, Gdk.DragAction.COPY)
window.connect("drag-motion", motion)
window.connect("drag-drop", dropped)
window.connect("drag-data-received", received)
window.connect("destroy", Gtk.main_quit)
window.show_all()
GLib.idle_add(lambda: print('{"event": "ready"}', flush=True), priority=GLib.PRIORITY_LOW)  # After it was drawn.
Gtk.main()
