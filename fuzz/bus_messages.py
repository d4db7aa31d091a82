"""Values of random D-Bus type and content, and well-formed messages of them.

Each message is made of its seed and its index alone, so that any of them can be made again.
"""

import os
import random

import dbus
import dbus.lowlevel

BUS_PREFIX = os.environ.get("EVENTLISTHANDLER_BUS_PREFIX", "org.eventlist")
TEXTS = ("", " ", "/", "//", "..", "../../etc/passwd", "%", "%%", "%1", "%2", "%3", "%10", "%1%2%1", "%L1", "lang_en",
         "lang_de", "0", "1", "-1", "99999999999", "abc", "PumpControl", "pumpcontrol", "PumpControl/OverTemperature",
         "\x01\x02\x1f", "\x7f\x80\x9f", "\n\r\t", "\"\\'", "{}", "[1,2", "\u202e\u2028\ufeff", "\ufeff", "\ufffd",
         "\U0001f600", "\ufffe", "\uffff", "\U0010fffd", "e\u0301", "Pumpe ü €", "null", "%s%n%x", "<b>&amp;")
ENDS_OF_RANGES = {"y": (0, 255), "n": (-2 ** 15, 2 ** 15 - 1), "q": (0, 2 ** 16 - 1), "i": (-2 ** 31, 2 ** 31 - 1),
                  "u": (0, 2 ** 32 - 1), "x": (-2 ** 63, 2 ** 63 - 1), "t": (0, 2 ** 64 - 1)}
NUMBERS = {"y": dbus.Byte, "n": dbus.Int16, "q": dbus.UInt16, "i": dbus.Int32, "u": dbus.UInt32, "x": dbus.Int64,
           "t": dbus.UInt64}
BASIC = "ybnqiuxtdsogsssii"
DOUBLES = (0.0, -0.0, 1.5, 1e308, -1e-308, float("inf"), float("-inf"), float("nan"))


class RepeatedKey(str):
    """Text that differs from every other key of a dictionary, and is equal to others on the bus."""

    __hash__ = object.__hash__

    def __eq__(self, other):
        return self is other


def types_of(signature):
    """The single complete types of a signature."""
    types = []
    while signature:
        end = length_of_type(signature)
        types.append(signature[:end])
        signature = signature[end:]
    return types


def length_of_type(signature):
    if signature[0] == "a":
        return 1 + length_of_type(signature[1:])
    if signature[0] not in "({":
        return 1
    depth = 0
    for position, code in enumerate(signature):
        depth += code in "({"
        depth -= code in ")}"
        if depth == 0:
            return position + 1
    raise ValueError(signature)


class ValueMaker:
    """Makes the content of one message; who derives from it tells what means something to the program under test."""

    texts = TEXTS
    keys = TEXTS
    paths = ("/",)
    interfaces = (None,)
    members = ("x",)
    signatures = ("",)
    destination = None

    def __init__(self, seed, index):
        self.random = random.Random(seed << 40 | index)
        self.chance = self.random.random
        self.choice = self.random.choice

    # Values of any type

    def text(self):
        kind = self.chance()
        if kind < 0.8:
            return self.choice(self.texts)
        if kind < 0.99:
            return "".join(self.choice(self.texts) for _ in range(self.random.randrange(1, 6)))
        return self.choice(self.texts) * self.random.randrange(1, 2000)

    def basic(self, code, level):
        if code in NUMBERS:
            number = self.choice((0, 1, 2, 7, *ENDS_OF_RANGES[code]))
            return NUMBERS[code](number, variant_level=level)
        if code == "b":
            return dbus.Boolean(self.chance() < 0.5, variant_level=level)
        if code == "d":
            return dbus.Double(self.choice(DOUBLES), variant_level=level)
        if code == "o":
            return dbus.ObjectPath(self.choice(self.paths), variant_level=level)
        if code == "g":
            return dbus.Signature(self.choice(self.signatures), variant_level=level)
        return dbus.String(self.text(), variant_level=level)

    def type(self, depth):
        kind = self.chance()
        if depth <= 0 or kind < 0.5:
            return self.choice(BASIC)
        if kind < 0.65:
            return "v"
        if kind < 0.8:
            return "a" + self.type(depth - 1)
        if kind < 0.9:
            return "a{" + self.choice(BASIC) + self.type(depth - 1) + "}"
        return "(" + "".join(self.type(depth - 1) for _ in range(self.random.randrange(1, 4))) + ")"

    def value(self, type_, depth, level=0):
        """A value of one single complete type. Depth bounds what variants add."""
        if type_ == "v":
            return self.variant(depth - 1, level + 1)
        if type_[0] == "(":
            return dbus.Struct([self.value(member, depth) for member in types_of(type_[1:-1])],
                               signature=type_[1:-1], variant_level=level)
        if type_.startswith("a{"):
            entries = {}
            key_type, content_type = types_of(type_[2:-1])
            for _ in range(self.random.randrange(4)):
                key = RepeatedKey(self.text()) if key_type == "s" else self.value(key_type, 0)
                entries[key] = self.value(content_type, depth)
            return dbus.Dictionary(entries, signature=type_[2:-1], variant_level=level)
        if type_[0] == "a":
            count = self.random.randrange(4)
            return dbus.Array([self.value(type_[1:], depth) for _ in range(count)],
                              signature=type_[1:], variant_level=level)
        return self.basic(type_, level)

    def variant(self, depth=2, level=1):
        return self.value(self.type(depth), depth, level)

    def deep(self):
        """A value that is nested as deep as the bus lets through."""
        levels = self.random.randrange(8, 29)
        kind = self.chance()
        if kind < 0.4:
            value = dbus.Array([dbus.String(self.text(), variant_level=1)], signature="v", variant_level=1)
            for _ in range(levels - 1):
                value = dbus.Array([value], signature="v", variant_level=1)
            return value
        if kind < 0.7:
            value = dbus.Int32(1, variant_level=1)
            for _ in range(levels // 2):
                value = dbus.Dictionary({self.choice(self.keys): value}, signature="sv", variant_level=1)
            return value
        if kind < 0.85:
            return dbus.Array([], signature="a" * (levels - 1) + "s", variant_level=1)
        value = dbus.Byte(1)
        type_ = "y"
        for _ in range(levels - 1):
            value = dbus.Struct([value], signature=type_)
            type_ = "(" + type_ + ")"
        return dbus.Struct([value], signature=type_, variant_level=1)

    def some_texts(self, most=3):
        return dbus.Array([self.text() for _ in range(self.random.randrange(most + 1))], signature="s")

    # Messages

    def anything(self):
        path, interface, member = self.choice(self.paths), self.choice(self.interfaces), self.choice(self.members)
        if self.chance() < 0.15:
            message = dbus.lowlevel.SignalMessage(path, interface or self.interfaces[0], member)
            message.set_destination(self.destination)
        else:
            message = dbus.lowlevel.MethodCallMessage(self.destination, path, interface, member)
        if self.chance() < 0.4:
            types = types_of(self.choice(self.signatures))
        else:
            types = [self.type(4) for _ in range(self.random.randrange(8))]
        if types:
            message.append(*[self.value(type_, 4) for type_ in types], signature="".join(types))
        return message
