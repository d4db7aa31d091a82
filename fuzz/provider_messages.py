"""Well-formed D-Bus messages of random signature and content for an events provider."""

import dbus
import dbus.lowlevel

from bus_messages import BUS_PREFIX, TEXTS, RepeatedKey, ValueMaker

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
PATHS = (PATH, PATH, PATH, "/", "/Events/x", "/org/freedesktop/DBus", "/EventlistWrite", "/a/b_1/C")
INTERFACES = (INTERFACE, INTERFACE, INTERFACE, None, "org.freedesktop.DBus.Properties",
              "org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Peer", "org.freedesktop.DBus",
              "Interface.EventlistWrite", "local.PumpEvents", "a.b")
MEMBERS = (SLOT, SLOT, SLOT, "eventLogged", "logEventWithDescriptionInDBusFormat", "deleteLater", "destroyed",
           "objectNameChanged", "qt_metacall", "Get", "GetAll", "Set", "Introspect", "Ping", "GetMachineId",
           "NameOwnerChanged", "NameLost", "NameAcquired", "initObject", "x", "_0")
SIGNATURES = ("", "a{sv}", "av", SLOT_SIGNATURE, "s" + SLOT_SIGNATURE, "asssa{sv}ass", "asssa{ss}asss", "asssavasss",
              "sss", "ssv", "ss", "s", "assssassss")


class MessageMaker(ValueMaker):
    """Makes the content of one message."""

    texts = TEXTS + ALL_KEYS
    keys = ALL_KEYS
    paths = PATHS
    interfaces = INTERFACES
    members = MEMBERS
    signatures = SIGNATURES
    destination = PROVIDER

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

    def event(self):
        message = dbus.lowlevel.MethodCallMessage(PROVIDER, PATH, INTERFACE, SLOT)
        attributes = self.some_texts()
        if self.chance() < 0.5:
            attributes = dbus.Array(["3", "0", "EventlistEvent"], signature="s")
        message.append(attributes, self.text(), self.text(), self.description(), self.some_texts(), self.text(),
                       self.text(), signature=SLOT_SIGNATURE)
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
