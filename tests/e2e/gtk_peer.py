#!/usr/bin/python3
"""A GTK window at one end of drags, which prints each event as a line of JSON: gtk_peer.py source SCRIPT.json, or
target [FORMAT…] with GTK 3, or target4 with GTK 4.

{"actions": ["copy", "move"], "offers": {FORMAT: {"data": base64, "times": n, "answers": n, "then": "hang"|"die", "after": seconds}}}
"times" repeats the data; an answer takes its time "after" the question; after that many "answers" the source hangs or
dies instead of answering. A target reads the named formats of a drop that it offers, else all of the common ones; a
portal's key is redeemed.
"""
import base64
import json
import os
import sys
import time

import gi

kind, *arguments = sys.argv[1:]
for namespace in ("Gdk", "Gtk"):
    gi.require_version(namespace, "4.0" if kind == "target4" else "3.0")
from gi.repository import Gdk, Gio, GLib, GObject, Gtk  # noqa: E402

PORTAL = "application/vnd.portal.filetransfer"


def log(event, **details):
    print(json.dumps({"event": event, **details}), flush=True)


def source(box, script):
    offers = script["offers"]
    answered = dict.fromkeys(offers, 0)

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
    actions = Gdk.DragAction(0)
    for action in script["actions"]:
        actions |= getattr(Gdk.DragAction, action.upper())
    box.drag_source_set(Gdk.ModifierType.BUTTON1_MASK,
                        [Gtk.TargetEntry.new(name, 0, i) for i, name in enumerate(offers)], actions)
    box.connect("drag-begin", lambda *_: log("begin"))
    box.connect("drag-data-get", get)
    box.connect("drag-end", lambda _, context: log("end", action=int(context.get_selected_action())))
    box.connect("drag-failed", lambda *_: log("failed") or True)
    box.connect("drag-data-delete", lambda *_: log("delete"))


def target(box, wanted):
    drop = {}

    def dropped(widget, context, _x, _y, at):
        formats = [target.name() for target in context.list_targets()]
        names = [name for name in wanted if name in formats]
        drop.update(formats=formats, actions=int(context.get_actions()), data={}, open=len(names))
        for name in names:
            widget.drag_get_data(context, Gdk.Atom.intern(name, False), at)
        if not names:
            Gtk.drag_finish(context, False, False, at)
        return True

    def received(_widget, context, _x, _y, selection, _info, at):
        data = selection.get_data()
        if data is not None:
            drop["data"][selection.get_target().name()] = base64.b64encode(bytes(data)).decode()
        drop["open"] -= 1
        if drop["open"] == 0:
            if PORTAL in drop["data"]:
                key = base64.b64decode(drop["data"][PORTAL]).rstrip(b"\0").decode()
                drop["files"] = Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
                    "org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents",
                    "org.freedesktop.portal.FileTransfer", "RetrieveFiles", GLib.Variant("(sa{sv})", (key, {})),
                    None, Gio.DBusCallFlags.NONE, 5000).unpack()[0]
            log("drop", **drop)
            Gtk.drag_finish(context, bool(drop["data"]), False, at)
    box.drag_dest_set(Gtk.DestDefaults(0), None, Gdk.DragAction.COPY)
    box.connect("drag-motion", lambda _, context, _x, _y, at: Gdk.drag_status(context, Gdk.DragAction.COPY, at) or True)
    box.connect("drag-drop", dropped)
    box.connect("drag-data-received", received)


def target4(label):
    def dropped(_target, value, _x, _y):
        log("drop", uris=[file.get_uri() for file in value.get_files()] if isinstance(value, Gdk.FileList) else [])
        return True
    drops = Gtk.DropTarget(actions=Gdk.DragAction.COPY)
    drops.set_gtypes([Gdk.FileList, GObject.TYPE_STRING])
    drops.connect("enter", lambda *_: Gdk.DragAction.COPY)
    drops.connect("drop", dropped)
    label.add_controller(drops)


def activate(application):
    window = Gtk.ApplicationWindow(application=application, title=kind)
    window.set_default_size(300, 200)
    if kind == "target4":
        label = Gtk.Label(label=kind)
        target4(label)
        window.set_child(label)
    else:
        box = Gtk.EventBox()
        window.add(box)
        if kind == "source":
            source(box, json.load(open(arguments[0])))
        else:
            target(box, arguments or ["text/uri-list", "text/plain", "text/plain;charset=utf-8", "text/x-moz-url"])
        box.show_all()
    window.present()
    GLib.idle_add(lambda: log("ready"), priority=GLib.PRIORITY_LOW)  # After it was drawn.


app = Gtk.Application(application_id="test.peer", flags=Gio.ApplicationFlags.NON_UNIQUE)
app.connect("activate", activate)
app.run([])
