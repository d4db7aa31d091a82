#!/usr/bin/python3
"""How a module is tested from outside, in Python: the program itself, on a bus of its own, beside a central service
made of the template for python-dbusmock.

    MACHINEWATCH=build/machinewatch TEMPLATE=/usr/share/EventlistHandler/dbusmock/eventlisthandler.py \\
        ./test_machinewatch.py
"""

import json
import os
import subprocess
import unittest

import dbus
import dbusmock


class MachineWatchTest(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()

    def setUp(self):
        service, main_object = self.spawn_server_template(os.environ["TEMPLATE"], {}, stdout=subprocess.DEVNULL)
        self.addCleanup(self.end, service)
        self.mock = dbus.Interface(main_object, dbusmock.MOCK_IFACE)
        bus = self.get_dbus(system_bus=True)
        self.acknowledge = dbus.Interface(bus.get_object("org.eventlist.EventlistHandler", "/AlarmlistWrite"),
                                          "Interface.AlarmlistWrite")
        self.alarms = dbus.Interface(bus.get_object("org.eventlist.EventlistHandler", "/AlarmlistRead"),
                                     "Interface.AlarmlistRead")
        self.module = subprocess.Popen([os.environ["MACHINEWATCH"]], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       text=True)
        self.addCleanup(self.end, self.module)
        self.read_line()  # it watches
        self.type("look")  # and what it has logged so far is with the bus

    @staticmethod
    def end(process):
        process.terminate()
        process.wait()
        for stream in (process.stdin, process.stdout):
            if stream:
                stream.close()

    def read_line(self):
        return self.module.stdout.readline()

    def type(self, command):
        """Types a command, and waits until the module says that its events are with the bus."""
        self.module.stdin.write(command + "\n")
        self.module.stdin.flush()
        self.read_line()

    def events(self, event_id):
        return [event for event in json.loads(self.mock.GetEvents()) if event["eventId"] == event_id]

    def rows(self):
        answer = self.alarms.getCompleteAlarmlist("lang_en")
        return [dict(zip(answer["header"], row)) for row in answer["data"]]

    def test_reports_its_start_in_three_languages(self):
        [started] = self.events("MachineWatch/Started")
        self.assertEqual(sorted(started["texts"]), ["lang_de", "lang_en", "lang_fr"])
        self.assertEqual(started["module"], "MachineWatch")

    def test_an_alarm_stays_until_it_has_gone_and_is_acknowledged(self):
        self.type("limit memory 0 anna")
        [alarm] = self.rows()
        self.assertEqual((alarm["EventId"], alarm["AlarmActive"]), ("MachineWatch/LimitExceeded", "1"))
        self.assertTrue(alarm["Description"].startswith("Memory use is above its limit"), alarm["Description"])

        self.type("limit memory 100 anna")
        [gone] = self.rows()
        self.assertEqual((gone["AlarmID"], gone["AlarmActive"]), (alarm["AlarmID"], "0"))

        self.acknowledge.acknowledgeVisualAlarm([alarm["AlarmID"]], "bert")
        self.assertEqual(self.rows(), [])

    def test_names_the_user_who_changes_a_limit(self):
        self.type("limit disk 90 anna")
        [change] = self.events("MachineWatch/LimitChanged")
        self.assertEqual((change["type"], change["user"]), (1, "anna"))
        self.assertEqual(change["metaData"]["Arguments"]["%3"], {"type": "string", "value": "90.0 %"})


if __name__ == "__main__":
    unittest.main(verbosity=2)
