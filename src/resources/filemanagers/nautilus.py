"""Puts "Add to Vantle" into the context menu of files."""
from gi.repository import Gio, GLib, GObject, Nautilus

PROGRAM = "app.vantleapp.Vantle"
LABELS = {
    "de": "Zu Vantle hinzufügen",
    "es": "Añadir a Vantle",
    "fr": "Ajouter à Vantle",
    "it": "Aggiungi a Vantle",
    "ja": "Vantleに追加",
    "ko": "Vantle에 추가",
    "zh_CN": "添加到 Vantle",
    "zh_TW": "加入 Vantle",
}


def label():
    """In the first of the user's languages that there is; "C" ends their list."""
    return next((LABELS[name] for name in GLib.get_language_names() if name in LABELS), "Add to Vantle")


class AddToVantle(GObject.GObject, Nautilus.MenuProvider):
    def get_file_items(self, *arguments):
        files = arguments[-1]  # Before version 4 a window stands before them.
        item = Nautilus.MenuItem(name="AddToVantle::add", label=label())
        item.connect("activate", self.add, [file.get_uri() for file in files])
        return [item]

    def add(self, _, uris):
        """Starts the program where it does not run; the file manager does not wait."""
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        bus.call(PROGRAM, "/" + PROGRAM.replace(".", "/"), "org.freedesktop.Application", "Open",
                 GLib.Variant("(asa{sv})", (uris, {})), None, Gio.DBusCallFlags.NONE, -1, None, None)
