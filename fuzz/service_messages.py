"""Well-formed D-Bus messages of random signature and content for the central service, to all its objects."""

import re
import sys

import dbus
import dbus.lowlevel

from bus_messages import BUS_PREFIX, TEXTS, ValueMaker, types_of

# Numbers of any length are read: they come as texts.
sys.set_int_max_str_digits(0)

SERVICE = BUS_PREFIX + ".EventlistHandler"
QUERY = "sasasasas"
# Each method with its object, its interface and its signature.
METHODS = (("/EventlistWrite", "Interface.EventlistWrite", "logEvent", "assssassss"),
           ("/EventlistWrite", "Interface.EventlistWrite", "deleteEventlist", ""),
           ("/EventlistWrite", "Interface.EventlistWrite", "suppressEventProcessing", "b"),
           ("/EventlistRead", "Interface.EventlistRead", "getCompleteEventlist", "s"),
           ("/EventlistRead", "Interface.EventlistRead", "getListOfEventTypes", "s"),
           ("/EventlistRead", "Interface.EventlistRead", "getPartOfEventlist", QUERY + "ssasi"),
           ("/EventlistRead", "Interface.EventlistRead", "getPartOfEventlistUnixTime", QUERY + "xxasi"),
           ("/EventlistRead", "Interface.EventlistRead", "getPartOfEventlistById", QUERY + "xxasib"),
           ("/AlarmlistRead", "Interface.AlarmlistRead", "getCompleteAlarmlist", "s"),
           ("/AlarmlistRead", "Interface.AlarmlistRead", "getAlarmState", "s"),
           ("/AlarmlistWrite", "Interface.AlarmlistWrite", "acknowledgeVisualAlarm", "ass"),
           ("/AlarmlistWrite", "Interface.AlarmlistWrite", "acknowledgeCentralDetector", "s"),
           ("/HashRegister", "Interface.RegisterHash", "registerEventHash", "s"))
LOG_EVENT, DELETE, SUPPRESS = METHODS[:3]
COLUMNS = ("EventlistId", "EventType", "State", "IconType", "ModuleName", "DateTimeLocal", "TimestampUtc", "User",
           "Description", "KeywordName", "AlarmID", "EventId", "MetaData", "SourceHashType", "SourceHashes")
ALARM_IDS = ("", "{1}", "\ufeff{1}", "{2}", "{2}\ufffe", "{2}\uffff", "{3}", "-PumpControl/x")
JSON_TEXTS = ('{"lang_de": "Pumpe %1", "lang_en": "pump %1"}', '{"lang_en": 7}', '{"a": {"a": {}}}', "{}", "[]", "{",
              '{"a": 1, "a": 2}', '{"EventId": "x", "MetaData": "{}", "SourceHashType": 1, "SourceHashes": "h1;h2"}',
              '{"EventId": 1, "MetaData": {"Arguments": []}, "SourceHashType": "x", "SourceHashes": null}')
LARGEST_EVENT = 1024 * 1024


def units(text):
    """Length in UTF-16 units, which is what counts for limits."""
    return len(str(text).encode("utf-16-le")) // 2


class MessageMaker(ValueMaker):
    """Makes the content of one message."""

    texts = TEXTS + COLUMNS + ALARM_IDS + JSON_TEXTS + ("\x02", "\x03", "h1", "2026-03-14T09:26:53.589+01:00")
    paths = ("/", "/org/freedesktop/DBus", "/Events", "/Hash1", *(path for path, *_ in METHODS))
    interfaces = (*(interface for _, interface, *_ in METHODS), None, "org.freedesktop.DBus.Properties",
                  "org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Peer", "org.freedesktop.DBus", "a.b")
    members = (*(member for *_, member, _ in METHODS), "changedEventlist", "changedAlarmlist", "availableEventIcon",
               "setConnection", "deleteLater", "qt_metacall", "Get", "GetAll", "Set", "Introspect", "Ping",
               "GetMachineId", "NameOwnerChanged", "NameLost", "NameAcquired", "onNameLost", "onDisconnected", "_0")
    signatures = ("", "v", "a{sv}", "aas", *(signature for *_, signature in METHODS))
    destination = SERVICE

    def event(self):
        """Everything that logEvent takes, for the most part an event that is good."""
        attributes = [self.choice("0123"), self.choice("012"), self.text()]
        if self.chance() < 0.15:
            attributes = self.some_texts()
        additional = self.choice(JSON_TEXTS) if self.chance() < 0.7 else self.text()
        return [dbus.Array(attributes, signature="s"), self.text(), self.text(), self.text(), self.some_texts(),
                self.text(), additional, self.choice(ALARM_IDS) if self.chance() < 0.8 else self.text()]

    def call(self):
        # Events come often, what ends them seldom.
        method = LOG_EVENT if self.chance() < 0.5 else self.choice(METHODS)
        if method in (DELETE, SUPPRESS) and self.chance() < 0.97:
            method = LOG_EVENT
        path, interface, member, signature = method
        message = dbus.lowlevel.MethodCallMessage(SERVICE, path, interface if self.chance() < 0.9 else None, member)
        if method is LOG_EVENT:
            values = self.event()
        elif method is SUPPRESS:
            values = [self.chance() < 0.2]
        else:
            values = [self.value(type_, 2) for type_ in types_of(signature)]
        if values:
            message.append(*values, signature=signature)
        return message

    def message(self):
        message = self.call() if self.chance() < 0.7 else self.anything()
        if message.get_type() == 1 and self.chance() < 0.9:
            message.set_no_reply(True)
        return message


def is_call_of(message, method):
    path, interface, member, signature = method
    return (message.get_type() == 1 and message.get_path() == path and message.get_member() == member
            and message.get_interface() in (interface, None) and message.get_signature() == signature)


def is_number(text, lowest, highest):
    """Whether the service takes a text for a number of this range."""
    return bool(re.fullmatch(r"\s*[+-]?[0-9]+\s*", text)) and lowest <= int(text) <= highest


def kept(text):
    """A text as the list keeps it: no byte order marks at the front, and U+FFFD for what is no character."""
    return re.sub("[\ufffe\uffff]", "\ufffd", str(text).lstrip("\ufeff"))


def event_of(message):
    """What the list has to show of a good event: module, user, event type and alarm id. None when it is refused."""
    attributes, timestamp, module, description, keywords, user, additional, alarm_id = message.get_args_list()
    if (len(attributes) != 3 or not is_number(attributes[0], 0, 3)
            or not is_number(attributes[1], -2 ** 31, 2 ** 31 - 1)):
        return None
    size = sum(map(units, (attributes[2], timestamp, module, description, user, additional, alarm_id)))
    if size + sum(units(word) + 1 for word in keywords) > LARGEST_EVENT:
        return None
    return [kept(module), kept(user), str(int(attributes[0])), ";".join(map(kept, keywords)), kept(alarm_id)]
