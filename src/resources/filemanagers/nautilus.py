"""Puts "Add to Vantle" into the context menu of files."""
from gi.repository import Gio, GLib, GObject, Nautilus

PROGRAM = "app.vantleapp.Vantle"


class AddToVantle(GObject.GObject, Nautilus.MenuProvider):
    def get_file_items(self, *arguments):
        files = arguments[-1]  # Before version 4 a window stands before them.
        item = Nautilus.MenuItem(name="AddToVantle::add", label="Add to Vantle")
        item.connect("activate", self.add, [file.get_uri() for file in files])
        return [item]

    def add(self, _, uris):
        """Starts the program where it does not run; the file manager does not wait."""
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        bus.call(PROGRAM, "/" + PROGRAM.replace(".", "/"), "org.freedesktop.Application", "Open",
                 GLib.Variant("(asa{sv})", (uris, {})), None, Gio.DBusCallFlags.NONE, -1, None, None)
