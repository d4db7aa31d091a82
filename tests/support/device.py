"""A device in miniature for tests that are scripts: a private bus, the central service, and the command line tool,
all in a folder of their own.

    with Device() as device:
        device.start_service()
        print(device.eventlist("list").stdout)

The service is the program in $EVENTLISTHANDLER_EVENTLISTD, the tool that in $EVENTLIST.
"""

import ctypes
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

import dbus

import private_bus

DEADLINE_S = 30
CENTRAL_SERVICE = "org.eventlist.EventlistHandler"


def pause():
    """Between two looks at a condition."""
    select.select([], [], [], 0.02)


def wait_until(condition, what):
    """Looks until the condition holds, and returns what it gave."""
    end = time.monotonic() + DEADLINE_S
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain until {what}")
        pause()


def die_with_parent():
    """No child outlives a test, not even one that is killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


class Program:
    """A running program whose lines can be waited for."""

    def __init__(self, command, **settings):
        self.process = subprocess.Popen([str(word) for word in command], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        preexec_fn=die_with_parent, **settings)
        self.texts = {"out": b"", "err": b""}

    def read(self, timeout_s=0.02):
        """Takes what has been written until now."""
        streams = {self.process.stdout: "out", self.process.stderr: "err"}
        readable, _, _ = select.select([stream for stream in streams if not stream.closed], [], [], timeout_s)
        for stream in readable:
            data = os.read(stream.fileno(), 65536)
            self.texts[streams[stream]] += data
            if not data:
                stream.close()

    @property
    def out(self):
        return self.texts["out"].decode("utf-8")

    @property
    def err(self):
        return self.texts["err"].decode("utf-8")

    def lines(self):
        return self.out.splitlines()

    def wait_for(self, text, stream="out"):
        """Waits until the program has written this text."""
        def is_there():
            self.read()
            return text.encode("utf-8") in self.texts[stream]
        try:
            wait_until(is_there, f"{text!r} is written")
        except AssertionError as problem:
            raise AssertionError(f"{problem}; out: {self.out!r}; err: {self.err!r}") from None

    def type(self, text):
        self.process.stdin.write(text.encode("utf-8"))
        self.process.stdin.flush()

    def end_input(self):
        self.process.stdin.close()

    def wait(self):
        """Waits for its end and returns the exit code."""
        def has_ended():
            if any(not stream.closed for stream in (self.process.stdout, self.process.stderr)):
                self.read()
            return self.process.poll() is not None
        wait_until(has_ended, f"{self.process.args} ends")
        while any(not stream.closed for stream in (self.process.stdout, self.process.stderr)):
            self.read()
        return self.process.returncode

    def stop(self, how=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(how)
        code = self.wait()
        if not self.process.stdin.closed:
            self.process.stdin.close()
        return code


class Device:
    def __init__(self, spool=None):
        # A socket's path has at most 107 bytes, whatever the folder for temporary files is called.
        self.folder = Path(tempfile.mkdtemp(prefix="device-", dir="/tmp"))
        self.spool = Path(spool) if spool else self.folder / "spool"
        self.texts = Path(os.environ["EVENTLISTHANDLER_TEXTS"])
        self.bus = None
        self.service = None
        self.connection = None
        self.programs = []
        self.environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address, LC_ALL="C.UTF-8")

    @property
    def address(self):
        return private_bus.address_in(self.folder)

    def __enter__(self):
        self.start_bus()
        return self

    def __exit__(self, *_):
        for program in self.programs:
            program.stop(signal.SIGKILL)
        for program in (self.service, self.bus):
            if program is not None:
                program.stop(signal.SIGKILL)
        shutil.rmtree(self.folder)

    def start_bus(self):
        Path(private_bus.socket_in(self.folder)).unlink(missing_ok=True)
        self.bus = Program(private_bus.daemon_command(self.folder))
        self.bus.wait_for("guid=")
        self.connection = dbus.bus.BusConnection(self.address)
        self.connection.set_exit_on_disconnect(False)

    def kill_bus(self):
        self.bus.stop(signal.SIGKILL)

    def start_service(self):
        self.spool.mkdir(parents=True, exist_ok=True)
        self.service = Program([os.environ["EVENTLISTHANDLER_EVENTLISTD"],
                                "--database", self.folder / "eventlist.sqlite",
                                "--spool", f"{self.spool}/", "--texts", self.texts], env=self.environment)
        self.service.wait_for("eventlistd: ready", "err")

    def stop_service(self):
        self.service.stop()
        self.service = None

    def kill_service(self):
        self.service.stop(signal.SIGKILL)
        self.service = None

    def wait_for_service(self):
        """Until the service owns its name again, for instance on a new bus."""
        wait_until(lambda: self.connection.name_has_owner(CENTRAL_SERVICE), "the service is on the bus")

    def start(self, *command, **settings):
        """Starts a program on this device."""
        settings.setdefault("env", self.environment)
        program = Program(command, **settings)
        self.programs.append(program)
        return program

    def run(self, *command, text=True, environment=None, **settings):
        """Runs a program on this device to its end."""
        return subprocess.run([str(word) for word in command], stdout=settings.pop("stdout", subprocess.PIPE),
                              stderr=subprocess.PIPE, text=text, check=False, timeout=DEADLINE_S,
                              env=dict(self.environment, **(environment or {})),
                              preexec_fn=die_with_parent, **settings)

    def eventlist(self, *words, **settings):
        return self.run(os.environ["EVENTLIST"], *words, **settings)

    def start_eventlist(self, *words, **settings):
        return self.start(os.environ["EVENTLIST"], *words, **settings)

    def events(self, *words):
        """The rows of the list that these options choose, as the tool gives them to programs."""
        done = self.eventlist("list", "--json", "--count", "0", *words)
        if done.returncode != 0:
            raise AssertionError(f"eventlist list ended with {done.returncode}: {done.stderr}")
        return json.loads(done.stdout)

    def alarms(self):
        done = self.eventlist("alarms", "--json")
        if done.returncode != 0:
            raise AssertionError(f"eventlist alarms ended with {done.returncode}: {done.stderr}")
        return json.loads(done.stdout)

    def log(self, description, *, kind=3, state=0, icon="", timestamp="2026-03-14T09:26:53.589+01:00",
            module="PumpControl", keywords=(), user="", event_id="PumpControl/Test", alarm_id=""):
        """Logs an event as a client that knows nothing of this library, and waits for the answer."""
        write = dbus.Interface(self.connection.get_object(CENTRAL_SERVICE, "/EventlistWrite", introspect=False),
                               "Interface.EventlistWrite")
        additional = json.dumps({"EventId": event_id, "MetaData": "{}", "SourceHashType": 0, "SourceHashes": ""})
        texts = description if isinstance(description, dict) else {"lang_en": description}
        write.logEvent(dbus.Array([str(kind), str(state), icon], signature="s"), timestamp, module,
                       json.dumps(texts, ensure_ascii=False), dbus.Array(list(keywords), signature="s"), user,
                       additional, alarm_id, signature="assssassss")
