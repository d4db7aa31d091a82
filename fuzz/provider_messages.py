"""Well-formed D-Bus messages of random signature and content for an events provider.

Each message is made of its seed and its index alone, so that any of them can be made again.
"""

import os
import random

import dbus
import dbus.lowlevel

BUS_PREFIX = os.environ.get("EVENTLISTHANDLER_BUS_PREFIX", "org.eventlist")
PROVIDER = BUS_PREFIX + ".PumpControl"
PATH = "/Events"
INTERFACE = "Interface.Events"
SLOT = "logEvent"
SLOT_SIGNATURE = "asssa{sv}asss"
# A configuration folder and instance that the harness puts into the provider's reach.
CONFIGURATION_FOLDER = "FuzzedPumps"
CONFIGURATION_INSTANCE = "pump3"

KEYS = ("textSource", "moduleName", "ObjectName", "InstanceName", "url")
ALL_KEYS = KEYS + ("Arguments", "UrlArguments", "Placeholder", "Argument")
URLS = ("PumpControl/OverTemperature", "PumpControl/Started", "PumpControl/Pump3", "MachineWatch/Readings")
LEAVES = ("Messages/Blocked", "Name", "Messages", "Messages/Blocked/value", "Name/value/lang_de")
TEXTS = ("", " ", "/", "//", "..", "../../etc/passwd", "%", "%%", "%1", "%2", "%3", "%10", "%1%2%1", "%L1", "lang_en",
         "lang_de", "0", "1", "-1", "99999999999", "abc", "PumpControl", "pumpcontrol", "PumpControl/OverTemperature",
         "\x01\x02\x1f", "\x7f\x80\x9f", "\n\r\t", "\"\\'", "{}", "[1,2", "\u202e\u2028\ufeff", "\ufffd", "\U0001f600",
         "\U0010fffd", "e\u0301", "Pumpe ü €", "null", "%s%n%x", "<b>&amp;", *ALL_KEYS)
ENDS_OF_RANGES = {"y": (0, 255), "n": (-2 ** 15, 2 ** 15 - 1), "q": (0, 2 ** 16 - 1), "i": (-2 ** 31, 2 ** 31 - 1),
                  "u": (0, 2 ** 32 - 1), "x": (-2 ** 63, 2 ** 63 - 1), "t": (0, 2 ** 64 - 1)}
NUMBERS = {"y": dbus.Byte, "n": dbus.Int16, "q": dbus.UInt16, "i": dbus.Int32, "u": dbus.UInt32, "x": dbus.Int64,
           "t": dbus.UInt64}
BASIC = "ybnqiuxtdsogsssii"
DOUBLES = (0.0, -0.0, 1.5, 1e308, -1e-308, float("inf"), float("-inf"), float("nan"))
PATHS = (PATH, PATH, PATH, "/", "/Events/x", "/org/freedesktop/DBus", "/EventlistWrite", "/a/b_1/C")
INTERFACES = (INTERFACE, INTERFACE, INTERFACE, None, "org.freedesktop.DBus.Properties",
              "org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Peer", "org.freedesktop.DBus",
              "Interface.EventlistWrite", "local.PumpEvents", "a.b")
MEMBERS = (SLOT, SLOT, SLOT, "eventLogged", "logEventWithDescriptionInDBusFormat", "deleteLater", "destroyed",
           "objectNameChanged", "qt_metacall", "Get", "GetAll", "Set", "Introspect", "Ping", "GetMachineId",
           "NameOwnerChanged", "NameLost", "NameAcquired", "initObject", "x", "_0")
SIGNATURES = ("", "a{sv}", "av", SLOT_SIGNATURE, "s" + SLOT_SIGNATURE, "asssa{sv}ass", "asssa{ss}asss", "asssavasss",
              "sss", "ssv", "ss", "s", "assssassss")


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


class MessageMaker:
    """Makes the content of one message."""

    def __init__(self, seed, index):
        self.random = random.Random(seed << 40 | index)
        self.chance = self.random.random
        self.choice = self.random.choice

    # Values of any type

    def text(self):
        kind = self.chance()
        if kind < 0.8:
            return self.choice(TEXTS)
        if kind < 0.99:
            return "".join(self.choice(TEXTS) for _ in range(self.random.randrange(1, 6)))
        return self.choice(TEXTS) * self.random.randrange(1, 2000)

    def basic(self, code, level):
        if code in NUMBERS:
            number = self.choice((0, 1, 2, 7, *ENDS_OF_RANGES[code]))
            return NUMBERS[code](number, variant_level=level)
        if code == "b":
            return dbus.Boolean(self.chance() < 0.5, variant_level=level)
        if code == "d":
            return dbus.Double(self.choice(DOUBLES), variant_level=level)
        if code == "o":
            return dbus.ObjectPath(self.choice(PATHS), variant_level=level)
        if code == "g":
            return dbus.Signature(self.choice(SIGNATURES), variant_level=level)
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
                value = dbus.Dictionary({self.choice(ALL_KEYS): value}, signature="sv", variant_level=1)
            return value
        if kind < 0.85:
            return dbus.Array([], signature="a" * (levels - 1) + "s", variant_level=1)
        value = dbus.Byte(1)
        type_ = "y"
        for _ in range(levels - 1):
            value = dbus.Struct([value], signature=type_)
            type_ = "(" + type_ + ")"
        return dbus.Struct([value], signature=type_, variant_level=1)

    # Dictionaries of an event

    def dictionary(self, entries, level=0):
        return dbus.Dictionary(entries, signature="sv", variant_level=level)

    def spoilt_value(self):
        kind = self.chance()
        if kind < 0.08:
            return self.variant()
        if kind < 0.1:
            return self.deep()
        if kind < 0.2:
            return dbus.String(self.text(), variant_level=1)
        return None

    def text_of(self):
        """The five fixed keys, for the most part with values that lead to a text."""
        is_configured = self.chance() < 0.15
        good = {"textSource": dbus.Int32(int(is_configured), variant_level=1), "moduleName": "PumpControl",
                "ObjectName": CONFIGURATION_FOLDER if is_configured else "PumpControl",
                "InstanceName": CONFIGURATION_INSTANCE if is_configured else "",
                "url": self.choice(LEAVES if is_configured else URLS)}
        entries = {}
        spoilt = self.chance() < 0.5
        for key, value in good.items():
            if spoilt and self.chance() < 0.1:
                continue
            replacement = self.spoilt_value() if spoilt else None
            entries[key] = value if replacement is None else replacement
        return entries

    def entry(self, is_url):
        kind = self.chance()
        if kind < 0.1:
            return self.variant()
        if kind < 0.15:
            return self.value("a{sv}", 2, 1)
        if kind < 0.17:
            return self.deep()
        entries = self.text_of() if is_url else {}
        if self.chance() < 0.9:
            entries["Placeholder"] = self.choice(("%1", "%2", "%3", "%4", "%1", "%2", self.text()))
        if not is_url and self.chance() < 0.9:
            entries["Argument"] = self.variant() if self.chance() < 0.1 else self.text()
        self.repeat_keys(entries)
        return self.dictionary(entries, 1)

    def repeat_keys(self, entries):
        while self.chance() < 0.15:
            entries[RepeatedKey(self.choice(ALL_KEYS + ("", "\x01")))] = self.variant(1)

    def multiplying(self):
        """Arguments that each stand several times in the one before them."""
        # Six levels and more reach the limit of the texts of one event, which takes the provider a second.
        levels = self.random.randrange(6, 10) if self.chance() < 0.1 else self.random.randrange(1, 5)
        # Of plain characters: the same texts in longer ones outgrow a message of the system bus, which cuts the
        # sender's connection. That is healed, but what is on its way then is lost.
        names = ["%1"] + ["%1" + "x" * level for level in range(1, levels + 1)]
        entries = []
        for name, following in zip(names, names[1:] + ["y"]):
            argument = following * self.random.randrange(8, 11)
            entries.append(self.dictionary({"Placeholder": name, "Argument": argument}, 1))
        return dbus.Array(entries, signature="v", variant_level=1)

    def arguments(self, is_url):
        kind = self.chance()
        if kind < 0.55:
            return dbus.Array([self.entry(is_url) for _ in range(self.random.randrange(4))],
                              signature="v", variant_level=1)
        if kind < 0.8:
            type_ = self.choice(("ai", "ad", "ay", "as", "(is)", "(ss)", "a{ss}", "a{is}", "a{iv}", "a{sv}", "aa{sv}",
                                 "a(is)", "a(sv)", "aav", "aai", "v", "s", "i", "b", "o", "g", "(av)", "a{sav}"))
            return self.value(type_, 2, 1)
        if kind < 0.9:
            return self.variant(3)
        if kind < 0.95:
            return self.deep()
        if kind < 0.955:
            count = self.random.randrange(100, 400)
            return dbus.Array([self.entry(is_url) for _ in range(count)], signature="v", variant_level=1)
        if kind < 0.96 and not is_url:
            return self.multiplying()
        return dbus.Array([], signature="v", variant_level=1)

    def description(self):
        kind = self.chance()
        if kind < 0.05:
            return self.value("a{sv}", 3)
        entries = self.text_of()
        if self.chance() < 0.7:
            entries["Arguments"] = self.arguments(is_url=False)
        if self.chance() < 0.5:
            entries["UrlArguments"] = self.arguments(is_url=True)
        self.repeat_keys(entries)
        if kind < 0.06:
            for number in range(self.random.randrange(50, 500)):
                entries["key" + str(number)] = self.variant(0)
        return self.dictionary(entries)

    # Messages

    def texts(self):
        return dbus.Array([self.text() for _ in range(self.random.randrange(4))], signature="s")

    def event(self):
        message = dbus.lowlevel.MethodCallMessage(PROVIDER, PATH, INTERFACE, SLOT)
        attributes = dbus.Array(["3", "0", "EventlistEvent"], signature="s") if self.chance() < 0.5 else self.texts()
        message.append(attributes, self.text(), self.text(), self.description(), self.texts(), self.text(), self.text(),
                       signature=SLOT_SIGNATURE)
        return message

    def anything(self):
        path, interface, member = self.choice(PATHS), self.choice(INTERFACES), self.choice(MEMBERS)
        if self.chance() < 0.15:
            message = dbus.lowlevel.SignalMessage(path, interface or INTERFACE, member)
            message.set_destination(PROVIDER)
        else:
            message = dbus.lowlevel.MethodCallMessage(PROVIDER, path, interface, member)
        if self.chance() < 0.4:
            types = types_of(self.choice(SIGNATURES))
        else:
            types = [self.type(4) for _ in range(self.random.randrange(8))]
        if types:
            message.append(*[self.value(type_, 4) for type_ in types], signature="".join(types))
        return message

    def message(self):
        message = self.event() if self.chance() < 0.5 else self.anything()
        if message.get_type() == 1 and self.chance() < 0.9:
            message.set_no_reply(True)
        return message


def makes_an_event(message):
    """Whether a provider answers this message with exactly one event."""
    return (message.get_type() == 1 and message.get_path() == PATH and message.get_member() == SLOT
            and message.get_interface() in (INTERFACE, None) and message.get_signature() == SLOT_SIGNATURE)
