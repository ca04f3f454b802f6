"""Calls the agent on the bus, as a program with GLib does; prints the answer, or the error's name.

  bus-caller.py METHOD [ARGUMENTS]     the arguments as a tuple in GVariant's notation
  bus-caller.py get PROPERTY
  bus-caller.py watch                  says "watching", and "changed" for the next change
  bus-caller.py until-error            gets the card twice a second; says which error ends that
  bus-caller.py flood COUNT            that many calls at once, over and over; says how many got the card
  bus-caller.py time COUNT             one call after the other; the median time of one, in ms
"""

import statistics
import sys
import time

from gi.repository import Gio, GLib

NAME = "org.quenlet.Agent1"
PATH = "/org/quenlet/Agent1"
SIGNATURES = {
    "Donate": "(aa{sv})", "RemoveDonations": "(as)", "RemoveBundle": "(s)", "ListDonations": "()",
    "GetCard": "(a{sv})", "GetVCard": "(a{sv})", "Watch": "()", "Unwatch": "()",
    "ChangeAccount": "(a{sv}a{sv})", "RejectDonation": "(s)", "RejectCluster": "(s)",
    "RemoveAllRejections": "()"}
EVERYTHING = GLib.Variant("(a{sv})", ({},))

bus = Gio.bus_get_sync(Gio.BusType.SESSION)
loop = GLib.MainLoop()


def call(method, arguments, interface=NAME):
    return bus.call_sync(NAME, PATH, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 20000)


def watch():
    def changed(*_):
        print("changed", flush=True)
        loop.quit()
    bus.signal_subscribe(NAME, NAME, "CardChanged", PATH, None, Gio.DBusSignalFlags.NONE, changed)
    call("Watch", None)
    print("watching", flush=True)
    GLib.timeout_add_seconds(20, loop.quit)
    loop.run()


def until_error():
    while True:
        call("GetCard", EVERYTHING)
        print("card", flush=True)
        time.sleep(0.5)


def flood(count):
    answers = []

    def answered(connection, result):
        try:
            connection.call_finish(result)
            answers.append(True)
        except GLib.Error:
            answers.append(False)
        if len(answers) == count:
            print(answers.count(True), flush=True)
            answers.clear()
            send()

    def send():
        for _ in range(count):
            bus.call(NAME, PATH, NAME, "GetCard", EVERYTHING, None, Gio.DBusCallFlags.NONE, 60000, None, answered)
    send()
    loop.run()


def measure(count):
    times = []
    for _ in range(count):
        begun = time.monotonic()
        call("GetCard", EVERYTHING)
        times.append(time.monotonic() - begun)
    print(f"{statistics.median(times) * 1000:.3f}")


try:
    word, *rest = sys.argv[1:]
    if word == "watch":
        watch()
    elif word == "until-error":
        until_error()
    elif word == "flood":
        flood(int(rest[0]))
    elif word == "time":
        measure(int(rest[0]))
    elif word == "get":
        print(call("Get", GLib.Variant("(ss)", (NAME, rest[0])), "org.freedesktop.DBus.Properties").print_(False))
    else:
        text = rest[0] if rest else {"GetCard": "({},)", "GetVCard": "({},)"}.get(word, "()")
        arguments = GLib.Variant.parse(GLib.VariantType(SIGNATURES[word]), text)
        print(call(word, arguments).print_(False))
except GLib.Error as error:
    print(Gio.DBusError.get_remote_error(error) or error.message)
    sys.exit(1)
