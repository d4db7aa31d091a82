#!/usr/bin/python3
"""Sends well-formed messages of random signature and content to an events provider, on a bus of its own.

The program under test is a provider of the module PumpControl that tells on its standard output when it is
there, and ends with the end of its input. After every batch of messages
  - the provider must answer within --answer-s, the time left out in which it waited for a processor,
  - the central service, which counts here and does nothing else, must have got one event for each message
    that is a proper call of the slot, whatever its content,
  - the provider's standard error may hold nothing but the library's own warnings.
At the end its memory must be flat, and it must end in good order.

A message is made of its seed and its index. A failing one is looked for, and repeated with
  provider_bus.py PROGRAM --seed SEED --first INDEX --count 1
"""

import argparse
import contextlib
import os
import re
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from provider_messages import (BUS_PREFIX, CONFIGURATION_FOLDER, CONFIGURATION_INSTANCE, INTERFACE, PATH, PROVIDER,
                               MessageMaker, makes_an_event)

SERVICE = BUS_PREFIX + ".EventlistHandler"
COUNTER = "org.eventlist.EventCounter"
START_S = 60
# A system bus in all that matters here. It takes what a fast sender has in hand, and forged signals.
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>unix:path={path}</listen>
  <policy context="default">
    <allow user="*"/><allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/><allow receive_sender="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
"""
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
# Growth of the resident memory from the second to the last quarter of the samples, the least of each: a single large
# event leaves a peak behind for a while, a leak lifts the ground.
GROWTH = 1.10
GROWTH_MIB = 16


class Failure(Exception):
    """What the provider did wrong."""


class Crash(Failure):
    """The provider's process has ended."""


def listed(lines):
    """Each line once, because a report stands behind thousands of equal warnings."""
    return "\n  ".join(["", *(line[:300] for line in list(dict.fromkeys(lines))[:60])])


def deadline(seconds):
    end = time.monotonic() + seconds
    return lambda: time.monotonic() < end


class Bus:
    def __init__(self, folder):
        path = os.path.join(folder, "bus")
        self.address = "unix:path=" + path
        configuration = path + ".conf"
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(BUS_CONFIGURATION.format(path=path))
        self._process = subprocess.Popen(["dbus-daemon", "--config-file=" + configuration, "--nofork", "--nopidfile",
                                          "--print-address=1"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self._process.stdout.readline()

    def connect(self):
        connection = dbus.bus.BusConnection(self.address)
        connection.set_exit_on_disconnect(False)
        return connection

    def end(self):
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()


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


class Provider:
    """The program under test."""

    def __init__(self, program, bus, folder):
        self._messages = os.path.join(folder, "provider.log")
        self._waited_s = 0.0
        # What the sanitizer itself keeps must not look like growth: freed memory, and each way to an allocation, of
        # which random values have ever new ones.
        sanitizer = "detect_stack_use_after_return=1:quarantine_size_mb=32:malloc_context_size=4"
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.address,
                           ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":" + sanitizer,
                           UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1")
        with open(self._messages, "ab") as messages:
            self._process = subprocess.Popen([program], env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                             stderr=messages)
        self._process.stdout.readline()
        connection = bus.connect()
        is_in_time = deadline(START_S)
        while not connection.name_has_owner(PROVIDER):
            if not is_in_time() or self._process.poll() is not None:
                raise Failure("the provider did not come up")
            time.sleep(0.01)
        connection.close()

    def is_alive(self):
        return self._process.poll() is None

    def how_it_ended(self):
        code = self._process.poll()
        return f"signal {-code}" if code is not None and code < 0 else f"exit code {code}"

    def wait_end(self):
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(START_S / 4)

    def kill(self):
        self._process.kill()

    def resident_mib(self):
        with open(f"/proc/{self._process.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024

    def waited_s(self):
        """How long it stood ready since the last time, while every processor did something else."""
        with open(f"/proc/{self._process.pid}/schedstat", encoding="ascii") as statistic:
            waited = int(statistic.read().split()[1]) / 1e9
        since, self._waited_s = waited - self._waited_s, waited
        return since

    def foreign_lines(self):
        """Lines of its standard error, since the last time, that are none of the library's warnings."""
        with open(self._messages, "r+b") as messages:
            lines = messages.read().splitlines()
            messages.truncate(0)
        return [line.decode(errors="replace") for line in lines if not WARNINGS.match(line)]

    def end(self):
        """Ends it in good order; returns its exit code, or None when it had to be killed."""
        self._process.stdin.close()
        try:
            return self._process.wait(START_S)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
            return None
        finally:
            self._process.stdout.close()


class Harness:
    def __init__(self, arguments, folder):
        self.arguments = arguments
        self.folder = folder
        self.bus = Bus(folder)
        self.service = subprocess.Popen([sys.executable, os.path.abspath(__file__), "--count-events", self.bus.address],
                                        stdout=subprocess.PIPE)
        self.service.stdout.readline()
        self.provider = Provider(arguments.program, self.bus, folder)
        self.longest_answer_s = 0.0
        self.resident_mib = []
        self.failures = []
        self.done = 0
        self.events = 0

    def events_received(self, connection):
        call = dbus.lowlevel.MethodCallMessage(SERVICE, "/", COUNTER, "Count")
        return int(connection.send_message_with_reply_and_block(call, START_S).get_args_list()[0])

    def send(self, first, count):
        """Sends messages and looks at what the provider made of them."""
        connection = self.bus.connect()
        try:
            before = self.events_received(connection)
            expected = 0
            for index in range(first, first + count):
                message = MessageMaker(self.arguments.seed, index).message()
                expected += makes_an_event(message)
                connection.send_message(message)
            connection.flush()
            self.wait_for_answer(connection)
            events = self.events_received(connection) - before
        finally:
            connection.close()
        lines = self.provider.foreign_lines()
        if lines:
            raise Failure("it says" + listed(lines))
        if events != expected:
            raise Failure(f"{expected} messages are events, the service got {events}")
        self.events += events

    def wait_for_answer(self, connection):
        # The object's own thread answers this call, after all that came before it.
        call = dbus.lowlevel.MethodCallMessage(PROVIDER, PATH, "org.freedesktop.DBus.Introspectable", "Introspect")
        self.provider.waited_s()
        begin = time.monotonic()
        # A late answer tells more than none, so more time is given than is granted.
        try:
            answer = connection.send_message_with_reply_and_block(call, self.arguments.answer_s + START_S)
        except dbus.DBusException as error:
            self.provider.wait_end()
            raise self.reason_of_silence(error) from error
        elapsed = time.monotonic() - begin
        self.longest_answer_s = max(self.longest_answer_s, elapsed)
        # A busy machine is not the provider's fault.
        waited_s = self.provider.waited_s()
        if elapsed - waited_s > self.arguments.answer_s:
            raise Failure(f"the answer took {elapsed:.1f} s, of which it waited {waited_s:.1f} s for a processor")
        if INTERFACE not in answer.get_args_list()[0]:
            raise Failure("the provider's object is gone")

    def reason_of_silence(self, error):
        if self.provider.is_alive():
            return Failure(f"alive, but gives no answer: {error}")
        return Crash(f"crashed, {self.provider.how_it_ended()}" + listed(self.provider.foreign_lines()))

    def restart(self):
        self.provider.kill()
        self.provider.end()
        self.provider.foreign_lines()
        self.provider = Provider(self.arguments.program, self.bus, self.folder)

    def find_message(self, failure, first, count):
        """The index of the message that does the same by itself, or None."""
        for index in range(first, first + count):
            try:
                self.send(index, 1)
            except Failure as found:
                if isinstance(found, type(failure)):
                    return index
        return None

    def report(self, failure, first, count):
        print(f"FAILED, seed {self.arguments.seed}, messages {first} to {first + count - 1}: {failure}", flush=True)
        self.restart()
        index = self.find_message(failure, first, count)
        if index is None:
            print("no message does it by itself")
            command = f"--first {first} --count {count}"
        else:
            command = f"--first {index} --count 1"
        self.restart()
        print(f"repeat with: provider_bus.py {self.arguments.program} --seed {self.arguments.seed} {command}",
              flush=True)
        self.failures.append(failure)

    def run(self):
        is_in_time = deadline(self.arguments.seconds)
        begin = reported = time.monotonic()
        while self.done < self.arguments.count and is_in_time() and len(self.failures) < self.arguments.failures:
            first = self.arguments.first + self.done
            count = min(self.arguments.batch, self.arguments.count - self.done)
            try:
                self.send(first, count)
            except Failure as failure:
                self.report(failure, first, count)
            self.done += count
            self.resident_mib.append(self.provider.resident_mib())
            if time.monotonic() - reported > self.arguments.progress_s:
                reported = time.monotonic()
                print(f"seed {self.arguments.seed}: {self.done} messages, {reported - begin:.0f} s, "
                      f"{self.resident_mib[-1]:.0f} MiB", flush=True)
        elapsed = time.monotonic() - begin
        self.check_memory()
        code = self.provider.end()
        lines = self.provider.foreign_lines()
        if code != 0 or lines:
            self.failures.append(Failure("end"))
            print(f"FAILED at its end, exit code {code}" + listed(lines))
        self.summary(elapsed)

    def check_memory(self):
        quarter = len(self.resident_mib) // 4
        if quarter == 0 or self.failures:
            return
        early = min(self.resident_mib[quarter:2 * quarter])
        late = min(self.resident_mib[-quarter:])
        if late > early * GROWTH + GROWTH_MIB:
            self.failures.append(Failure("memory"))
            print(f"FAILED: the memory grows from {early:.0f} to {late:.0f} MiB")

    def summary(self, elapsed):
        memory = self.resident_mib or [0]
        at = [memory[0], memory[len(memory) // 4], memory[-1]]
        crashes = self.crashes()
        line = (f"seed {self.arguments.seed}: {self.done} messages in {elapsed:.0f} s, {self.events} events, "
                f"{crashes} crashes, {len(self.failures) - crashes} other failures, "
                f"longest answer {self.longest_answer_s:.2f} s, "
                "resident at start/quarter/end " + "/".join(f"{value:.0f}" for value in at) + " MiB")
        print(line, flush=True)
        if self.arguments.summary:
            with open(self.arguments.summary, "w", encoding="utf-8") as file:
                file.write(line + "\n")

    def crashes(self):
        return sum(isinstance(failure, Crash) for failure in self.failures)

    def end(self):
        self.service.kill()
        self.service.wait()
        self.service.stdout.close()
        self.bus.end()


def write_configuration(root):
    folder = os.path.join(root, CONFIGURATION_FOLDER)
    os.makedirs(folder, exist_ok=True)
    # At once, because another run beside this one may read it.
    with tempfile.NamedTemporaryFile("w", dir=folder, delete=False, encoding="utf-8") as file:
        file.write(CONFIGURATION)
    os.replace(file.name, os.path.join(folder, CONFIGURATION_INSTANCE + ".json"))


def main():
    if sys.argv[1:2] == ["--count-events"]:
        count_events(sys.argv[2])
        return 0
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="the provider")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="index of the first message")
    parser.add_argument("--count", type=int, default=5000, help="how many messages")
    parser.add_argument("--batch", type=int, default=1000, help="messages between two looks at the provider")
    parser.add_argument("--seconds", type=float, default=3600, help="the longest time; then fewer messages are sent")
    parser.add_argument("--answer-s", type=float, default=5, help="the longest time for an answer")
    parser.add_argument("--progress-s", type=float, default=30, help="time between two lines of progress")
    parser.add_argument("--failures", type=int, default=5, help="give up after so many")
    parser.add_argument("--configuration", help="the provider's configuration folder; an instance is put there")
    parser.add_argument("--summary", help="a file that gets the last line too")
    parser.add_argument("--expect-crash", action="store_true", help="succeed when the provider crashes, and only then")
    arguments = parser.parse_args()
    if arguments.configuration:
        write_configuration(arguments.configuration)
    with tempfile.TemporaryDirectory(prefix="provider-fuzz-") as folder:
        harness = Harness(arguments, folder)
        try:
            harness.run()
        finally:
            harness.end()
    return 0 if (harness.crashes() > 0 if arguments.expect_crash else not harness.failures) else 1


if __name__ == "__main__":
    sys.exit(main())
