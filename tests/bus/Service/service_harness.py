"""A private bus, the real central service on it, and a client that knows nothing of Qt.

Everything lies in one temporary folder for each test; no test needs a sleep: it waits for a condition
with a deadline, or for an answer that comes after everything before it.
"""

import contextlib
import json
import os
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import dbus
import dbus.bus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "support"))
import private_bus  # pylint: disable=wrong-import-position

EVENTLISTD = os.environ["EVENTLISTHANDLER_EVENTLISTD"]
TEXTS = os.environ["EVENTLISTHANDLER_TEXT_FOLDER"]
BUS_NAME = os.environ.get("EVENTLISTHANDLER_BUS_PREFIX", "org.eventlist") + ".EventlistHandler"
# A build with sanitizers is several times slower.
PATIENCE = int(os.environ.get("EVENTLISTHANDLER_TEST_PATIENCE", "1"))
# The campaign makes the same tests at full size.
IS_CAMPAIGN = os.environ.get("EVENTLISTHANDLER_TEST_CAMPAIGN") == "1"
DEADLINE_S = (600 if IS_CAMPAIGN else 30) * PATIENCE


def wait_for(condition, what):
    """Waits until the condition gives something true, and returns that."""
    deadline = time.monotonic() + DEADLINE_S
    while time.monotonic() < deadline:
        result = condition()
        if result:
            return result
        time.sleep(0.005)
    raise AssertionError("Not in time: " + what)


class Bus:
    """A dbus-daemon with the limits of a system bus."""

    def __init__(self, folder):
        self.address = private_bus.address_in(folder)
        self._folder = folder
        self._process = None

    def start(self):
        with contextlib.suppress(FileNotFoundError):
            os.remove(private_bus.socket_in(self._folder))
        self._process = subprocess.Popen(private_bus.daemon_command(self._folder), stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL)
        self._process.stdout.readline()

    def kill(self):
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()


class Eventlistd:
    """The service in a process, with what it writes to its standard error."""

    def __init__(self, bus, folder):
        self._bus = bus
        self.database = os.path.join(folder, "db", "eventlist.sqlite")
        self.spool = os.path.join(folder, "spool")
        self.environment = {}
        self.lines = []
        self._process = None
        self._reader = None
        os.makedirs(self.spool, exist_ok=True)

    def command(self, *arguments):
        return [EVENTLISTD, "--database", self.database, "--spool", self.spool, "--texts", TEXTS,
                *arguments]

    def launch(self, *arguments):
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self._bus.address, **self.environment)
        self.lines = []
        self._process = subprocess.Popen(self.command(*arguments), env=environment,
                                         stderr=subprocess.PIPE)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def start(self, *arguments):
        self.launch(*arguments)
        self.wait_ready(1)

    def wait_ready(self, times):
        def is_ready():
            return self.lines.count("eventlistd: ready") >= times
        try:
            wait_for(lambda: is_ready() or self._process.poll() is not None, "service ready")
        finally:
            if not is_ready():
                print("\n".join(self.lines), file=sys.stderr)
        if not is_ready():
            raise AssertionError("The service has ended")

    def log(self):
        return "\n".join(self.lines)

    def process_id(self):
        return self._process.pid

    def is_running(self):
        return self._process is not None and self._process.poll() is None

    def kill(self):
        self._process.kill()
        return self._wait()

    def stop(self):
        """Ends it in good order and returns its exit code."""
        self._process.terminate()
        return self._wait()

    def _wait(self):
        code = self._process.wait(DEADLINE_S)
        self._reader.join(DEADLINE_S)
        self._process.stderr.close()
        return code

    def wait_end(self):
        return self._wait()

    def _read(self):
        for line in self._process.stderr:
            self.lines.append(line.decode(errors="replace").rstrip("\n"))


class Answer:
    """The dictionary that answers a query."""

    def __init__(self, dictionary):
        self.dictionary = dictionary
        self.header = [str(name) for name in dictionary["header"]]
        self.rows = [dict(zip(self.header, (str(value) for value in row)))
                     for row in dictionary["data"]]
        self.is_truncated = bool(dictionary.get("truncated", False))

    def column(self, name):
        return [row[name] for row in self.rows]


class Client:
    """One connection to the bus, with the methods of the service as a module calls them."""

    def __init__(self, bus):
        self.connection = dbus.bus.BusConnection(bus.address)
        self.connection.set_exit_on_disconnect(False)

    def close(self):
        self.connection.close()

    def message(self, path, interface, method, signature, *arguments):
        message = dbus.lowlevel.MethodCallMessage(BUS_NAME, path, interface, method)
        message.append(*arguments, signature=signature)
        return message

    def send(self, path, interface, method, signature, *arguments):
        """Sends a call that expects no answer, as the modules do."""
        message = self.message(path, interface, method, signature, *arguments)
        message.set_no_reply(True)
        self.connection.send_message(message)

    def call(self, path, interface, method, signature, *arguments):
        message = self.message(path, interface, method, signature, *arguments)
        reply = self.connection.send_message_with_reply_and_block(message, DEADLINE_S)
        values = reply.get_args_list()
        return values[0] if values else None

    # Event list

    def log_event(self, type_=3, state=0, icon="EventlistEvent", module="pump",
                  description='{"lang_de":"Hallo","lang_en":"Hello"}', keywords=("Firmware",),
                  user="", event_id="pump/Started", alarm_id="", source_hashes="",
                  timestamp="2026-03-14T09:26:53.589+01:00", meta_data="{}"):
        additional = json.dumps({"EventId": event_id, "MetaData": meta_data, "SourceHashType": 0,
                                 "SourceHashes": source_hashes})
        self.send("/EventlistWrite", "Interface.EventlistWrite", "logEvent", "assssassss",
                  [str(type_), str(state), icon], timestamp, module, description, list(keywords),
                  user, additional, alarm_id)

    def delete_eventlist(self):
        self.send("/EventlistWrite", "Interface.EventlistWrite", "deleteEventlist", "")

    def suppress(self, on):
        self.send("/EventlistWrite", "Interface.EventlistWrite", "suppressEventProcessing", "b", on)

    def read(self, method, signature, *arguments):
        return Answer(self.call("/EventlistRead", "Interface.EventlistRead", method, signature,
                                *arguments))

    def complete(self, context=""):
        return self.read("getCompleteEventlist", "s", context)

    def part(self, context="", types=(), second=(), modules=(), keywords=(), start="", end="",
             columns=(), number=0):
        return self.read("getPartOfEventlist", "sasasasasssasi", context, list(types), list(second),
                         list(modules), list(keywords), start, end, list(columns), number)

    def part_by_unix_time(self, start, end, modules=(), number=0):
        return self.read("getPartOfEventlistUnixTime", "sasasasasxxasi", "", [], [], list(modules),
                         [], start, end, [], number)

    def part_by_id(self, start, end, modules=(), columns=(), number=0, oldest_first=False):
        return self.read("getPartOfEventlistById", "sasasasasxxasib", "", [], [], list(modules), [],
                         start, end, list(columns), number, oldest_first)

    def descriptions(self, module="pump"):
        """What the list holds of one module, the oldest first."""
        return [row["Description"] for row in reversed(self.part(modules=[module]).rows)]

    # Alarm list

    def alarms(self, context=""):
        return Answer(self.call("/AlarmlistRead", "Interface.AlarmlistRead",
                                "getCompleteAlarmlist", "s", context))

    def alarm_state(self):
        state = self.call("/AlarmlistRead", "Interface.AlarmlistRead", "getAlarmState", "s", "")
        return {str(key): int(value) for key, value in state.items()}

    def acknowledge(self, alarms, user="operator"):
        self.send("/AlarmlistWrite", "Interface.AlarmlistWrite", "acknowledgeVisualAlarm", "ass",
                  list(alarms), user)

    def acknowledge_central(self, user="operator"):
        self.send("/AlarmlistWrite", "Interface.AlarmlistWrite", "acknowledgeCentralDetector", "s",
                  user)

    # Hashes

    def register_hash(self, hash_):
        return self.call("/HashRegister", "Interface.RegisterHash", "registerEventHash", "s", hash_)


class SignalRecorder:
    """Records the signals of the service, as (path, interface, member, arguments)."""

    def __init__(self, bus):
        self._loop = DBusGMainLoop(set_as_default=False)
        self.connection = dbus.bus.BusConnection(bus.address, mainloop=self._loop)
        self.connection.set_exit_on_disconnect(False)
        self.signals = []
        self.connection.add_signal_receiver(
            self._record, bus_name=BUS_NAME, path_keyword="path", interface_keyword="interface",
            member_keyword="member")
        # The daemon has taken the rule when it has answered something that came after it. What the service told
        # before it answers is of its start, and may be on its way still.
        with contextlib.suppress(dbus.DBusException):
            self.connection.call_blocking(BUS_NAME, "/AlarmlistRead", "Interface.AlarmlistRead", "getAlarmState", "s",
                                          ("",))
        self.connection.get_name_owner("org.freedesktop.DBus")
        self.poll().clear()

    def _record(self, *arguments, path, interface, member):
        values = [bool(value) if isinstance(value, dbus.Boolean) else str(value)
                  for value in arguments]
        self.signals.append((str(path), str(interface), str(member), values))

    def close(self):
        self.connection.close()

    def poll(self):
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass
        return self.signals

    def members(self):
        return [member for _, _, member, _ in self.poll()]

    def values(self, member):
        return [values for _, _, name, values in self.poll() if name == member]

    def wait_for(self, condition, what):
        return wait_for(lambda: condition(self.poll()), what)


class ServiceTest(unittest.TestCase):
    """One bus, one service, one client."""

    arguments = ()

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="eventlistd-")
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.bus = Bus(self.folder)
        self.bus.start()
        self.addCleanup(self.bus.kill)
        self.service = Eventlistd(self.bus, self.folder)
        self.addCleanup(lambda: self.service.kill() if self.service.is_running() else None)
        self.service.start(*self.arguments)
        self.client = Client(self.bus)
        self.addCleanup(lambda: self.client.close())

    def write_spool(self, name, content):
        """Puts a file into the spool folder in one step."""
        path = os.path.join(self.folder, "spool-" + str(len(os.listdir(self.folder))))
        with open(path, "wb") as file:
            file.write(content)
        os.rename(path, os.path.join(self.service.spool, name))

    def spool_files(self):
        return [name for name in os.listdir(self.service.spool)
                if name not in ("claimed", "rejected")]

    def database(self):
        return sqlite3.connect("file:" + self.service.database + "?mode=ro", uri=True)


def spool_entry(**changes):
    """The thirteen members of a spool file."""
    entry = {"AlarmID": "", "DateTimeMsUTC": "2026-03-14T09:26:53.589+01:00",
             "Description": '{"lang_de":"Hallo","lang_en":"Hello"}', "EventId": "pump/Started",
             "EventType": 3, "IconType": "EventlistEvent", "KeywordName": "Error;Firmware",
             "MetaData": {"Arguments": {}, "DescriptionScheme": {"lang_en": "Hello"}},
             "ModuleName": "pump", "SourceHashType": 0, "SourceHashes": "", "State": 0, "User": ""}
    entry.update(changes)
    return entry


def as_bytes(entry):
    return json.dumps(entry, separators=(",", ":"), ensure_ascii=False).encode()
