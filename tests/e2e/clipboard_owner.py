"""Owns the clipboard with the formats of a JSON file; with "silent" it hears every question and answers none."""
import base64
import json
import sys

from Xlib import X, Xatom, display
from Xlib.protocol import event

script = json.load(open(sys.argv[1]))
offers = {name: base64.b64decode(data) for name, data in script["offers"].items()}
connection = display.Display()
window = connection.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent, event_mask=X.PropertyChangeMask)
clipboard, stamp = connection.intern_atom("CLIPBOARD"), connection.intern_atom("VANTLE_TEST")


def tell(kind, **values):
    print(json.dumps({"event": kind, **values}), flush=True)


def answer(request):
    name = connection.get_atom_name(request.target)
    tell("asked", type=name)
    if script["silent"]:
        return
    given = request.property or request.target
    if name == "TARGETS":
        types = [connection.intern_atom(t) for t in ("TARGETS", *offers)]
        request.requestor.change_property(given, Xatom.ATOM, 32, types)
    elif name in offers:
        request.requestor.change_property(given, request.target, 8, offers[name])
    else:
        given = X.NONE
    request.requestor.send_event(event.SelectionNotify(
        time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
        property=given))
    connection.flush()


window.change_property(stamp, Xatom.STRING, 8, b"")
while True:
    happened = connection.next_event()
    if happened.type == X.PropertyNotify and happened.window == window and happened.atom == stamp:
        window.set_selection_owner(clipboard, happened.time)
        connection.sync()
        tell("ready")
    elif happened.type == X.SelectionRequest:
        answer(happened)
    elif happened.type == X.SelectionClear:
        sys.exit()
