#!/usr/bin/python3
"""A Settings portal: it starts with nothing, and Change sets a value and tells of it."""
from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.portal.Settings">
<method name="ReadAll"><arg type="as" direction="in"/><arg type="a{sa{sv}}" direction="out"/></method>
<method name="Change"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/></method>
<signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal></interface></node>"""
NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
settings = {}


def call(_bus, _sender, _path, interface, method, arguments, invocation):
    if method == "ReadAll":
        wanted = {space: values for space, values in settings.items() if space in arguments.unpack()[0]}
        invocation.return_value(GLib.Variant("(a{sa{sv}})", (wanted,)))
        return
    space, key = (arguments.get_child_value(i).get_string() for i in range(2))
    value = arguments.get_child_value(2).get_variant()
    settings.setdefault(space, {})[key] = value
    bus.emit_signal(None, PATH, interface, "SettingChanged", arguments)
    invocation.return_value(None)


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], call, None, None)
Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, None, None)
GLib.MainLoop().run()
