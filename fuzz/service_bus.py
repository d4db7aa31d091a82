#!/usr/bin/python3
"""Sends well-formed messages of random signature and content to the central service, on a bus of its own.

The program under test is eventlistd. After every batch of messages
  - it must answer within --answer-s, the time left out in which it waited for a processor,
  - its list must hold the events of the batch: each good one once, in the order in which they were sent, from the last
    deletion on and without those that came while the processing was suppressed,
  - its standard error may hold nothing but its own warnings.
At the end its memory must be flat, and it must end in good order.

A message is made of its seed and its index. A failing one is looked for, and repeated with
  service_bus.py PROGRAM --seed SEED --first INDEX --count 1
"""

import os
import re
import sys
import time

import dbus
import dbus.lowlevel

from bus_harness import START_S, Failure, Harness, deadline, run
from service_messages import DELETE, LOG_EVENT, SERVICE, SUPPRESS, MessageMaker, event_of, is_call_of

READ = ("/EventlistRead", "Interface.EventlistRead")
COLUMNS = ("EventlistId", "ModuleName", "User", "EventType", "KeywordName", "AlarmID")
OWN_MODULE = "EventlistHandler"
# How every warning begins that a message may cause. Qt writes the last one by itself, before any slot is called, when a
# value of type g is empty.
WARNINGS = re.compile(
    rb'eventlistd: (ready$|An event of "|Event processing (is suppressed|goes on) by "|An acknowledgement by '
    rb'|Nobody knows the alarm "|The alarm list is full: |An answer is truncated after '
    rb'|The device was switched on anew: |QDBusSignature: invalid signature ""$)')
# The list is bounded again and again, holds more than a batch, and a batch that asks for all of it many times still has its
# answer in time from a build with sanitizers.
ROWS = 3000


class ServiceHarness(Harness):
    name = SERVICE
    path = READ[0]
    interface = READ[1]
    warnings = WARNINGS
    ends_by_signal = True

    def command(self):
        texts = self.arguments.texts or self.folder
        return [self.arguments.program, "--database", os.path.join(self.folder, "list.sqlite"),
                "--spool", os.path.join(self.folder, "spool/"), "--texts", texts, "--max-rows", str(ROWS),
                "--max-alarms", "200"]

    def make_message(self, index):
        message = MessageMaker(self.arguments.seed, index).message()
        if is_call_of(message, LOG_EVENT):
            return message, ("event", event_of(message))
        if is_call_of(message, DELETE):
            return message, ("delete", None)
        if is_call_of(message, SUPPRESS):
            return message, ("suppress", bool(message.get_args_list()[0]))
        return message, None

    def rows(self, connection, first_id):
        call = dbus.lowlevel.MethodCallMessage(SERVICE, *READ, "getPartOfEventlistById")
        nothing = dbus.Array([], signature="s")
        call.append("", nothing, nothing, nothing, nothing, dbus.Int64(first_id), dbus.Int64(0),
                    dbus.Array(COLUMNS, signature="s"), dbus.Int32(0), True, signature="sasasasasxxasib")
        is_in_time = deadline(START_S)
        while True:
            try:
                answer = connection.send_message_with_reply_and_block(call, START_S).get_args_list()[0]
                return [[str(text) for text in row] for row in answer["data"]]
            except dbus.DBusException as error:
                # On a busy machine these queries take more time than one client is granted.
                if error.get_dbus_name() != "org.freedesktop.DBus.Error.LimitsExceeded" or not is_in_time():
                    raise
                time.sleep(0.04)

    def before_batch(self, connection):
        """The number of the last event, which is one that says that events are processed."""
        for is_suppressed in (True, False):
            call = dbus.lowlevel.MethodCallMessage(SERVICE, *SUPPRESS[:3])
            call.append(is_suppressed, signature="b")
            connection.send_message_with_reply_and_block(call, START_S)
        return int(self.rows(connection, 1)[-1][0])

    def after_batch(self, connection, before, effects):
        expected = []
        is_suppressed = False
        for kind, value in effects:
            if kind == "suppress":
                is_suppressed = value
            elif kind == "delete":
                expected = []
            elif value is not None and not is_suppressed:
                expected.append(value)
        # Beside them stands what the service logs by itself.
        found = [row[1:] for row in self.rows(connection, before + 1) if row[1] != OWN_MODULE]
        if found != expected:
            place = next((i for i, pair in enumerate(zip(found, expected)) if pair[0] != pair[1]),
                         min(len(found), len(expected)))
            raise Failure(f"{len(expected)} messages are events, the list holds {len(found)}; the first difference: "
                          + f"{expected[place:place + 1]} became {found[place:place + 1]}"[:2000])
        return len(found)


def add_arguments(parser):
    parser.add_argument("--texts", help="folder with the language files of the service")


if __name__ == "__main__":
    sys.exit(run(ServiceHarness, __doc__, add_arguments))
