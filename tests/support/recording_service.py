#!/usr/bin/python3
"""A service on a D-Bus bus that records what it gets and answers as it is told.

It is driven through its standard input and output, one JSON object in each line, one answer to each
command: {"ok": true, ...} or {"ok": false, "error": text}. It ends when its input ends.

Values travel in both directions in the same form: strings, numbers and booleans as they are, arrays
and structures as lists, dictionaries as objects, a variant as {"variant": signature, "value": value}.
A whole number beyond 2^53 is written as a string of digits, because JSON readers would round it; for
sending, a string of digits is always accepted as a number.
"""

import argparse
import collections
import json
import os
import sys

import dbus
import dbus.bus
import dbus.lowlevel
from gi.repository import GLib
from dbus.mainloop.glib import DBusGMainLoop

# Calls to this interface are answered and not recorded.
OWN_INTERFACE = "org.eventlist.RecordingService"
EXACT_IN_JSON = 2 ** 53
BASIC_TYPES = {
    "b": dbus.Boolean, "y": dbus.Byte, "n": dbus.Int16, "q": dbus.UInt16, "i": dbus.Int32,
    "u": dbus.UInt32, "x": dbus.Int64, "t": dbus.UInt64, "d": dbus.Double, "s": dbus.String,
    "o": dbus.ObjectPath, "g": dbus.Signature}
WHOLE_NUMBERS = "ynqiuxt"
SIGNATURES = {type_: code for code, type_ in BASIC_TYPES.items()}


def signature_of(value):
    """Signature of a value that came out of a message, its own variants left aside."""
    if isinstance(value, dbus.ByteArray):
        return "ay"
    if isinstance(value, dbus.Dictionary):
        return "a{" + str(value.signature) + "}"
    if isinstance(value, dbus.Array):
        return "a" + str(value.signature)
    if isinstance(value, (dbus.Struct, tuple)):
        return "(" + "".join(element_signature(element) for element in value) + ")"
    return SIGNATURES[type(value)]


def element_signature(value):
    return "v" if value.variant_level > 0 else signature_of(value)


def to_json(value, level=None):
    level = value.variant_level if level is None else level
    if level > 0:
        signature = "v" if level > 1 else signature_of(value)
        return {"variant": signature, "value": to_json(value, level - 1)}
    if isinstance(value, dbus.Dictionary):
        return {str(to_json(key)): to_json(content) for key, content in value.items()}
    if isinstance(value, dbus.ByteArray):
        return list(value)
    if isinstance(value, (dbus.Array, dbus.Struct, tuple)):
        return [to_json(element) for element in value]
    if isinstance(value, dbus.Boolean):
        return bool(value)
    if isinstance(value, dbus.Double):
        return float(value)
    if isinstance(value, int):
        return int(value) if abs(value) <= EXACT_IN_JSON else str(int(value))
    return str(value)


def from_json(signature, value, level=0):
    if signature == "v":
        return from_json(value["variant"], value["value"], level + 1)
    if signature.startswith("a{"):
        key, content = list(dbus.Signature(signature[2:-1]))
        return dbus.Dictionary(
            {from_json(key, name): from_json(content, entry) for name, entry in value.items()},
            signature=signature[2:-1], variant_level=level)
    if signature.startswith("a"):
        return dbus.Array([from_json(signature[1:], element) for element in value],
                          signature=signature[1:], variant_level=level)
    if signature.startswith("("):
        types = list(dbus.Signature(signature[1:-1]))
        if len(types) != len(value):
            raise ValueError("%d values for the structure %s" % (len(value), signature))
        return dbus.Struct([from_json(str(t), v) for t, v in zip(types, value)],
                           signature=signature[1:-1], variant_level=level)
    if signature in WHOLE_NUMBERS:
        value = int(value)
    return BASIC_TYPES[signature](value, variant_level=level)


def append_values(message, signature, values):
    types = [str(t) for t in dbus.Signature(signature)]
    if len(types) != len(values):
        raise ValueError("%d values for the signature \"%s\"" % (len(values), signature))
    if types:
        message.append(*[from_json(t, v) for t, v in zip(types, values)], signature=signature)


class RecordingService:
    def __init__(self, address, name, is_monitor):
        self.address = address
        self.name = name
        self.is_monitor = is_monitor
        self.connection = None
        self.records = []
        self.rules = {}
        self.held = collections.deque()
        self.input = b""
        self.loop = GLib.MainLoop()

    def connect(self):
        self.connection = dbus.bus.BusConnection(self.address)
        self.connection.set_exit_on_disconnect(False)
        self.connection.add_message_filter(self.take)
        if self.is_monitor:
            self.connection.call_blocking(
                dbus.BUS_DAEMON_NAME, dbus.BUS_DAEMON_PATH, dbus.BUS_DAEMON_NAME + ".Monitoring",
                "BecomeMonitor", "asu", ([], 0))
        elif self.name:
            self.own(self.name)

    def own(self, name):
        result = self.connection.request_name(name, dbus.bus.NAME_FLAG_DO_NOT_QUEUE)
        if result not in (dbus.bus.REQUEST_NAME_REPLY_PRIMARY_OWNER,
                          dbus.bus.REQUEST_NAME_REPLY_ALREADY_OWNER):
            raise RuntimeError("The name %s has another owner" % name)

    # What comes over the bus.

    def take(self, connection, message):
        kind = {dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL: "call",
                dbus.lowlevel.MESSAGE_TYPE_METHOD_RETURN: "reply",
                dbus.lowlevel.MESSAGE_TYPE_ERROR: "error",
                dbus.lowlevel.MESSAGE_TYPE_SIGNAL: "signal"}[message.get_type()]
        is_ours = kind == "call" or (kind == "signal" and message.get_sender() != dbus.BUS_DAEMON_NAME
                                     and message.get_interface() != dbus.LOCAL_IFACE)
        if not is_ours and not self.is_monitor:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        if message.get_interface() == OWN_INTERFACE and not self.is_monitor:
            connection.send_message(dbus.lowlevel.MethodReturnMessage(message))
            return dbus.lowlevel.HANDLER_RESULT_HANDLED
        self.records.append({
            "kind": kind,
            "sender": message.get_sender(),
            "destination": message.get_destination(),
            "path": message.get_path(),
            "interface": message.get_interface(),
            "member": message.get_member(),
            "signature": str(message.get_signature()),
            "arguments": [to_json(value) for value in message.get_args_list()],
            "isReplyExpected": not message.get_no_reply(),
            "isAutoStartAllowed": bool(message.get_auto_start()),
            "serial": message.get_serial()})
        if kind == "call" and not self.is_monitor:
            self.answer(message)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def answer(self, message):
        rule = self.rules.get(message.get_member(), {"answer": "reply"})
        if message.get_no_reply() or rule["answer"] == "nothing":
            return
        if rule["answer"] == "hold":
            self.held.append(message)
            return
        self.connection.send_message(self.make_answer(message, rule))

    @staticmethod
    def make_answer(message, rule):
        if rule["answer"] == "error":
            answer = dbus.lowlevel.ErrorMessage(message, rule["name"], rule.get("text"))
        else:
            answer = dbus.lowlevel.MethodReturnMessage(message)
            append_values(answer, rule.get("signature", ""), rule.get("arguments", []))
        return answer

    # What the test wants.

    def command_ping(self, command):
        return {}

    def command_count(self, command):
        return {"count": len(self.records)}

    def command_received(self, command):
        first = int(command.get("from", 0))
        return {"received": self.records[first:first + int(command.get("count", len(self.records)))]}

    def command_clear(self, command):
        self.records = []
        return {}

    def command_reset(self, command):
        self.records = []
        self.rules = {}
        self.held.clear()
        return {}

    def command_answer(self, command):
        rule = command["rule"]
        if rule["answer"] not in ("reply", "error", "nothing", "hold"):
            raise ValueError("Unknown answer " + rule["answer"])
        # Shows a mistake in the rule now, and not when the call comes.
        probe = dbus.lowlevel.MethodCallMessage(None, "/", None, "Probe")
        append_values(probe, rule.get("signature", ""), rule.get("arguments", []))
        self.rules[command["member"]] = rule
        return {}

    def command_release(self, command):
        rule = command.get("rule", {"answer": "reply"})
        count = len(self.held)
        while self.held:
            self.connection.send_message(self.make_answer(self.held.popleft(), rule))
        self.connection.flush()
        return {"count": count}

    def command_emit(self, command):
        signal = dbus.lowlevel.SignalMessage(command["path"], command["interface"], command["member"])
        append_values(signal, command.get("signature", ""), command.get("arguments", []))
        for _ in range(int(command.get("times", 1))):
            self.connection.send_message(signal.copy())
        self.connection.flush()
        return {}

    def command_own(self, command):
        self.own(command["name"])
        return {}

    def command_disown(self, command):
        self.connection.release_name(command["name"])
        return {}

    def command_reconnect(self, command):
        if self.connection is not None:
            self.connection.close()
        self.connect()
        return {"uniqueName": self.connection.get_unique_name()}

    def command_quit(self, command):
        GLib.idle_add(self.loop.quit)
        return {}

    def execute(self, line):
        try:
            command = json.loads(line)
            result = getattr(self, "command_" + command["command"])(command)
            result["ok"] = True
        except Exception as error:  # every mistake is the test's to see
            result = {"ok": False, "error": "%s: %s" % (type(error).__name__, error)}
        self.say(result)

    @staticmethod
    def say(result):
        sys.stdout.write(json.dumps(result) + "\n")
        sys.stdout.flush()

    def on_input(self, source, condition):
        block = os.read(sys.stdin.fileno(), 65536)
        if not block:
            self.loop.quit()
            return False
        self.input += block
        *lines, self.input = self.input.split(b"\n")
        for line in lines:
            self.execute(line)
        return True

    def run(self):
        try:
            self.connect()
        except Exception as error:
            self.say({"ok": False, "error": "%s: %s" % (type(error).__name__, error)})
            return 1
        GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, self.on_input)
        self.say({"ok": True, "uniqueName": self.connection.get_unique_name()})
        self.loop.run()
        return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--address", required=True, help="address of the bus")
    parser.add_argument("--name", default="", help="bus name to own")
    parser.add_argument("--monitor", action="store_true", help="record all traffic of the bus instead")
    arguments = parser.parse_args()
    DBusGMainLoop(set_as_default=True)
    return RecordingService(arguments.address, arguments.name, arguments.monitor).run()


if __name__ == "__main__":
    sys.exit(main())
