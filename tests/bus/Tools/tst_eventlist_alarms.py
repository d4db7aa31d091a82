#!/usr/bin/python3
"""`eventlist alarms` and `eventlist ack`: an alarm from its coming to its going."""

import json
import re
import unittest

from device import Device, wait_until

PUMP = "{6f1c2a8e-3b0d-4e57-9a41-0d2c7be41f05}"
VALVE = "{6f1c2a8e-ffff-4e57-9a41-0d2c7be41f05}"
FAULT = "{11111111-3b0d-4e57-9a41-0d2c7be41f05}"


def detector(program):
    """What has been told about the central detector."""
    return re.findall(r"^Central detector: (off|ON)\. ?.*\n", program.out, re.M)


class EventlistAlarms(unittest.TestCase):
    def setUp(self):
        self.device = self.enterContext(Device())
        self.device.start_service()

    def alarm(self, alarm_id, text, state, kind=0):
        self.device.log(text, kind=kind, state=state, module="Plant", alarm_id=alarm_id)

    def rows(self):
        lines = self.device.eventlist("alarms", "--language", "en").stdout.splitlines()
        return [line.split() for line in lines[1:-1]], lines[-1]

    def test_shows_what_is_urgent_first_and_marks_it(self):
        self.alarm(PUMP, "pump", 1)
        self.alarm(VALVE, "valve", 1)
        self.alarm(FAULT, "fault", 1, kind=2)
        self.alarm(VALVE, "valve", 2)
        self.assertEqual(self.device.eventlist("ack", FAULT, "--user", "anna").returncode, 0)
        rows, detector = self.rows()
        self.assertEqual([row[0] for row in rows], ["!!", "!", "!"])
        self.assertEqual([row[1] for row in rows], ["6f1c2a8e-3", "11111111", "6f1c2a8e-f"])
        self.assertEqual([row[4:] for row in rows], [["alarm", "ON", "no", "Plant", "pump"],
                                                     ["fault", "ON", "anna", "Plant", "fault"],
                                                     ["alarm", "off", "no", "Plant", "valve"]])
        self.assertEqual(detector, "Central detector: ON. Silence it with 'eventlist ack --central'.")

    def test_says_when_the_list_is_empty(self):
        done = self.device.eventlist("alarms")
        self.assertEqual((done.returncode, done.stdout), (0, "The alarm list is empty.\nCentral detector: off.\n"))
        self.assertEqual(self.device.alarms(), [])

    def test_gives_programs_the_state_of_each_alarm(self):
        self.alarm(PUMP, "pump", 1)
        alarm = self.device.alarms()[0]
        self.assertEqual((alarm["AlarmID"], alarm["AlarmActive"], alarm["AlarmAcknowledgment"]), (PUMP, True, False))

    def test_acknowledges_exactly_what_was_named_and_leaves_a_trace(self):
        self.alarm(PUMP, "pump", 1)
        self.alarm(VALVE, "valve", 1)
        done = self.device.eventlist("ack", "6f1c2a8e-3", "--user", "anna", environment={"LC_ALL": "en_GB.UTF-8"})
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "acknowledged by anna: pump\n", ""))
        self.assertEqual({alarm["AlarmID"]: (alarm["AlarmAcknowledgment"], alarm["AcknowledgedBy"])
                          for alarm in self.device.alarms()}, {PUMP: (True, "anna"), VALVE: (False, "")})
        entry = self.device.events("--type", "audit", "--module", "eventlist", "--language", "en")[0]
        self.assertEqual((entry["User"], entry["EventId"], entry["Description"]),
                         ("anna", "GlobalAuditTrailTexts/AlarmsAcknowledged",
                          "Alarms acknowledged via eventlist: pump"))
        self.assertIn("AlarmAck", entry["KeywordName"])

    def test_removes_an_alarm_that_is_gone_and_acknowledged(self):
        self.alarm(PUMP, "pump", 1)
        self.alarm(PUMP, "pump", 2)
        self.assertEqual(self.device.eventlist("ack", PUMP).returncode, 0)
        self.assertEqual(self.device.alarms(), [])

    def test_acknowledges_nothing_when_one_id_is_unknown_or_ambiguous(self):
        self.alarm(PUMP, "pump", 1)
        self.alarm(VALVE, "valve", 1)
        for ids, words in (((PUMP, "nobody"), "there is no alarm 'nobody' in the alarm list"),
                           (("6f1c2a8e",), "'6f1c2a8e' could be any of 2 alarms")):
            with self.subTest(ids=ids):
                done = self.device.eventlist("ack", *ids, "--user", "anna")
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertIn(words, done.stderr)
                self.assertIn("Nothing was acknowledged", done.stderr)
        self.assertEqual([alarm["AlarmAcknowledgment"] for alarm in self.device.alarms()], [False, False])
        self.assertEqual(self.device.events("--type", "audit"), [])

    def test_silences_the_central_detector(self):
        self.alarm(PUMP, "pump", 1)
        done = self.device.eventlist("ack", "--central", "--user", "anna")
        self.assertEqual((done.returncode, done.stdout), (0, "central detector acknowledged by anna\n"))
        self.assertTrue(self.device.eventlist("alarms").stdout.endswith("Central detector: off.\n"))

    def test_follows_every_change(self):
        program = self.device.start_eventlist("alarms", "--follow", "--language", "en")
        program.wait_for("The alarm list is empty.\nCentral detector: off.\n")

        def change(what, act):
            act()
            program.wait_for(f" {what} ")
        # The subscription is there before the first answer, so that nothing can be missed.
        change("came", lambda: self.alarm(PUMP, "pump", 1))
        program.wait_for("Central detector: ON")
        change("acknowledged", lambda: self.device.eventlist("ack", PUMP))
        self.device.eventlist("ack", "--central")
        wait_until(lambda: program.read() or detector(program) == ["off", "ON", "off"], "the horn is silent")
        change("left list", lambda: self.alarm(PUMP, "pump", 2))
        changes = [line.split("  ")[1].strip() for line in program.lines() if line.endswith("  pump")]
        self.assertEqual(changes, ["came", "acknowledged", "left list"])
        self.assertEqual(detector(program), ["off", "ON", "off"])

    def test_follows_with_a_central_detector_that_is_on_already(self):
        self.alarm(PUMP, "pump", 1)
        wait_until(self.device.alarms, "the alarm is there")
        program = self.device.start_eventlist("alarms", "--follow", "--language", "en")
        program.wait_for("Central detector: ON. Silence it with 'eventlist ack --central'.\n")
        self.assertIn("pump", program.lines()[1])
        self.device.kill_service()
        program.wait_for("waiting for it", "err")
        self.device.start_service()
        wait_until(lambda: program.read() or detector(program) == ["ON", "ON"], "the state is told again")
        self.assertEqual(self.device.eventlist("ack", "--central").returncode, 0)
        program.wait_for("Central detector: off.\n")
        self.assertEqual(detector(program), ["ON", "ON", "off"])

    def test_tells_programs_the_state_of_the_central_detector_at_once(self):
        program = self.device.start_eventlist("alarms", "--follow", "--json")
        program.wait_for('{"Change":"central detector","CentralDetector":false}\n')
        self.alarm(PUMP, "pump", 1)
        program.wait_for('{"Change":"central detector","CentralDetector":true}\n')

    def test_follows_on_after_a_restart_of_the_service(self):
        self.alarm(PUMP, "pump", 1)
        program = self.device.start_eventlist("alarms", "--follow", "--json")
        program.wait_for('{"Change":"is there",')
        self.device.kill_service()
        program.wait_for("waiting for it", "err")
        self.device.start_service()
        self.alarm(VALVE, "valve", 1)
        program.wait_for('{"Change":"came",')
        self.alarm(PUMP, "pump", 2)
        program.wait_for('{"Change":"gone",')
        changes = [json.loads(line) for line in program.lines()]
        self.assertEqual([(change["Change"], change.get("AlarmID")) for change in changes
                          if change["Change"] != "central detector"],
                         [("is there", PUMP), ("came", VALVE), ("gone", PUMP)])

    def test_shows_hostile_texts_escaped(self):
        self.alarm("{\x1b]0;x}", "\u202eevil\x1b[2J", 1)
        text = self.device.eventlist("alarms").stdout
        self.assertIn("\\u202eevil\\u001b[2J", text)
        self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f\u202e]")
        wait_until(lambda: self.device.alarms(), "the alarm is there")


if __name__ == "__main__":
    unittest.main(verbosity=2)
