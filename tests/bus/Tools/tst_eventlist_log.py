#!/usr/bin/python3
"""`eventlist log`: what a script sends is what stands in the list."""

import unittest

from device import Device

ICONS = {("alarm", "on"): "EventlistAlarmOn", ("alarm", "off"): "EventlistAlarmOff", ("alarm", "none"): "",
         ("fault", "on"): "EventlistFaultOn", ("fault", "off"): "EventlistFaultOff", ("fault", "none"): "",
         ("audit", "none"): "EventlistAuditTrail", ("audit", "on"): "", ("audit", "off"): "",
         ("event", "none"): "EventlistEvent", ("event", "on"): "EventlistEventOn",
         ("event", "off"): "EventlistEventOff"}
NUMBERS = {"alarm": 0, "audit": 1, "fault": 2, "event": 3, "none": 0, "on": 1, "off": 2}


class EventlistLog(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.device = cls.enterClassContext(Device())
        cls.device.start_service()

    def log(self, *words):
        done = self.device.eventlist("log", *words)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        return [event for event in self.device.events() if event["ModuleName"] != "EventlistHandler"][-1]

    def test_sends_a_text_as_a_plain_event(self):
        event = self.log("Backup fertig: 100 % – „gut“")
        self.assertEqual(event["Description"], {"lang_en": "Backup fertig: 100 % – „gut“"})
        self.assertEqual({key: event[key] for key in ("EventType", "State", "IconType", "ModuleName", "User",
                                                      "KeywordName", "EventId", "AlarmID")},
                         {"EventType": 3, "State": 0, "IconType": "EventlistEvent", "ModuleName": "eventlist",
                          "User": "", "KeywordName": [], "EventId": "", "AlarmID": ""})

    def test_sends_every_type_and_state_with_its_icon(self):
        for (kind, state), icon in ICONS.items():
            with self.subTest(kind=kind, state=state):
                event = self.log("--type", kind, "--state", state, f"{kind} {state}")
                self.assertEqual((event["EventType"], event["State"], event["IconType"]),
                                 (NUMBERS[kind], NUMBERS[state], icon))

    def test_sends_what_the_options_say(self):
        event = self.log("-m", "Pump", "-u", "anna", "-k", "Error", "-k", "USB", "--event-id", "Pump/X", "--alarm-id",
                         "id 7", "--icon", "MyIcon", "-t", "alarm", "text")
        self.assertEqual({key: event[key] for key in ("IconType", "ModuleName", "User", "KeywordName", "EventId",
                                                      "AlarmID", "State")},
                         {"IconType": "MyIcon", "ModuleName": "Pump", "User": "anna", "KeywordName": ["Error", "USB"],
                          "EventId": "Pump/X", "AlarmID": "id 7", "State": 1})

    def test_ends_an_alarm_with_the_words_that_began_it(self):
        self.log("--type", "alarm", "--module", "cellar", "Water")
        self.assertEqual([alarm["ModuleName"] for alarm in self.device.alarms() if alarm["AlarmActive"]
                          and alarm["ModuleName"] == "cellar"], ["cellar"])
        self.log("--type", "alarm", "--module", "cellar", "--state", "off", "Water")
        self.assertEqual([alarm["AlarmActive"] for alarm in self.device.alarms()
                          if alarm["ModuleName"] == "cellar"], [False])

    def test_gives_other_words_and_other_modules_another_alarm_id(self):
        ids = {self.log("--type", "fault", *words)["AlarmID"]
               for words in (("a",), ("b",), ("--module", "M", "a"), ("--event-id", "U", "a"))}
        self.assertEqual(len(ids), 4)
        for alarm_id in ids:
            self.assertRegex(alarm_id, r"^\{[0-9a-f-]{36}\}$")

    def test_sends_texts_in_languages_with_arguments(self):
        event = self.log("--text", "de=Tür %1 offen", "--text", "lang_en=Door %1 open", "--arg", "%1=7=x")
        self.assertEqual(event["Description"], {"lang_de": "Tür 7=x offen", "lang_en": "Door 7=x open"})
        self.assertEqual(event["MetaData"], {
            "Arguments": {"%1": {"type": "string", "value": "7=x"}},
            "DescriptionScheme": {"lang_de": "Tür %1 offen", "lang_en": "Door %1 open"}})

    def test_sends_a_text_of_language_files(self):
        event = self.log("--texts", self.device.texts, "--url", "EventlistHandler/SystemWatchdog", "--arg", "%1=Pump")
        self.assertEqual(sorted(event["Description"]), ["lang_de", "lang_en", "lang_fr"])
        self.assertEqual(event["Description"]["lang_en"], "System watchdog triggered: Pump")
        self.assertEqual(event["EventId"], "EventlistHandler/SystemWatchdog")

    def test_refuses_a_url_without_a_text(self):
        done = self.device.eventlist("log", "--texts", self.device.texts, "--url", "No/Such")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("has a text 'No/Such'", done.stderr)

    def test_keeps_every_one_of_many_events_of_short_processes(self):
        for number in range(50):
            self.assertEqual(self.device.eventlist("log", "--module", "Burst", f"event {number}").returncode, 0)
        self.assertEqual([event["Description"]["lang_en"] for event in self.device.events("--module", "Burst")],
                         [f"event {number}" for number in range(50)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
