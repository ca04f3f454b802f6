"""Stands for a desktop's dialog: answers as the file of its first argument says, and notes in that of
its second for which app it was asked, and "closed" when it was told to close a dialog.

  0 KIND…   allowed, with these kinds checked     1   denied     2   closed     -   no answer yet
"""

import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.impl.portal.desktop.doors"
INTERFACE = """<node><interface name="org.freedesktop.impl.portal.Access"><method name="AccessDialog">
  <arg type="o" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
  <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
  <arg type="a{sv}" direction="in"/><arg type="u" direction="out"/><arg type="a{sv}" direction="out"/>
</method></interface><interface name="org.freedesktop.impl.portal.Request"><method name="Close"/>
</interface></node>"""
answers, notes = sys.argv[1:]


def note(line):
    with open(notes, "a", encoding="utf-8") as out:
        out.write(line + "\n")


def asked(connection, sender, path, interface, method, arguments, invocation):
    handle, app, window, title, subtitle, body, options = arguments.unpack()
    offered = [choice[0] for choice in options.get("choices", [])]
    note(f"{app} window={window} {title} | {subtitle} | {','.join(offered)}")
    closed = []

    def close(connection, closer, *rest):
        # As portals' programs do: only who asked may close it.
        closed.append(True)
        note("closed" if closer == sender else "closed by another")
        rest[-1].return_value(None)
    request = connection.register_object(handle, node.interfaces[1], close)

    def answer():
        if closed:
            connection.unregister_object(request)
            return False
        with open(answers, encoding="utf-8") as file:
            response, *kinds = file.read().split()
        if response == "-":
            return True
        results = {"choices": GLib.Variant("a(ss)", [(kind, "true" if kind in kinds else "false") for kind in offered])}
        invocation.return_value(GLib.Variant("(ua{sv})", (int(response), results if offered else {})))
        connection.unregister_object(request)
        return False
    if answer():
        GLib.timeout_add(50, answer)


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
node = Gio.DBusNodeInfo.new_for_xml(INTERFACE)
bus.register_object("/org/freedesktop/portal/desktop", node.interfaces[0], asked)
Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE)
GLib.MainLoop().run()
