#!/usr/bin/python3
"""Sends well-formed messages of random signature and content to an events provider, on a bus of its own.

The program under test is a provider of the module PumpControl that ends with the end of its input. After every batch of
messages
  - the provider must answer within --answer-s, the time left out in which it waited for a processor,
  - the central service, which counts here and does nothing else, must have got one event for each message
    that is a proper call of the slot, whatever its content,
  - the provider's standard error may hold nothing but the library's own warnings.
At the end its memory must be flat, and it must end in good order.

A message is made of its seed and its index. A failing one is looked for, and repeated with
  provider_bus.py PROGRAM --seed SEED --first INDEX --count 1
"""

import os
import re
import subprocess
import sys
import tempfile

import dbus
import dbus.bus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from bus_harness import START_S, Failure, Harness, run
from provider_messages import (BUS_PREFIX, CONFIGURATION_FOLDER, CONFIGURATION_INSTANCE, INTERFACE, PATH, PROVIDER,
                               MessageMaker, makes_an_event)

SERVICE = BUS_PREFIX + ".EventlistHandler"
COUNTER = "org.eventlist.EventCounter"
CONFIGURATION = ('{"Name": {"value": {"lang_de": "Pumpe %1", "lang_en": "pump %1"}}, "Messages": {"Blocked":'
                 ' {"value": {"lang_de": "%1 ist verstopft: %2", "lang_en": "%1 is blocked: %2"}}}}')
# How every warning begins that a dictionary may cause. Qt writes the last one by itself, before any slot is called,
# when a value of type g is empty.
WARNINGS = re.compile(
    rb"Key for description not found: |No valid description|descriptionModuleName not implemented\. "
    rb"|ObjectName not in textManagerDataList: |Can't convert ConfigValue to QVariantMap\. "
    rb'|Can\'t find element |No key "type" from placeholder |Can\'t read configuration description '
    rb"|Configuration folder refused, |Texts would grow too large\. Placeholder not replaced: "
    rb'|QDBusSignature: invalid signature ""$')


def count_events(address):
    """The central service: takes every event, and tells how many there were."""
    DBusGMainLoop(set_as_default=True)
    connection = dbus.bus.BusConnection(address)
    received = 0

    def handle(_, message):
        nonlocal received
        if message.get_type() != 1:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        if message.get_interface() == COUNTER:
            reply = dbus.lowlevel.MethodReturnMessage(message)
            reply.append(dbus.UInt64(received))
            connection.send_message(reply)
        elif message.get_member() == "logEvent":
            received += 1
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    connection.add_message_filter(handle)
    connection.request_name(SERVICE)
    print("ready", flush=True)
    GLib.MainLoop().run()


class ProviderHarness(Harness):
    name = PROVIDER
    path = PATH
    interface = INTERFACE
    warnings = WARNINGS

    def prepare(self):
        if self.arguments.configuration:
            write_configuration(self.arguments.configuration)
        self.service = subprocess.Popen([sys.executable, os.path.abspath(__file__), "--count-events", self.bus.address],
                                        stdout=subprocess.PIPE)
        self.service.stdout.readline()

    def make_message(self, index):
        message = MessageMaker(self.arguments.seed, index).message()
        return message, makes_an_event(message)

    def before_batch(self, connection):
        call = dbus.lowlevel.MethodCallMessage(SERVICE, "/", COUNTER, "Count")
        return int(connection.send_message_with_reply_and_block(call, START_S).get_args_list()[0])

    def after_batch(self, connection, before, effects):
        events = self.before_batch(connection) - before
        if events != len(effects):
            raise Failure(f"{len(effects)} messages are events, the service got {events}")
        return events

    def end(self):
        self.service.kill()
        self.service.wait()
        self.service.stdout.close()
        super().end()


def write_configuration(root):
    folder = os.path.join(root, CONFIGURATION_FOLDER)
    os.makedirs(folder, exist_ok=True)
    # At once, because another run beside this one may read it.
    with tempfile.NamedTemporaryFile("w", dir=folder, delete=False, encoding="utf-8") as file:
        file.write(CONFIGURATION)
    os.replace(file.name, os.path.join(folder, CONFIGURATION_INSTANCE + ".json"))


def add_arguments(parser):
    parser.add_argument("--configuration", help="the provider's configuration folder; an instance is put there")


if __name__ == "__main__":
    if sys.argv[1:2] == ["--count-events"]:
        count_events(sys.argv[2])
        sys.exit(0)
    sys.exit(run(ProviderHarness, __doc__, add_arguments))
