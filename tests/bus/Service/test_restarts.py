"""Restarts of the central service, and of the bus, by kill -9 while modules go on.

Two modules that are built on the library follow both lists, one by signals and one by polling. A third
one logs an event each millisecond, through all restarts. In each round an alarm comes and is
acknowledged, and the horn is silenced; the service is killed and started; the acknowledgement is looked
for; the alarm goes.

When the bus is killed, a provider is there as well, through which a client logs.

It makes 20 rounds. EVENTLISTHANDLER_TEST_RESTARTS sets another number:

    EVENTLISTHANDLER_TEST_RESTARTS=200 ctest --test-dir build/development -R test_restarts -V
"""

import itertools
import os
import subprocess
import threading
import time
import unittest

import dbus.bus
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from service_harness import BUS_NAME, DEADLINE_S, Client, ServiceTest, wait_for

ROUNDS = int(os.environ.get("EVENTLISTHANDLER_TEST_RESTARTS", "20"))
SUBSCRIBER = os.environ["EVENTLISTHANDLER_LIST_SUBSCRIBER"]
TRAFFIC = os.environ["EVENTLISTHANDLER_STEADY_MODULE"]
PROVIDER = os.environ["EVENTLISTHANDLER_PUMP_PROVIDER"]
PROVIDER_NAME = BUS_NAME.rpartition(".")[0] + ".PumpControl"

LIST = "changedAlarmlist"
ALARM = "changedAlarmInAlarmlist"
ACTIVE_ALARM = "changedActiveAlarmInAlarmlist"
FAULT = "changedFaultInAlarmlist"
ACTIVE_FAULT = "changedActiveFaultInAlarmlist"
DETECTOR = "changedCentralDetector"
EVENTLIST = "changedEventlist"


class Module:
    """A process on the bus that lives until its standard input ends."""

    def __init__(self, bus, *command):
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.address)
        self._process = subprocess.Popen(command, env=environment, stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.lines = []
        self.errors = []
        self._readers = [
            threading.Thread(target=self._read, args=(self._process.stdout, self.lines), daemon=True),
            threading.Thread(target=self._read, args=(self._process.stderr, self.errors), daemon=True)]
        for reader in self._readers:
            reader.start()

    @staticmethod
    def _read(stream, lines):
        for line in stream:
            lines.append(line.decode().rstrip("\n"))

    def is_running(self):
        return self._process.poll() is None

    def end(self):
        """Ends its input and returns its exit code."""
        if not self._process.stdin.closed:
            self._process.stdin.close()
        try:
            code = self._process.wait(DEADLINE_S)
        finally:
            self.kill()
        return code

    def kill(self):
        if self.is_running():
            self._process.kill()
            self._process.wait()
        for reader in self._readers:
            reader.join(DEADLINE_S)
        for stream in (self._process.stdin, self._process.stdout, self._process.stderr):
            stream.close()


class Witness:
    """Writes down what stands on the wire, whoever has sent it, in the form of the subscribers."""

    def __init__(self, bus):
        self.connection = dbus.bus.BusConnection(bus.address, mainloop=DBusGMainLoop())
        self.connection.set_exit_on_disconnect(False)
        self._lines = []
        for interface in ("Interface.EventlistRead", "Interface.AlarmlistRead"):
            self.connection.add_signal_receiver(self._record, dbus_interface=interface,
                                                member_keyword="member")
        # The daemon has taken the rules when it has answered something that came after them.
        self.connection.get_name_owner("org.freedesktop.DBus")

    def _record(self, *arguments, member):
        self._lines.append(" ".join([str(member)] + [str(int(value)) for value in arguments]))

    @property
    def lines(self):
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass
        return self._lines


def of_signal(lines, name):
    return [line for line in lines if line.split(" ")[0] == name]


class Restarts(ServiceTest):
    def start(self, *command):
        module = Module(self.bus, *command)
        self.addCleanup(module.kill)
        return module


class ServiceRestarts(Restarts):
    def setUp(self):
        super().setUp()
        self.witness = Witness(self.bus)
        self.addCleanup(self.witness.connection.close)
        self.subscribers = {mode: self.start(SUBSCRIBER, mode) for mode in ("signals", "polling")}
        for module in self.subscribers.values():
            wait_for(lambda module=module: module.lines == ["ready"], "subscribed")
            module.lines.clear()
        self.witness.lines.clear()
        # All that must have been told of the alarm list until now.
        self.told = {name: [] for name in (LIST, ALARM, ACTIVE_ALARM, FAULT, ACTIVE_FAULT, DETECTOR)}

    def expect(self, what, *lines):
        """Waits until the change is told; what is doubled stands there with the next one at latest."""
        for line in lines:
            self.told[line.split(" ")[0]].append(line)

        def is_told(source):
            now = list(source.lines)
            return all(len(of_signal(now, name)) >= len(wanted) for name, wanted in self.told.items())
        for mode, source in dict(self.subscribers, witness=self.witness).items():
            wait_for(lambda source=source: is_told(source), "%s told by %s" % (what, mode))
            now = list(source.lines)
            for name, wanted in self.told.items():
                self.assertEqual(of_signal(now, name), wanted, (what, mode))

    def expect_news_of_the_event_list(self, known):
        for mode, source in self.subscribers.items():
            wait_for(lambda source=source, mode=mode:
                     len(of_signal(list(source.lines), EVENTLIST)) > known[mode],
                     "the event list has changed, told by " + mode)

    def count_news_of_the_event_list(self):
        return {mode: len(of_signal(list(source.lines), EVENTLIST))
                for mode, source in self.subscribers.items()}

    def alarms(self):
        answers = []

        def is_answered():
            # On a busy machine the query right after a restart takes longer than one client is granted a second.
            try:
                answers.append(self.client.alarms())
            except dbus.DBusException as error:
                self.assertEqual(error.get_dbus_name(), "org.freedesktop.DBus.Error.LimitsExceeded")
            return bool(answers)

        wait_for(is_answered, "the alarm list is told")
        return [(row["AlarmID"], row["AlarmActive"], row["AlarmAcknowledgment"], row["AcknowledgedBy"])
                for row in answers[0].rows]

    def restart(self):
        self.service.kill()
        known = self.count_news_of_the_event_list()
        self.service.start()
        # It cannot know what it had told before it was killed, so it tells every state anew.
        self.expect("restart", LIST, ALARM + " 1", ACTIVE_ALARM + " 1", FAULT + " 0",
                    ACTIVE_FAULT + " 0", DETECTOR + " 0")
        self.expect_news_of_the_event_list(known)

    def test_nothing_subscribed_or_acknowledged_is_lost_and_nothing_is_told_twice(self):
        traffic = self.start(TRAFFIC)
        begin = time.monotonic()
        for number in range(ROUNDS):
            id_, user = "alarm%d" % number, "user%d" % number
            self.client.log_event(type_=0, state=1, alarm_id=id_)
            self.expect("alarm", LIST, ALARM + " 1", ACTIVE_ALARM + " 1", DETECTOR + " 1")
            self.client.acknowledge([id_], user)
            self.expect("acknowledgement", LIST)
            self.client.acknowledge_central(user)
            self.expect("silence", DETECTOR + " 0")
            self.restart()
            self.assertEqual(self.alarms(), [(id_, "1", "1", user)])
            self.client.log_event(type_=0, state=2, alarm_id=id_)
            self.expect("end of the alarm", LIST, ACTIVE_ALARM + " 0", ALARM + " 0")
            self.assertEqual(self.alarms(), [])
            self.assertTrue(traffic.is_running())
        seconds = time.monotonic() - begin
        kept, sent, refused = self.check_traffic(traffic)
        self.assertEqual(self.service.stop(), 0)
        heard, polled, on_wire = self.check_all_signals()
        print("%d restarts in %.1f s: %d changes of alarms heard and polled, each once; "
              "changedEventlist: %d on the wire, %d heard, %d polled; "
              "traffic: %d events sent, %d refused meanwhile, %d in the list"
              % (ROUNDS, seconds, sum(map(len, self.told.values())), on_wire, heard, polled,
                 sent, refused, kept))

    def check_traffic(self, traffic):
        """What the module has logged stands in the list once and in order."""
        self.assertEqual(traffic.end(), 0)
        self.assertEqual(traffic.errors, [])
        report = dict(line.partition(" ")[::2] for line in traffic.lines)
        sent, refused = int(report["sent"]), report["refused"].split()
        numbers = self.logged_numbers()
        self.assertEqual(numbers, sorted(set(numbers)))
        self.assertTrue(numbers)
        self.assertFalse(set(map(int, refused)) & set(numbers))
        return len(numbers), sent, len(refused)

    def logged_numbers(self):
        numbers, first = [], 0
        while True:
            rows = self.client.part_by_id(first, 2 ** 62, modules=["Steady"],
                                          columns=["EventlistId", "User"], number=50000,
                                          oldest_first=True).rows
            if not rows:
                return numbers
            numbers += [int(row["User"]) for row in rows]
            first = int(rows[-1]["EventlistId"]) + 1

    def check_all_signals(self):
        """The service is gone: whoever has been told less or more than the wire stays so."""
        signals, polling = (self.subscribers[mode] for mode in ("signals", "polling"))
        wait_for(lambda: len(signals.lines) >= len(self.witness.lines), "all signals heard")
        for module in self.subscribers.values():
            self.assertEqual(module.end(), 0)
            self.assertEqual(module.errors, [])
        self.assertEqual(signals.lines, self.witness.lines)
        for name, wanted in self.told.items():
            self.assertEqual(of_signal(polling.lines, name), wanted)
        polled = len(of_signal(polling.lines, EVENTLIST))
        on_wire = len(of_signal(self.witness.lines, EVENTLIST))
        # Two that come between two looks are one.
        self.assertLessEqual(polled, on_wire)
        return len(of_signal(signals.lines, EVENTLIST)), polled, on_wire


class BusRestarts(Restarts):
    def setUp(self):
        super().setUp()
        self.subscribers = {mode: self.start(SUBSCRIBER, mode) for mode in ("signals", "polling")}
        for module in self.subscribers.values():
            wait_for(lambda module=module: module.lines == ["ready"], "subscribed")
        self.provider = self.start(PROVIDER)
        wait_for(lambda: self.provider.lines, "provided")
        self.calls = 0
        self.taken = 0

    def restart_bus(self, times):
        self.client.close()
        self.bus.kill()
        self.bus.start()
        self.service.wait_ready(times)
        self.client = Client(self.bus)
        self.witness = Witness(self.bus)

    def are_all_told(self, *changes):
        """Makes these changes. Whether all subscribers have been told of them since their lines were cleared."""
        self.client.log_event(type_=0, state=1, alarm_id="probe")
        self.client.acknowledge_central("probe")
        self.client.log_event(type_=0, state=2, alarm_id="probe")
        return all(change in module.lines for module in self.subscribers.values() for change in changes)

    def ask_provider(self):
        """Places a call; true when the provider has taken it, whatever became of the event."""
        self.calls += 1
        text = {"textSource": dbus.Int32(0), "moduleName": "PumpControl", "ObjectName": "PumpControl",
                "InstanceName": "", "url": "PumpControl/Started"}
        message = dbus.lowlevel.MethodCallMessage(PROVIDER_NAME, "/Events", "Interface.Events", "logEvent")
        message.append(["3", "0", "EventlistEvent"], "2026-03-14T09:26:53.589+01:00", "caller",
                       dbus.Dictionary(text, signature="sv"), ["Status"], str(self.calls), "",
                       signature="asssa{sv}asss")
        try:
            self.client.connection.send_message_with_reply_and_block(message, DEADLINE_S)
        except dbus.DBusException as error:
            self.assertEqual(error.get_dbus_name(), "org.freedesktop.DBus.Error.ServiceUnknown")
            return False
        self.taken += 1
        return True

    def provided_events(self):
        return [row["User"] for row in self.client.part_by_id(0, 2 ** 62, modules=["caller"],
                                                             columns=["User"], oldest_first=True).rows]

    def test_everybody_hears_and_is_heard_again(self):
        for number in range(1, ROUNDS + 1):
            with self.subTest(restart=number):
                self.restart_bus(number + 1)
                self.check_subscribers()
                self.check_provider()
        # The service takes no call before the one that comes after it.
        provided = self.provided_events()
        refused = len(self.provider.errors) // 2
        self.assertEqual(len(provided), len(set(provided)))
        self.assertEqual(len(provided) + refused, self.taken)
        for module in (self.provider, *self.subscribers.values()):
            self.assertEqual(module.end(), 0)
        for mode, module in self.subscribers.items():
            self.assertEqual(module.errors, [], mode)
        print("%d restarts of the bus: %d calls of the provider, %d taken: %d events in the list, %d refused with a "
              "warning" % (ROUNDS, self.calls, self.taken, len(provided), refused))

    def check_subscribers(self):
        for module in self.subscribers.values():
            module.lines.clear()
        # Subscriptions are made one by one, those to the detector and to the event list behind all others; a change
        # that comes between two of them is heard in part.
        wait_for(lambda: self.are_all_told(ACTIVE_ALARM + " 0", DETECTOR + " 0", EVENTLIST),
                 "everybody has subscribed again")
        # From here on nobody misses anything, and nobody is told twice.
        self.client.log_event(type_=2, state=1, alarm_id="fault")
        self.expect_faults(ACTIVE_FAULT + " 1", FAULT + " 1")
        self.client.acknowledge(["fault"])
        self.client.log_event(type_=2, state=2, alarm_id="fault")
        self.expect_faults(ACTIVE_FAULT + " 0", ACTIVE_FAULT + " 1", FAULT + " 0", FAULT + " 1")
        wait_for(self.is_heard_as_on_the_wire, "all is heard, once and in order")

    def is_heard_as_on_the_wire(self):
        def since_the_fault(source):
            told = [line for line in list(source.lines) if not line.startswith(EVENTLIST)]
            return list(itertools.dropwhile(lambda line: line not in (FAULT + " 1", ACTIVE_FAULT + " 1"), told))
        return since_the_fault(self.subscribers["signals"]) == since_the_fault(self.witness)

    def expect_faults(self, *changes):
        for mode, source in dict(self.subscribers, witness=self.witness).items():
            def faults(source=source):
                told = [line for line in list(source.lines) if line.split(" ")[0] in (FAULT, ACTIVE_FAULT)]
                # The service tells all states anew when it comes back to the bus.
                return sorted(itertools.dropwhile(lambda line: line.endswith(" 0"), told))
            wait_for(lambda faults=faults: len(faults()) >= len(changes), "the fault is told by " + mode)
            self.assertEqual(faults(), list(changes), mode)

    def check_provider(self):
        known = len(self.provided_events())
        wait_for(lambda: self.ask_provider() and len(self.provided_events()) > known, "the provider logs again")


if __name__ == "__main__":
    unittest.main()
