#!/usr/bin/python3
"""What a screen reader does, on the accessibility bus of its environment: commands come as lines of JSON, answers
and events go as lines of JSON. A place is the name of the window, then names or roles on the way down."""
import json
import sys
import threading

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

APPLICATION = "Vantle"
EVENTS = ["object:state-changed:showing", "object:state-changed:selected", "object:state-changed:focused",
          "object:children-changed", "object:property-change:accessible-name"]


def send(**message):
    print(json.dumps(message), flush=True)


def children(node):
    return [c for c in (node.get_child_at_index(i) for i in range(node.get_child_count())) if c]


def described(node):
    states = [s.value_nick for s in node.get_state_set().get_states()]
    action = node.get_action_iface()
    box = node.get_component_iface() and node.get_extents(Atspi.CoordType.SCREEN)
    label = [r.get_target(0).get_name() for r in node.get_relation_set()
             if r.get_relation_type() == Atspi.RelationType.LABELLED_BY]
    return {"name": node.get_name(), "label": label, "role": node.get_role_name(), "description": node.get_description(),
            "states": states, "box": box and [box.x, box.y, box.width, box.height],
            "actions": [action.get_action_name(i) for i in range(action.get_n_actions())] if action else []}


def walk(node):
    yield node
    for child in children(node):
        yield from walk(child)


def windows(title):
    return [w for a in children(Atspi.get_desktop(0)) if a.get_name() == APPLICATION
            for w in children(a) if w.get_name() == title]


def find(title, role, name):
    return next((n for w in windows(title) for n in walk(w) if (n.get_role_name(), n.get_name()) == (role, name)), None)


def run(command, title, role=None, name=None, action=None):
    Atspi.get_desktop(0).clear_cache()
    if command == "all":
        return [described(n) for w in windows(title) for n in walk(w)]
    node = find(title, role, name)
    if not node:
        return None
    found = described(node)
    if command == "do":  # It may be the node's end.
        node.get_action_iface().do_action(found["actions"].index(action))
    return found


def heard(event):
    try:
        send(event=event.type, role=event.source.get_role_name(), name=event.source.get_name(), detail=event.detail1)
    except GLib.Error:
        send(event=event.type, role="", name="", detail=event.detail1)


def commands():
    for line in sys.stdin:
        GLib.idle_add(lambda line=line: send(answer=run(*json.loads(line))) and False)
    GLib.idle_add(Atspi.event_quit)


Atspi.init()
listener = Atspi.EventListener.new(heard)
for name in EVENTS:
    listener.register(name)
send(answer="ready")
threading.Thread(target=commands, daemon=True).start()
Atspi.event_main()
