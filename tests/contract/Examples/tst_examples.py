#!/usr/bin/python3
"""Runs every example and looks for its events in the list or in the spool folder."""

import json
import os
import re
import signal
import unittest
from pathlib import Path

from device import Device, wait_until

EXAMPLES = Path(os.environ["EXAMPLES"])
SOURCES = Path(os.environ["EXAMPLE_SOURCES"])
SPOOL = Path(os.environ["EVENTLISTHANDLER_SPOOL"])

OVERTEMPERATURE = {"lang_de": "Übertemperatur an Pumpe 3: 97.5\u00a0°C",
                   "lang_en": "Overtemperature at pump 3: 97.5 °C",
                   "lang_fr": "Surchauffe de la pompe 3\u00a0: 97.5\u00a0°C"}
FIRMWARE = "Firmware"


class Examples(unittest.TestCase):
    def setUp(self):
        # What another test has left is none of ours.
        for file in SPOOL.glob("*.event.json"):
            file.unlink()
        self.device = self.enterContext(Device(spool=SPOOL))
        self.device.start_service()

    def run_example(self, name, *words, text=None):
        done = self.device.run(EXAMPLES / name, *words, input=text)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def events(self, *words):
        return [event for event in self.device.events(*words) if event["ModuleName"] != "EventlistHandler"]

    def spooled(self):
        """Whatever lies there, beside the folders of the service."""
        return [path.name for path in SPOOL.iterdir() if not path.is_dir()]

    def one_event(self):
        events = self.events()
        self.assertEqual(len(events), 1, events)
        return events[0]

    def check(self, event, **wanted):
        self.assertEqual({key: event[key] for key in wanted}, wanted)

    def test_alarm_comes_and_goes_at_its_limit(self):
        self.run_example("alarm", text="21.0\n97.5\n98.1\n40.0\n")
        came, went = self.events()
        self.check(came, EventType=0, State=1, ModuleName="PumpControl", EventId="PumpControl/OverTemperature",
                   IconType="EventlistAlarmOn", KeywordName=["Error", FIRMWARE], Description=OVERTEMPERATURE, User="")
        self.check(went, EventType=0, State=2, AlarmID=came["AlarmID"])
        self.assertRegex(came["AlarmID"], r"^\{[0-9a-f-]{36}\}$")
        self.assertEqual(len(self.device.alarms()), 1)

    def test_fault_is_there_while_the_sensor_is_missing(self):
        sensor = self.device.folder / "sensor"
        program = self.device.start(EXAMPLES / "fault", sensor)
        wait_until(self.events, "the fault is in the list")
        sensor.touch()
        program.type("look again\n")
        wait_until(lambda: len(self.events()) == 2, "the fault is gone")
        program.end_input()
        self.assertEqual((program.wait(), program.err), (0, ""))
        came, went = self.events()
        self.check(came, EventType=2, State=1, EventId="PumpControl/SensorMissing", KeywordName=["Observer", FIRMWARE])
        self.check(went, EventType=2, State=2, AlarmID=came["AlarmID"])
        self.assertEqual(came["Description"]["lang_en"], f"The temperature sensor is missing: {sensor}")

    def test_event_with_arguments_has_one_for_each_language_and_one_for_all(self):
        self.run_example("event_with_arguments")
        event = self.one_event()
        self.check(event, EventType=3, State=0, EventId="PumpControl/Started",
                   Description={"lang_de": "Pumpe 3 gestartet, Drehzahl 1450 1/min",
                                "lang_en": "pump 3 started, speed 1450 1/min",
                                "lang_fr": "Démarrage de la pompe 3, vitesse 1450 1/min"})
        self.assertEqual(event["MetaData"]["Arguments"]["%2"], {"type": "string", "value": "1450 1/min"})
        self.assertEqual(event["MetaData"]["Arguments"]["%1"]["type"], "text")

    def test_audit_trail_names_the_user(self):
        self.run_example("audit_trail")
        self.check(self.one_event(), EventType=1, State=0, User="anna", EventId="PumpControl/LimitChanged",
                   IconType="EventlistAuditTrail",
                   Description={"lang_de": "Temperaturgrenzwert von 80.0 °C auf 75.0 °C geändert",
                                "lang_en": "Temperature limit changed from 80.0 °C to 75.0 °C",
                                "lang_fr": "Seuil de température modifié de 80.0 °C à 75.0 °C"})

    def test_description_from_configuration_speaks_all_its_languages(self):
        self.run_example("description_from_configuration")
        self.check(self.one_event(), EventType=3, EventId="Messages/Blocked",
                   Description={"lang_de": "Kühlwasserpumpe Halle 2 ist verstopft",
                                "lang_en": "cooling water pump, hall 2 is blocked",
                                "lang_fr": "pompe d'eau de refroidissement, hall 2 : obstruée"})

    def test_emergency_event_lies_in_the_spool_folder_and_becomes_a_sentence(self):
        self.device.stop_service()
        self.device.kill_bus()
        self.run_example("emergency_event", "supervisor", "PumpControl")
        content = json.loads((SPOOL / "logEvent0.event.json").read_text(encoding="utf-8"))
        self.assertEqual(content["MetaData"], {"Arguments": [{"%1": "PumpControl"}]})
        self.assertEqual(content["Description"], "")
        self.device.start_bus()
        self.device.start_service()
        event = wait_until(self.events, "the file is in the list")[0]
        self.check(event, ModuleName="supervisor", EventId="EventlistHandler/SystemWatchdog")
        self.assertEqual({key: "PumpControl" in text for key, text in event["Description"].items()},
                         {"lang_de": True, "lang_en": True, "lang_fr": True})
        wait_until(lambda: not list(SPOOL.glob("*.event.json")), "the file is taken away")

    def test_emergency_event_outlives_a_process_that_is_killed_right_after_it(self):
        self.device.stop_service()
        done = self.device.run(os.environ["EMERGENCY_PROCESS"], environment={"EMERGENCY_EVENT": "kill"})
        self.assertEqual((done.returncode, done.stdout, done.stderr), (-signal.SIGKILL, "", ""))
        self.assertEqual(self.spooled(), ["logEvent0.event.json"])
        self.device.start_service()
        wait_until(self.events, "the file is in the list")
        self.check(self.one_event(), ModuleName="supervisor", EventId="EventlistHandler/SystemWatchdog", EventType=3,
                   State=0, KeywordName=[FIRMWARE])
        wait_until(lambda: not self.spooled(), "the file is taken away")

    def test_panel_hears_alarms_and_the_icon_of_a_source(self):
        panel = self.device.start(EXAMPLES / "panel", "machine/memory")
        panel.wait_for("panel: listening")
        self.assertEqual(panel.lines(), ["panel: at the start, alarms: no", "panel: at the start, the horn: no",
                                         "panel: listening"])
        watch = self.device.start(EXAMPLES / "machinewatch", self.device.folder)
        watch.wait_for("watching:")
        watch.type("limit memory 0.001 anna\n")
        for line in ("an active alarm stands in the list: yes", "an alarm stands in the list: yes",
                     "the horn sounds: yes", "machine/memory shows the icon EventlistAlarmOn"):
            panel.wait_for(f"panel: {line}\n")
        watch.type("limit memory 100 anna\n")
        panel.wait_for("panel: an active alarm stands in the list: no\n")
        panel.wait_for("panel: machine/memory shows the icon EventlistAlarmOff\n")
        # Nobody has acknowledged: who comes now hears of no change, and knows nevertheless.
        late = self.device.start(EXAMPLES / "panel", "machine/memory")
        late.wait_for("panel: at the start, alarms: yes\npanel: at the start, the horn: yes\npanel: listening\n")
        for program in (panel, late, watch):
            program.end_input()
            self.assertEqual((program.wait(), program.err), (0, ""))

    def test_machinewatch_reports_on_both_roads(self):
        folder = self.device.folder / "watched"
        folder.mkdir()
        watch = self.device.start(EXAMPLES / "machinewatch", folder)
        watch.wait_for("watching:")
        self.check(self.one_event(), EventId="MachineWatch/Started", EventType=3, KeywordName=["Boot", FIRMWARE])
        watch.type("limit disk 0.0001 anna\n")
        wait_until(lambda: len(self.events()) == 3, "the alarm is in the list")
        audit, alarm = self.events()[1:]
        self.check(audit, EventType=1, User="anna", EventId="MachineWatch/LimitChanged")
        self.check(alarm, EventType=0, State=1, EventId="MachineWatch/LimitExceeded")
        self.assertRegex(alarm["Description"]["lang_de"],
                         r"^Datenträgerbelegung über dem Grenzwert: \d+\.\d % \(Grenzwert 0\.0 %\)$")

        folder.rmdir()
        watch.type("look\n")
        # Without the folder there is no reading above the limit either.
        wait_until(lambda: len(self.events()) == 5, "the fault is in the list")
        self.assertEqual([(event["EventType"], event["State"]) for event in self.events()[3:]], [(0, 2), (2, 1)])

        watch.type("report\n")
        report = wait_until(lambda: self.events("--event-id", "MachineWatch/Readings"), "the report is in the list")
        self.assertRegex(report[0]["Description"]["lang_en"], r"^Readings: load \d+\.\d, memory in use \d+\.\d %, "
                                                              r"disk in use \? %, up for \d+ h \d\d min$")
        watch.type("untranslated\nquit\n")
        self.assertEqual(watch.wait(), 0)
        self.assertIn('No description data: "MachineWatch/NobodyHasWrittenThisText"', watch.err)
        self.check(self.events()[-1], Description={"lang_en": "MachineWatch/NobodyHasWrittenThisText"})

    def test_provider_logs_the_same_for_clients_in_three_languages(self):
        provider = self.device.start(EXAMPLES / "pump_provider")
        provider.wait_for("pump_provider: offers org.eventlist.PumpControl")
        wait_until(lambda: self.device.connection.name_has_owner("org.eventlist.PumpControl"), "the provider is there")
        modules = {"cpp-client": EXAMPLES / "pump_client", "python-client": SOURCES / "provider" / "client.py",
                   "shell-client": SOURCES / "provider" / "client.sh"}
        for client in modules.values():
            done = self.device.run(client)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
        events = wait_until(lambda: len(self.events()) == 3 and self.events(), "all events are in the list")
        self.assertEqual([event["ModuleName"] for event in events], list(modules))
        for event in events:
            self.check(event, EventType=3, State=0, IconType="EventlistEvent", EventId="PumpControl/OverTemperature",
                       KeywordName=["Status"], User="", AlarmID="", Description=OVERTEMPERATURE,
                       MetaData=events[0]["MetaData"])
            self.assertRegex(event["DateTimeMsUTC"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d$")
        provider.end_input()
        self.assertEqual((provider.wait(), provider.err), (0, ""))


    # The same event for busctl, which wants each array and each variant counted and typed.
    TEXT = ("textSource i 0 moduleName s PumpControl ObjectName s PumpControl InstanceName s".split() + ["", "url", "s"])
    BUSCTL = (["busctl", "--system", "call", "org.eventlist.PumpControl", "/Events", "Interface.Events", "logEvent",
               "asssa{sv}asss", "3", "3", "0", "EventlistEvent", "2026-03-14T09:26:53.589+01:00", "PumpClient", "7"]
              + TEXT + ["PumpControl/OverTemperature", "UrlArguments", "av", "1", "a{sv}", "6"]
              + TEXT + ["PumpControl/Pump3", "Placeholder", "s", "%1"]
              + "Arguments av 1 a{sv} 2 Placeholder s %2 Argument s 97.5".split() + ["1", "Status", "", ""])

    def test_four_kinds_of_clients_leave_the_same_event_through_a_provider(self):
        provider = self.device.start(EXAMPLES / "pump_provider")
        provider.wait_for("pump_provider: offers org.eventlist.PumpControl")
        wait_until(lambda: self.device.connection.name_has_owner("org.eventlist.PumpControl"), "the provider is there")
        clients = {"QtDBus": [EXAMPLES / "pump_client", "PumpClient"],
                   "python": [SOURCES / "provider" / "client.py", "PumpClient"],
                   "gdbus": [SOURCES / "provider" / "client.sh", "PumpClient"],
                   "busctl": self.BUSCTL}
        own = {"EventlistId", "DateTimeMsUTC", "DateTimeLocal", "TimestampUtc", "TimestampOffset"}
        for number, (client, command) in enumerate(clients.items(), 1):
            with self.subTest(client):
                done = self.device.run(*command)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                events = wait_until(lambda number=number: len(self.events()) == number and self.events(),
                                    "the event is in the list")
                columns = {key: value for key, value in events[-1].items() if key not in own}
                self.assertEqual(columns, {
                    "EventType": 3, "State": 0, "IconType": "EventlistEvent", "ModuleName": "PumpClient", "User": "",
                    "EventId": "PumpControl/OverTemperature", "AlarmID": "", "Description": OVERTEMPERATURE,
                    "KeywordName": ["Status"], "MetaData": columns["MetaData"], "SourceHashType": 0,
                    "SourceHashes": ""})
                self.assertEqual(columns["MetaData"], events[0]["MetaData"])
                self.assertEqual(columns["MetaData"]["Arguments"]["%2"], {"type": "string", "value": "97.5"})
        provider.end_input()
        self.assertEqual((provider.wait(), provider.err), (0, ""))


class Tool(unittest.TestCase):
    """`eventlist log --file`: here, because the spool folder belongs to one test at a time."""

    def test_leaves_an_event_in_the_spool_folder_without_bus_and_service(self):
        with Device(spool=SPOOL) as device:
            device.kill_bus()
            for number in range(2):
                done = device.eventlist("log", "--file", "--module", "backup", "--keyword", "Status", "--keyword",
                                        "Boot", f"Backup {number} finished")
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
            self.assertEqual(len(list(SPOOL.glob("*.event.json"))), 2)
            device.start_bus()
            device.start_service()
            events = wait_until(lambda: device.events("--module", "backup"), "the files are in the list")
            self.assertEqual([(event["Description"], event["KeywordName"]) for event in events],
                             [({"lang_en": f"Backup {number} finished"}, ["Status", "Boot"]) for number in range(2)])

    def test_says_when_the_spool_folder_takes_nothing(self):
        with Device(spool=SPOOL) as device:
            SPOOL.mkdir(parents=True, exist_ok=True)
            aside = SPOOL.with_name("aside")
            SPOOL.rename(aside)
            try:
                SPOOL.touch()
                done = device.eventlist("log", "--file", "lost", environment={"QT_LOGGING_RULES": "*=false"})
            finally:
                SPOOL.unlink()
                aside.rename(SPOOL)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertRegex(done.stderr, r"\Aeventlist: cannot write into the spool folder '[^\n]*\n\Z")


class Texts(unittest.TestCase):
    def test_every_example_text_is_finished_in_every_language_with_the_same_placeholders(self):
        found = {}
        for file in sorted((SOURCES / "texts").glob("lang_*.ts")):
            messages = re.findall(r'<message id="([^"]+)">.*?<translation>([^<]+)</translation>',
                                  file.read_text(encoding="utf-8"), re.S)
            found[file.name] = {name: sorted(re.findall(r"%\d", text)) for name, text in messages}
        self.assertEqual(list(found), ["lang_de.ts", "lang_en.ts", "lang_fr.ts"])
        self.assertGreater(len(found["lang_en.ts"]), 10)
        self.assertEqual(found["lang_de.ts"], found["lang_en.ts"])
        self.assertEqual(found["lang_fr.ts"], found["lang_en.ts"])


class Documents(unittest.TestCase):
    @staticmethod
    def blocks(file, language):
        text = (SOURCES.parent / file).read_text(encoding="utf-8")
        return re.findall(rf"```{language}[^\n]*\n(.*?)```", text, re.S)

    def test_documented_files_and_the_documented_call_give_the_events_that_they_describe(self):
        with Device() as device:
            device.start_service()
            for number, block in enumerate(self.blocks("docs/spool-format.md", "json")):
                # As a writer does it: complete under its final name.
                temporary = device.spool / "temporary"
                temporary.write_text(block, encoding="utf-8")
                temporary.rename(device.spool / f"example{number}.event.json")
            done = device.run("sh", "-c", self.blocks("docs/wire.md", "sh")[0])
            self.assertEqual((done.returncode, done.stderr), (0, ""))

            def events():
                found = [event for event in device.events() if event["ModuleName"] != "EventlistHandler"]
                return len(found) == 3 and found
            found = wait_until(events, "all three are in the list")
            alarms = [event for event in found if event["ModuleName"] == "PumpControl"]
            for alarm in alarms:
                del alarm["EventlistId"]
            self.assertEqual(len(alarms), 2)
            self.assertEqual(alarms[0], alarms[1])
            self.assertEqual(alarms[0]["Description"]["lang_en"], "Overtemperature at pump 3, value 97.5")
            self.assertEqual(alarms[0]["DateTimeMsUTC"], "2026-03-14T09:26:53.589+01:00")
            emergency = next(event for event in found if event["ModuleName"] == "supervisor")
            self.assertIn("PumpControl", emergency["Description"]["lang_en"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
