"""Shows who the owner is, over the message bus: for programs and sandboxed apps alike."""

import sys

from gi.repository import Gio, GLib

bus = Gio.bus_get_sync(Gio.BusType.SESSION)
try:
    # Without a time limit: the owner may be asked first.
    (card,) = bus.call_sync(
        "org.quenlet.Agent1", "/org/quenlet/Agent1", "org.quenlet.Agent1", "GetCard",
        GLib.Variant("(a{sv})", ({"kinds": GLib.Variant("as", ["name", "emailAddress"])},)),
        GLib.VariantType("(a{sv})"), Gio.DBusCallFlags.NONE, GLib.MAXINT, None).unpack()
except GLib.Error as error:
    sys.exit(f"no card: {error.message}")
print(card["name"].get("givenName", "nobody"), *(entry["value"] for entry in card["emailAddresses"]))
