#!/usr/bin/python3
"""The commands of the spool folder, and `eventlist resolve`: what they say is what the central service does."""

import json
import os
import subprocess
import unittest
from pathlib import Path

from device import Device, wait_until
from terminal import on_terminal

ALARM = {
    "AlarmID": "{a}", "DateTimeMsUTC": "2026-03-14T09:26:53.589+01:00",
    "Description": json.dumps({"lang_de": "Tür 7 offen", "lang_en": "door 7 open"}),
    "EventId": "Door/Open", "EventType": 0, "IconType": "EventlistAlarmOn", "KeywordName": "Error;Firmware",
    "MetaData": {"Arguments": {"%1": {"type": "string", "value": "7"}},
                 "DescriptionScheme": {"lang_de": "Tür %1 offen", "lang_en": "door %1 open"}},
    "ModuleName": "Door", "SourceHashType": 0, "SourceHashes": "", "State": 1, "User": ""}
EMERGENCY = dict(ALARM, AlarmID="", Description="", EventId="EventlistHandler/SystemWatchdog", EventType=3, State=0,
                 MetaData={"Arguments": [{"%1": "Pump"}]})
SPOOL_OF_THE_DEVICE = Path(os.environ["EVENTLISTHANDLER_SPOOL"])


def without(name):
    return {member: value for member, value in ALARM.items() if member != name}


# What the service refuses, and the word for it.
REFUSED = {
    "no JSON": (b"{", "no JSON: unterminated object at byte 1"),
    "an array": (b"[]", "it holds no event"),
    "a member twice": (json.dumps(ALARM).replace('"User"', '"\\u0055ser": "", "User"'), 'the member "User" stands twice'),
    "too deep": (json.dumps(dict(ALARM, MetaData=json.loads('{"a":' * 64 + "1" + "}" * 64))), "it nests deeper than 64"),
    "no time": (without("DateTimeMsUTC"), '"DateTimeMsUTC" is missing or no string'),
    "a number as text": (dict(ALARM, SourceHashType="0"), '"SourceHashType" is missing or no whole number'),
    "half a state": (dict(ALARM, State=0.5), '"State" is missing or no whole number'),
    "a large state": (dict(ALARM, State=2 ** 31), '"State" is missing or no whole number'),
    "no such type": (dict(ALARM, EventType=4), '"EventType" is none of the event types 0 to 3'),
    "metadata as text": (dict(ALARM, MetaData="{}"), '"MetaData" is missing or no object'),
    "one member more": (dict(ALARM, More=""), '"More" is none of its members'),
    "large": (json.dumps(ALARM) + " " * 2 ** 20, "it is larger than 1048576 bytes"),
}
# What it takes.
TAKEN = {
    "an alarm": (ALARM, []),
    "an emergency": (EMERGENCY, []),
    "a byte order mark": (b"\xef\xbb\xbf" + json.dumps(ALARM).encode(), []),
    "a strange state": (dict(ALARM, State=-7), ["the state -7 is none"]),
    "a strange time": (dict(ALARM, DateTimeMsUTC="today"), ['"DateTimeMsUTC" is no time']),
    "no alarm id": (dict(ALARM, AlarmID=""),
                    ["an alarm without an alarm id shares its row in the alarm list with others"]),
    "no texts": (dict(ALARM, Description="door"), ['"Description" holds no texts by language',
                                                   "the metadata say something else than the description"]),
    "no metadata": (dict(ALARM, MetaData={}), ['there is no stored description ("DescriptionScheme")']),
    "other metadata": (dict(ALARM, MetaData=dict(ALARM["MetaData"], Arguments={})),
                       ["the metadata say something else than the description"]),
}


class EventlistSpool(unittest.TestCase):
    def setUp(self):
        self.device = Device()
        self.addCleanup(self.device.__exit__)
        self.spool = self.device.spool
        self.spool.mkdir()
        self.ages = 0

    def write(self, name, content, folder=None):
        """Puts a file into the spool folder; each one is younger than the last."""
        path = (folder or self.spool) / name
        path.parent.mkdir(exist_ok=True)
        if isinstance(content, dict):
            content = json.dumps(content)
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        self.ages += 1
        os.utime(path, (1e9 + self.ages, 1e9 + self.ages))
        return path

    def spool_command(self, command, *words):
        return self.device.eventlist("spool", command, "--spool", self.spool, *words)

    def expect(self, done, code, out, err=""):
        self.assertEqual((done.returncode, done.stdout, done.stderr), (code, out, err))

    def test_lists_files_by_place_and_time(self):
        self.write("b.event.json", ALARM)
        self.write("a.event.json", EMERGENCY)
        self.write("r.event.json", "{", self.spool / "rejected")
        self.write("c.event.json", dict(ALARM, State=2), self.spool / "claimed")
        self.write(".a.event.json.XYZ", "")
        lines = self.spool_command("list", "-l", "de").stdout.splitlines()
        self.assertEqual([line.split() for line in lines], [
            ["FILE", "PLACE", "TIME", "TYPE", "STATE", "MODULE", "DESCRIPTION"],
            ["b.event.json", "waiting", "2026-03-14", "09:26:53", "alarm", "ON", "Door", "Tür", "7", "offen"],
            ["a.event.json", "waiting", "2026-03-14", "09:26:53", "event", "Door", "Systemüberwachung", "hat",
             "ausgelöst:", "Pump"],
            ["c.event.json", "claimed", "2026-03-14", "09:26:53", "alarm", "off", "Door", "Tür", "7", "offen"],
            ["r.event.json", "rejected", "-", "no", "JSON:", "unterminated", "object", "at", "byte", "1"],
            [".a.event.json.XYZ", "other", "-", "no", "JSON:", "illegal", "value", "at", "byte", "0"]])
        listed = json.loads(self.spool_command("list", "--json").stdout)
        self.assertEqual([file["Place"] for file in listed], ["waiting", "waiting", "claimed", "rejected", "other"])
        self.assertEqual(listed[0], dict(ALARM, Description=json.loads(ALARM["Description"]), Place="waiting", Error="",
                                         File=str(self.spool / "b.event.json")))
        self.assertEqual(listed[3], {"File": str(self.spool / "rejected/r.event.json"), "Place": "rejected",
                                     "Error": "no JSON: unterminated object at byte 1"})

    def test_says_when_there_is_nothing_to_list(self):
        self.expect(self.spool_command("list"), 0, "", f"eventlist: no files in '{self.spool}'\n")
        self.expect(self.spool_command("list", "--json"), 0, "[\n]\n")
        self.spool.rmdir()
        self.expect(self.spool_command("list"), 1, "", f"eventlist: cannot read the spool folder '{self.spool}'\n")
        self.expect(self.spool_command("validate"), 1, "", f"eventlist: cannot read the spool folder '{self.spool}'\n")

    def test_shows_a_file_whole(self):
        path = self.write("door.event.json", ALARM)
        expected = (f"File            {path}\nDateTimeMsUTC   2026-03-14T09:26:53.589+01:00\nModuleName      Door\n"
                    "KeywordName     Error;Firmware\nIconType        EventlistAlarmOn\nEventId         Door/Open\n"
                    "AlarmID         {a}\nEventType       0 (alarm)\nState           1 (ON)\n"
                    "lang_de         Tür 7 offen\nlang_en         door 7 open\nArgument %1     7\n")
        for name in (path, "door.event.json", "door", "do"):
            self.expect(self.spool_command("show", name), 0, expected)
        text = self.spool_command("show", "--language", "de", "door").stdout
        self.assertIn("\nDescription     Tür 7 offen\n", text)
        self.assertNotIn("door 7 open", text)
        self.write("doom.event.json", dict(ALARM, State=9))
        self.assertTrue(self.spool_command("show", "doom").stdout.endswith("\nWarning         the state 9 is none\n"))
        self.expect(self.spool_command("show", "do"), 1,
                    "File            do\nError           it could be any of 2 files; give more of the name\n")
        self.expect(self.spool_command("show", "none"), 1, "File            none\nError           there is no such file, "
                                                           f"and none in '{self.spool}'\n")

    def test_validates_as_the_central_service_does(self):
        self.device.start_bus()
        for number, (case, (content, problem)) in enumerate([*REFUSED.items(), *TAKEN.items()]):
            with self.subTest(case=case):
                path = self.write(f"{number}.event.json", content)
                done = self.spool_command("validate", "--json", path)
                refused = isinstance(problem, str)
                self.assertEqual((done.returncode, done.stderr), (int(refused), ""))
                self.assertEqual(json.loads(done.stdout), [
                    {"File": str(path), "Error": problem if refused else "", "Warnings": [] if refused else problem}])
        links = {"symbolic": "it is a symbolic link", "hard": "it has more than one name (hard links)",
                 "pipe": "it is no regular file"}
        (self.device.folder / "elsewhere").write_text(json.dumps(ALARM), encoding="utf-8")
        os.symlink(self.device.folder / "elsewhere", self.spool / "symbolic.event.json")
        os.link(self.device.folder / "elsewhere", self.spool / "hard.event.json")
        os.mkfifo(self.spool / "pipe.event.json")
        for name, problem in links.items():
            path = self.spool / f"{name}.event.json"
            self.expect(self.spool_command("validate", path), 1,
                        f"{path}: error: {problem}\n1 files: 1 errors, 0 warnings\n")
        # And now the service itself.
        self.device.start_service()
        wait_until(lambda: not list(self.spool.glob("*.event.json")), "everything is taken or rejected")
        self.device.events()
        self.assertEqual(len(list((self.spool / "rejected").iterdir())), len(REFUSED) + len(links))
        self.assertEqual(len([event for event in self.device.events() if event["ModuleName"] == "Door"]), len(TAKEN))

    def test_validates_the_whole_folder(self):
        good = self.write("good.event.json", ALARM)
        odd = self.write("odd.event.json", dict(ALARM, State=9))
        self.write("temporary", "")
        self.write("claimed.event.json", "", self.spool / "claimed")
        warning = f"{odd}: warning: the state 9 is none\n2 files: 0 errors, 1 warnings\n"
        self.expect(self.spool_command("validate"), 0, warning)
        self.expect(self.spool_command("check", "--strict"), 1, warning)
        self.expect(self.spool_command("validate", "--strict", good), 0, "1 files: 0 errors, 0 warnings\n")
        rejected = self.write("bad.event.json", "{", self.spool / "rejected")
        self.expect(self.spool_command("validate"), 1, f"{odd}: warning: the state 9 is none\n{rejected}: error: no JSON: "
                                                       "unterminated object at byte 1\n3 files: 1 errors, 1 warnings\n")

    def test_colours_what_is_wrong_on_a_terminal_alone(self):
        self.write("bad.event.json", "{")
        words = ("spool", "validate", "--spool", self.spool)
        self.assertIn(": \x1b[1;31merror\x1b[0m: ", on_terminal(self.device, *words)[1])
        self.assertNotIn("\x1b", on_terminal(self.device, *words, NO_COLOR="1")[1])
        self.assertNotIn("\x1b", self.spool_command("validate").stdout)

    def test_resolves_files_from_their_metadata(self):
        self.write("door.event.json", dict(ALARM, Description="{}"))
        self.write("pump.event.json", EMERGENCY)
        self.write("bad.event.json", "{")
        self.expect(self.spool_command("resolve", "-l", "de", "door"), 0, "Tür 7 offen\n")
        self.expect(self.spool_command("resolve", "-l", "all", "door", "pump", "--texts", self.device.texts), 0,
                    "lang_de: Tür 7 offen\nlang_en: door 7 open\n\nlang_de: Systemüberwachung hat ausgelöst: Pump\n"
                    "lang_en: System watchdog triggered: Pump\n"
                    "lang_fr: Le chien de garde du système s’est déclenché\u00a0: Pump\n")
        self.expect(self.spool_command("resolve", "-l", "en", "bad", "door"), 1, "door 7 open\n",
                    f"eventlist: {self.spool}/bad.event.json: no JSON: unterminated object at byte 1\n")
        self.expect(self.spool_command("resolve", "-l", "en", "pump", "--texts", self.spool), 1, "",
                    f"eventlist: {self.spool}/pump.event.json: no language file in '{self.spool}' has a text "
                    "'EventlistHandler/SystemWatchdog'; name another folder with --texts\n")

    def test_shows_hostile_events_escaped(self):
        hostile = "\x1b]0;x\x07\u202e\n"
        self.write("x\x1b\u202e.event.json", dict(ALARM, ModuleName=hostile, EventId=hostile, Description=json.dumps(
            {hostile: hostile}), MetaData={"DescriptionScheme": {hostile: hostile}, "Arguments": {}}))
        for words in (["list"], ["list", "--json"], ["show", "x"], ["validate", "--json"], ["resolve", "x", "-l", "all"]):
            with self.subTest(words=words):
                text = self.spool_command(*words).stdout
                self.assertIn("\\u202e", text)
                self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")

    def test_complains_about_a_wrong_command_line(self):
        for words in (["list", "x"], ["show"], ["resolve"], ["list", "--nothing"]):
            with self.subTest(words=words):
                done = self.spool_command(*words)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertRegex(done.stderr, rf"\Aeventlist: [^\n]+; see 'eventlist spool {words[0]} --help'\n\Z")


class EventlistResolve(unittest.TestCase):
    def setUp(self):
        self.device = Device()
        self.addCleanup(self.device.__exit__)

    def expect(self, text, code, out, err="", words=("--language", "en")):
        done = self.device.eventlist("resolve", *words, input=text)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (code, out, err))

    def test_takes_every_form_in_which_descriptions_are_stored(self):
        metadata = ALARM["MetaData"]
        row = {"EventId": "Door/Open", "MetaData": json.dumps(metadata)}
        for text in (metadata, ALARM, row):
            self.expect(json.dumps(text), 0, "door 7 open\n")
        self.expect(json.dumps([ALARM, row], indent=1), 0, "door 7 open\ndoor 7 open\n")
        self.expect(f"{json.dumps(row)}\n\n{json.dumps(ALARM)}\n", 0, "door 7 open\ndoor 7 open\n")
        self.expect(json.dumps([ALARM]), 0, "Tür 7 offen\n", words=("-l", "de", "-"))
        self.assertEqual(json.loads(self.device.eventlist("resolve", "--json", input=json.dumps(ALARM)).stdout),
                         [{"EventId": "Door/Open", "Description": json.loads(ALARM["Description"])}])

    def test_answers_a_language_that_is_missing_as_the_event_list_does(self):
        self.expect(json.dumps(ALARM), 0, "door 7 open\n", words=("-l", "fr"))
        self.expect('{"DescriptionScheme": {"lang_de": "nur"}, "Arguments": {}}', 0, "nur\n", words=("-l", "fr"))

    def test_tells_what_the_library_says_of_bad_arguments(self):
        self.expect('{"DescriptionScheme": {"lang_en": "a %1"}, "Arguments": {"%1": {"type": "x"}}}', 0, "a %1\n",
                    'eventlist: Unknown type "x" from placeholder "%1"\n')

    def test_goes_on_behind_what_cannot_be_resolved(self):
        none = 'eventlist: standard input: there is no stored description ("DescriptionScheme")\n'
        self.expect(json.dumps([{}, ALARM]), 1, "door 7 open\n", none)
        self.expect("[1]", 1, "", "eventlist: standard input: an element of the array is no object\n")
        self.expect("", 1, "", "eventlist: standard input: it is empty\n")
        self.expect("door", 1, "", "eventlist: standard input: no JSON: illegal value at byte 1\n")
        self.expect(json.dumps(ALARM) + "\ndoor\n", 1, "", "eventlist: standard input: line 2 is no JSON object\n")
        done = self.device.eventlist("resolve", "nowhere.json")
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, "", "eventlist: nowhere.json: No such file or directory\n"))

    def test_resolves_what_the_event_list_gives(self):
        self.device.start_bus()
        self.device.start_service()
        self.device.eventlist("log", "--text", "de=Tür %1", "--text", "en=door %1", "--arg", "%1=9")
        listed = self.device.eventlist("list", "--json", "--module", "eventlist").stdout
        self.expect(listed, 0, "lang_de: Tür 9\nlang_en: door 9\n", words=("-l", "all"))


class EventlistEmergency(unittest.TestCase):
    def setUp(self):
        SPOOL_OF_THE_DEVICE.mkdir(parents=True, exist_ok=True)
        for path in self.files():
            path.unlink()
        self.device = Device(spool=SPOOL_OF_THE_DEVICE)
        self.addCleanup(self.device.__exit__)

    @staticmethod
    def files():
        return list(SPOOL_OF_THE_DEVICE.glob("*.event.json"))

    def take(self):
        """The one event that lies there, without its time."""
        path, = self.files()
        event = json.loads(path.read_text(encoding="utf-8"))
        path.unlink()
        del event["DateTimeMsUTC"]
        return event

    def test_leaves_the_event_of_the_library_without_a_bus(self):
        done = self.device.eventlist("emergency", "--module", "supervisor", "Pump")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        left = self.take()
        subprocess.run([os.environ["EMERGENCY_EXAMPLE"], "supervisor", "Pump"], check=True)
        self.assertEqual(left, self.take())

    def test_replaces_no_event_that_waits(self):
        for name in ("a", "b", "b"):
            self.assertEqual(self.device.eventlist("emergency", name).returncode, 0)
        self.assertEqual(len(self.files()), 3)
        self.device.start_bus()
        self.device.start_service()
        wait_until(lambda: not self.files(), "the service has taken them")
        self.assertEqual(sorted(event["Description"] for event in self.device.events("--module", "eventlist", "-l", "en")),
                         [f"System watchdog triggered: {name}" for name in "abb"])

    def test_says_that_it_could_not_write(self):
        aside = SPOOL_OF_THE_DEVICE.with_name("aside")
        SPOOL_OF_THE_DEVICE.rename(aside)
        try:
            SPOOL_OF_THE_DEVICE.touch()
            done = self.device.eventlist("emergency", "Pump")
        finally:
            SPOOL_OF_THE_DEVICE.unlink()
            aside.rename(SPOOL_OF_THE_DEVICE)
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, "", f"eventlist: cannot write into the spool folder '{SPOOL_OF_THE_DEVICE}/'; look at its "
                                 "rights and at the space that is left\n"))

    def test_needs_one_name(self):
        for words in ([], ["a", "b"]):
            done = self.device.eventlist("emergency", *words)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (
                2, "", "eventlist: give one NAME: what the watchdog acted on; see 'eventlist emergency --help'\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
