#!/usr/bin/python3
"""Logs events through a provider, as a process does that knows neither its texts nor its library.

  client.py <bus address> <bus name> example <text url>   one event, with a literal and a translated argument
  client.py <bus address> <bus name> odd <place>          one event for each odd value at that place

A place is "Arguments", "UrlArguments", "<list>/element" or one of the five fixed keys. For each event of the
second form the name of its value is printed.
"""

import sys

import dbus
import dbus.bus
import dbus.lowlevel

PUMP = "PumpControl"


def dictionary(url):
    return {"textSource": dbus.Int32(0), "moduleName": PUMP, "ObjectName": PUMP, "InstanceName": "", "url": url}


def variants(values, signature="sv"):
    return dbus.Dictionary(values, signature=signature)


def log(bus, name, description, user=""):
    message = dbus.lowlevel.MethodCallMessage(name, "/Events", "Interface.Events", "logEvent")
    message.append(["0", "1", "EventlistAlarmOn"], "2026-03-14T09:26:53.589+01:00", PUMP, variants(description),
                   ["Error", "Firmware"], user, "{6f1c2a8e-3b0d-4e57-9a41-0d2c7be41f05}",
                   signature="asssa{sv}asss")
    bus.send_message_with_reply_and_block(message, 20.0)


def example(bus, name, url):
    literal = variants({"Placeholder": "%2", "Argument": "97.5"})
    translated = variants(dict(dictionary("PumpControl/PumpName3"), Placeholder="%1"))
    log(bus, name, dict(dictionary(url), Arguments=dbus.Array([literal], signature="v"),
                        UrlArguments=dbus.Array([translated], signature="v")))


def deep(levels):
    value = dbus.String("deep", variant_level=1)
    for _ in range(levels):
        value = dbus.Array([value], signature="v", variant_level=1)
    return value


# Values of every shape that reads like a list or a dictionary, and is none.
ODD = {
    "ai": dbus.Array([1, 2], signature="i"),
    "ad": dbus.Array([1.5], signature="d"),
    "ax": dbus.Array([1], signature="x"),
    "ab": dbus.Array([True], signature="b"),
    "as": dbus.Array(["a", "b"], signature="s"),
    "ay": dbus.ByteArray(b"abc"),
    "ao": dbus.Array(["/a"], signature="o"),
    "aai": dbus.Array([[1], [2]], signature="ai"),
    "(is)": dbus.Struct((1, "a"), signature="is"),
    "(ss)": dbus.Struct(("a", "b"), signature="ss"),
    "(sv)": dbus.Struct(("a", dbus.String("b", variant_level=1)), signature="sv"),
    "((i))": dbus.Struct((dbus.Struct((1,), signature="i"),), signature="(i)"),
    "a(is)": dbus.Array([(1, "a"), (2, "b")], signature="(is)"),
    "a{ss}": dbus.Dictionary({"a": "b"}, signature="ss"),
    "a{is}": dbus.Dictionary({1: "b"}, signature="is"),
    "a{iv}": dbus.Dictionary({1: "b"}, signature="iv"),
    "a{ov}": dbus.Dictionary({dbus.ObjectPath("/a"): "b"}, signature="ov"),
    "a{sas}": dbus.Dictionary({"a": ["b"]}, signature="sas"),
    "aa{sv}": dbus.Array([{"Placeholder": "%1", "Argument": "no"}], signature="a{sv}"),
    "aa{sv} empty": dbus.Array([], signature="a{sv}"),
    "v": dbus.Array([variants({"Placeholder": "%1"})], signature="v", variant_level=2),
    "vv": dbus.String("a", variant_level=2),
    "o": dbus.ObjectPath("/a"),
    "g": dbus.Signature("a{sv}"),
    "s": dbus.String("a"),
    "y": dbus.Byte(1),
    "d": dbus.Double(1.5),
    "t": dbus.UInt64(2 ** 64 - 1),
    "deep": deep(25),
}


def odd(bus, name, place):
    container, _, element = place.partition("/")
    for title, value in ODD.items():
        description = dictionary("PumpControl/OverTemperature")
        if element:
            value = dbus.Array([value, value], signature="v")
        description[container] = value
        try:
            log(bus, name, description, title)
        except dbus.DBusException as error:
            print("refused", title, error, flush=True)
        print(title, flush=True)


def main():
    address, name, what, argument = sys.argv[1:]
    bus = dbus.bus.BusConnection(address)
    {"example": example, "odd": odd}[what](bus, name, argument)


if __name__ == "__main__":
    main()
