#!/usr/bin/python3
"""A file transfer portal: portal.py [FILE…]; the files are what every key stands for until others are added."""
import json
import os
import sys

from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.portal.FileTransfer">
<method name="StartTransfer"><arg type="a{sv}" direction="in"/><arg type="s" direction="out"/></method>
<method name="AddFiles"><arg type="s" direction="in"/><arg type="ah" direction="in"/>
<arg type="a{sv}" direction="in"/></method>
<method name="RetrieveFiles"><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
<arg type="as" direction="out"/></method>
<method name="StopTransfer"><arg type="s" direction="in"/></method>
<signal name="TransferClosed"><arg type="s"/></signal></interface></node>"""
transfers = {}


def call(_bus, _sender, _path, _interface, method, arguments, invocation):
    print(json.dumps({"event": method}), flush=True)
    if method == "StartTransfer":
        key = f"key-{len(transfers) + 1}"
        transfers[key] = []
        invocation.return_value(GLib.Variant("(s)", (key,)))
    elif method == "AddFiles":
        descriptors = invocation.get_message().get_unix_fd_list()
        for index in arguments.get_child_value(1):
            descriptor = descriptors.get(index.get_handle() if hasattr(index, "get_handle") else index)
            transfers[arguments.get_child_value(0).get_string()].append(os.readlink(f"/proc/self/fd/{descriptor}"))
            os.close(descriptor)
        invocation.return_value(None)
    elif method == "RetrieveFiles":
        files = transfers.get(arguments.get_child_value(0).get_string()) or sys.argv[1:]
        invocation.return_value(GLib.Variant("(as)", (files,)))
    else:
        invocation.return_value(None)


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/org/freedesktop/portal/documents", Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0],
                    call, None, None)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Documents", Gio.BusNameOwnerFlags.NONE, None, None)
GLib.MainLoop().run()
