#!/usr/bin/python3
"""A central service that is none: it owns the name and answers queries as its first argument says.

    refuse    refuses the first two queries, as a service does that wants a pause
    columns   answers with columns that nobody knows, in another order
    values    answers with no dictionary
    shape     answers with rows that are no lists
    short     answers with rows that are shorter than the header
    slow      says "asked" and answers all queries when a line comes in
"""

import sys

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

HEADER = ["Description", "Colour", "EventlistId", "ModuleName", "DateTimeLocal", "EventType", "State"]
ROW = ["pump", "red", "7", "Plant", "2026-03-14T09:26:53.589", "0", "1"]


class FakeService:
    def __init__(self, bus):
        self.bus = bus
        self.queries = 0
        self.answers = []
        bus.add_message_filter(self.handle)

    def handle(self, _, message):
        if message.get_member() != "getPartOfEventlistById":
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        self.queries += 1
        reply = dbus.lowlevel.MethodReturnMessage(message)
        if BEHAVIOUR == "refuse" and self.queries <= 2:
            reply = dbus.lowlevel.ErrorMessage(message, "org.freedesktop.DBus.Error.LimitsExceeded", "try again later")
        elif BEHAVIOUR == "values":
            reply.append("nothing", signature="s")
        else:
            rows = dbus.Array([ROW[:3] if BEHAVIOUR == "short" else ROW], signature="as")
            data = dbus.Array(ROW, signature="s") if BEHAVIOUR == "shape" else rows
            reply.append({"header": dbus.Array(HEADER, signature="s"), "data": data}, signature="a{sv}")
        if BEHAVIOUR == "slow":
            self.answers.append(reply)
            print("asked", flush=True)
        else:
            self.bus.send_message(reply)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def answer(self, *_):
        sys.stdin.readline()
        while self.answers:
            self.bus.send_message(self.answers.pop())
        return True


BEHAVIOUR = sys.argv[1]
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
system_bus = dbus.SystemBus()
service = FakeService(system_bus)
name = dbus.service.BusName("org.eventlist.EventlistHandler", system_bus)
GLib.io_add_watch(sys.stdin, GLib.IO_IN, service.answer)
print("ready", flush=True)
GLib.MainLoop().run()
