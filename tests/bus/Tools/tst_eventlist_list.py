#!/usr/bin/python3
"""`eventlist list`, types and delete: what they show, to whom, and with which exit code."""

import json
import os
import pwd
import re
import subprocess
import unittest
from pathlib import Path

from device import Device, wait_until
from terminal import Terminal, on_terminal

HOSTILE = "a\x1b[31mred\x07 \u202eturned\u2066 line\nbreak\ttab \x9b2J \u2028 end"
HOSTILE_SHOWN = "a\\u001b[31mred\\u0007 \\u202eturned\\u2066 line\\nbreak\\ttab \\u009b2J \\u2028 end"


class EventlistList(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.device = cls.enterClassContext(Device())
        cls.device.start_service()
        log = cls.device.log
        log({"lang_de": "Alarm da", "lang_en": "alarm there"}, kind=0, state=1, module="Pump", keywords=["Error"],
            timestamp="2026-03-14T09:00:00.000+01:00", alarm_id="{a}")
        log({"lang_de": "Alarm weg", "lang_en": "alarm gone"}, kind=0, state=2, module="Pump", keywords=["Error"],
            timestamp="2026-03-14T10:00:00.000+01:00", alarm_id="{a}")
        log("fault there", kind=2, state=1, module="Valve", keywords=["Error", "USB"],
            timestamp="2026-03-14T11:00:00.000+01:00", alarm_id="{f}")
        log("limit changed", kind=1, module="Valve", user="anna", timestamp="2026-03-14T12:00:00.000+01:00")
        log(HOSTILE, module="Hos\x1btile", event_id="Hostile/Text", timestamp="2026-03-14T13:00:00.000+01:00")

    def list(self, *words, **settings):
        done = self.device.eventlist("list", *words, **settings)
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.returncode, 0)
        return done.stdout

    def descriptions(self, *words):
        return [event["Description"] for event in self.device.events("--language", "en", *words)]

    def test_shows_the_newest_events_with_the_newest_last(self):
        lines = self.list("--count", "2", "--language", "en").splitlines()
        self.assertEqual(len(lines), 3)
        self.assertRegex(lines[0], r"^ *ID +TIME +TYPE +STATE +MODULE +USER +DESCRIPTION$")
        self.assertRegex(lines[1], r"^ *\d+ +2026-03-14 12:00:00 +audit +Valve +anna +limit changed$")
        self.assertRegex(lines[2], r"^ *\d+ +2026-03-14 13:00:00 +event .*turned")

    def test_shows_the_newest_first_when_asked(self):
        lines = self.list("--module", "Pump", "--reverse", "-l", "en").splitlines()
        self.assertIn("alarm gone", lines[1])
        self.assertIn("alarm there", lines[2])

    def test_tells_on_and_off_without_colour(self):
        lines = self.list("--module", "Pump", "-l", "en").splitlines()
        self.assertRegex(lines[1], r" alarm +ON +Pump +alarm there$")
        self.assertRegex(lines[2], r" alarm +off +Pump +alarm gone$")

    def test_filters_by_each_property_and_by_several_together(self):
        cases = {
            ("--type", "alarm"): ["alarm there", "alarm gone"],
            ("--type", "fault,audit"): ["fault there", "limit changed"],
            ("--type", "alarm", "--type", "fault"): ["alarm there", "alarm gone", "fault there"],
            ("--module", "Valve"): ["fault there", "limit changed"],
            ("--keyword", "USB"): ["fault there"],
            ("--event-id", "Hostile/Text"): [HOSTILE],
            ("--module", "Valve", "--type", "audit"): ["limit changed"],
            ("--module", "Valve", "--type", "alarm"): [],
            ("--since", "2026-03-14T09:30:00+01:00", "--until", "2026-03-14T11:30:00+01:00"):
                ["alarm gone", "fault there"],
            ("--since", "2026-03-14T09:30:00+01:00", "--until", "2026-03-14T11:30:00+01:00", "--type", "fault"):
                ["fault there"],
        }
        for words, wanted in cases.items():
            with self.subTest(words=words):
                self.assertEqual(self.descriptions(*words), wanted)

    def test_reads_times_without_an_offset_in_local_time(self):
        self.assertEqual(self.descriptions("--since", "2026-03-14 11:30", "--until", "2026-03-14 12:30:00"),
                         ["limit changed"])

    def test_filters_by_a_range_of_ids(self):
        ids = [event["EventlistId"] for event in self.device.events()]
        chosen = self.device.events("--from-id", str(ids[1]), "--to-id", str(ids[3]))
        self.assertEqual([event["EventlistId"] for event in chosen], ids[1:4])

    def test_gives_programs_typed_fields_and_all_languages(self):
        event = self.device.events("--type", "fault")[0]
        self.assertEqual(event["EventType"], 2)
        self.assertEqual(event["State"], 1)
        self.assertEqual(event["KeywordName"], ["Error", "USB"])
        self.assertEqual(event["Description"], {"lang_en": "fault there"})
        self.assertEqual(event["MetaData"], {})
        self.assertEqual(event["TimestampUtc"], 1773482400000)
        self.assertEqual(event["DateTimeMsUTC"], "2026-03-14T11:00:00.000+01:00")

    def test_tells_who_sent_an_event_on_request_only(self):
        event = self.device.events("--type", "audit")[0]
        self.assertNotIn("SenderUid", event)
        with_sender = self.device.events("--type", "audit", "--sender")[0]
        self.assertEqual((with_sender.pop("SenderUid"), with_sender.pop("SenderPid")), (os.getuid(), os.getpid()))
        self.assertEqual(with_sender, event)
        lines = self.list("--type", "audit", "--sender", "-l", "en").splitlines()
        self.assertRegex(lines[0], r"USER +SENDER +DESCRIPTION$")
        sender = f"{pwd.getpwuid(os.getuid()).pw_name}[{os.getpid()}]"
        self.assertRegex(lines[1], rf" anna +{re.escape(sender)} +limit changed$")

    def test_gives_an_empty_array_when_nothing_matches(self):
        self.assertEqual(json.loads(self.list("--module", "Nobody", "--json")), [])
        done = self.device.eventlist("list", "--module", "Nobody")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", "eventlist: no events\n"))

    def test_speaks_the_language_of_the_option_or_else_of_the_locale(self):
        self.assertIn("Alarm weg", self.list("--language", "de"))
        self.assertIn("Alarm weg", self.list("--language", "lang_de"))
        self.assertIn("Alarm weg", self.list(environment={"LC_ALL": "de_AT.UTF-8"}))
        self.assertIn("alarm gone", self.list(environment={"LC_ALL": "C"}))
        self.assertIn("alarm gone", self.list("--language", "xx"))

    def test_shows_control_and_bidirectional_characters_escaped(self):
        text = self.list("--event-id", "Hostile/Text")
        self.assertIn(HOSTILE_SHOWN, text)
        self.assertIn("Hos\\u001btile", text)
        self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069\u2028]")

    def test_escapes_them_in_json_too_without_changing_the_value(self):
        text = self.list("--event-id", "Hostile/Text", "--json", "--language", "en")
        self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069\u2028]")
        self.assertEqual(json.loads(text)[0]["Description"], HOSTILE)

    def test_cuts_lines_to_the_terminal_and_nowhere_else(self):
        code, text = on_terminal(self.device, "list", "--event-id", "Hostile/Text", columns=70, NO_COLOR="1")
        self.assertEqual(code, 0)
        self.assertEqual({len(line) <= 70 for line in text.splitlines()}, {True})
        self.assertTrue(text.splitlines()[1].endswith("…"), text)
        code, text = on_terminal(self.device, "list", "--event-id", "Hostile/Text", columns=70, NO_COLOR="1",
                                 COLUMNS="200")
        self.assertIn(HOSTILE_SHOWN, text)

    def test_colours_only_terminals_that_want_it(self):
        self.assertIn("\x1b[1;31m", on_terminal(self.device, "list", "--type", "alarm")[1])
        self.assertNotIn("\x1b", on_terminal(self.device, "list", "--type", "alarm", NO_COLOR="1")[1])
        self.assertNotIn("\x1b", on_terminal(self.device, "list", "--type", "alarm", TERM="dumb")[1])
        self.assertNotIn("\x1b", self.list("--type", "alarm"))

    def test_ends_in_silence_when_its_reader_has_seen_enough(self):
        reader, writer = os.pipe()
        os.close(reader)
        done = self.device.eventlist("list", stdout=writer)
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_says_when_its_output_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = self.device.eventlist("list", stdout=full)
        self.assertEqual((done.returncode, done.stderr), (1, "eventlist: cannot write: No space left on device\n"))

    def test_complains_in_one_line_about_a_wrong_command_line(self):
        for words in ([], ["lst"], ["list", "--foo"], ["list", "more"], ["list", "--type", "a"],
                      ["list", "--type", "al,x"], ["list", "--count", "-1"], ["list", "--count", "ten"],
                      ["list", "--since", "25:99"], ["list", "--until", "2026-13-01"], ["list", "--from-id", "0"],
                      ["list", "--from-id", "1", "--since", "1h"], ["list", "--language"], ["ack"],
                      ["ack", "x", "--central"], ["delete"], ["delete", "all"], ["log"], ["log", "a", "b"],
                      ["log", "--url", "A/B"], ["log", "--text", "no pair"], ["log", "--type", "x", "y"],
                      ["log", "--state", "x", "y"], ["log", "--arg", "%1", "y"], ["types", "x"], ["alarms", "x"],
                      ["follow", "x"], ["follow", "--since", "1h"], ["list", "-f", "--since", "1h"],
                      ["list", "--follow", "--reverse"]):
            with self.subTest(words=words):
                done = self.device.eventlist(*words)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertRegex(done.stderr, r"\Aeventlist: [^\n]*eventlist [^\n]*--help'\n\Z")

    def test_shows_the_types(self):
        lines = self.device.eventlist("types", "--language", "de").stdout.splitlines()
        self.assertEqual([line.split()[:2] for line in lines[1:]],
                         [["0", "alarm"], ["1", "audit"], ["2", "fault"], ["3", "event"]])
        self.assertEqual(lines[1].split()[2], "Alarm")


class EventlistWithoutADevice(unittest.TestCase):
    def test_says_that_the_bus_is_missing(self):
        device = Device()
        self.addCleanup(device.__exit__)
        for command in (["list"], ["alarms"], ["types"], ["log", "x"], ["ack", "x"], ["ack", "--central"],
                        ["delete", "--yes"]):
            with self.subTest(command=command):
                done = device.eventlist(*command)
                self.assertEqual((done.returncode, done.stdout), (3, ""))
                self.assertRegex(done.stderr, r"\Aeventlist: cannot reach the bus at '[^\n]*DBUS_SYSTEM_BUS_ADDRESS"
                                              r"[^\n]*\n\Z")

    def test_says_that_the_service_is_missing(self):
        with Device() as device:
            for command in (["list"], ["alarms"], ["types"], ["log", "x"], ["ack", "x"], ["ack", "--central"],
                            ["delete", "--yes"]):
                with self.subTest(command=command):
                    done = device.eventlist(*command)
                    self.assertEqual((done.returncode, done.stdout), (3, ""))
                    self.assertRegex(done.stderr, r"\Aeventlist: the central service does not run: [^\n]*"
                                                  r"org\.eventlist\.EventlistHandler; start eventlistd\n\Z")


class EventlistOfAnotherService(unittest.TestCase):
    def list_of(self, behaviour):
        with Device() as device:
            service = device.start("/usr/bin/python3", Path(__file__).with_name("fake_service.py"), behaviour)
            service.wait_for("ready")
            return device.eventlist("list", "--count", "1")

    def test_asks_again_when_the_service_wants_a_pause(self):
        done = self.list_of("refuse")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(done.stdout.splitlines()[1].endswith("pump"))

    def test_finds_columns_by_their_names(self):
        done = self.list_of("columns")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout.splitlines()[1], r"^ *7 +2026-03-14 09:26:53 +alarm +ON +Plant +pump$")

    def test_takes_rows_that_are_too_short(self):
        done = self.list_of("short")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout.splitlines()[1], r"^ *7 +alarm +pump$")

    def test_tells_a_human_that_it_waits_and_nobody_else(self):
        with Device() as device:
            service = device.start("/usr/bin/python3", Path(__file__).with_name("fake_service.py"), "slow")
            service.wait_for("ready")
            terminal = Terminal()
            self.addCleanup(terminal.close)
            silent = device.start_eventlist("list", "--count", "1")
            service.wait_for("asked\n")
            told = subprocess.Popen([os.environ["EVENTLIST"], "list", "--count", "1"], stderr=terminal.slave,
                                    stdout=subprocess.PIPE, env=dict(device.environment, TERM="xterm"))
            wait_until(lambda: "\r\x1b[Kwaiting for the central service (2 s)" in terminal.read(), "it tells")
            service.wait_for("asked\nasked\n")
            service.type("go\n")
            self.assertTrue(told.communicate(timeout=30)[0].endswith(b"pump\n"))
            # The line has gone when it ends, and without a terminal there was none.
            self.assertTrue(terminal.read().endswith("\r\x1b[K"), terminal.read())
            self.assertEqual((silent.wait(), silent.err), (0, ""))

    def test_refuses_answers_of_another_shape(self):
        for behaviour in ("values", "shape"):
            with self.subTest(behaviour=behaviour):
                done = self.list_of(behaviour)
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (1, "", "eventlist: the answer of the service cannot be read; is it another "
                                         "version?\n"))


class EventlistOfManyEvents(unittest.TestCase):
    def test_reads_a_long_list_piece_by_piece_and_deletes_it(self):
        with Device() as device:
            device.start_service()
            for number in range(2345):
                device.log(f"event {number}", module="Many")
            events = device.events("--module", "Many", "--language", "en")
            self.assertEqual([event["Description"] for event in events],
                             [f"event {number}" for number in range(2345)])
            self.assertEqual(len(device.eventlist("list").stdout.splitlines()), 101)

            highest = events[-1]["EventlistId"]
            self.assertEqual(device.eventlist("delete", "--yes").returncode, 0)
            rest = device.events()
            self.assertEqual([event["EventId"] for event in rest], ["EventlistHandler/EventlistDeleted"])
            self.assertGreater(rest[0]["EventlistId"], highest)


if __name__ == "__main__":
    unittest.main(verbosity=2)
