#!/usr/bin/python3
"""`eventlist doctor`: a device on which all is well, and each fault with what to do about it."""

import json
import os
import signal
import unittest
from pathlib import Path

from device import Device, wait_until
from terminal import on_terminal

NAME = "org.eventlist.EventlistHandler"


class EventlistDoctor(unittest.TestCase):
    def setUp(self):
        self.device = Device()
        self.addCleanup(self.device.__exit__)
        self.device.spool.mkdir()
        self.device.spool.chmod(0o750)

    def doctor(self, *words, code, **environment):
        environment.setdefault("LC_ALL", "en_GB.UTF-8")
        done = self.device.eventlist("doctor", "--spool", self.device.spool, "--texts", self.device.texts, *words,
                                     environment=environment)
        self.assertEqual((done.returncode, done.stderr), (code, ""), done.stdout)
        return done.stdout

    def findings(self, subject, *words, level=None, **settings):
        """Level, text and advice of what is said about a subject; only that of a level when one is given."""
        return [(finding["Level"], finding["Text"], finding["Advice"])
                for finding in json.loads(self.doctor("--json", *words, **settings))
                if finding["Subject"] == subject and level in (None, finding["Level"])]

    def write(self, name, age_s, folder="."):
        path = self.device.spool / folder / name
        path.parent.mkdir(exist_ok=True)
        path.touch()
        modified = path.stat().st_mtime - age_s
        os.utime(path, (modified, modified))
        return path

    def test_finds_all_well(self):
        self.device.start_bus()
        self.device.start_service()
        self.device.log("pump", kind=0, state=1, alarm_id="{a}")
        text = self.doctor(code=0)
        process = self.device.service.process.pid
        self.assertRegex(text, r"\Aok       bus      the bus at 'unix:path=[^']+' is reached; this is :\d\.\d+\n"
                               rf"ok       service  {NAME} is owned by :\d\.\d+, process {process} \(eventlistd\), user \w+\n"
                               r"ok       service  its objects have their interfaces: /EventlistRead, /EventlistWrite, "
                               r"/AlarmlistRead, /AlarmlistWrite, /HashRegister\n"
                               r"ok       lists    the newest event has the id \d+, the alarm list has 1 rows\n"
                               rf"ok       spool    '{self.device.spool}' has the rights 750 and belongs to \w+:\w+\n"
                               r"ok       spool    no files wait\n"
                               rf"ok       texts    '{self.device.texts}' has lang_de, lang_en, lang_fr\n"
                               r"ok       time     \d{4}-\d\d-\d\dT[0-9:.]+\+0[12]:00, time zone CES?T\n"
                               r"0 errors, 0 warnings\n\Z")
        self.assertEqual(self.device.eventlist("status", "--spool", self.device.spool).returncode, 0)

    def test_says_that_the_bus_or_the_service_is_missing_and_looks_on(self):
        self.assertEqual(self.findings("bus", code=3), [
            ("error", f"the bus at '{self.device.address}' cannot be reached",
             "start it, or set DBUS_SYSTEM_BUS_ADDRESS to the address of the right one")])
        self.device.start_bus()
        self.assertEqual(self.findings("service", code=3), [
            ("error", f"nobody owns the bus name {NAME}", "start eventlistd, or look at its log for why it ended")])
        self.assertEqual(self.findings("spool", code=3)[-1], ("ok", "no files wait", ""))

    def test_finds_a_service_that_hangs(self):
        self.device.start_bus()
        self.device.start_service()
        self.device.service.process.send_signal(signal.SIGSTOP)
        found = self.findings("service", code=1, level="error")
        self.device.service.process.send_signal(signal.SIGCONT)
        self.assertEqual(len(found), 1)
        self.assertRegex(found[0][1], r"\Ait does not answer: .+")
        self.assertEqual(found[0][2], "the service hangs: look at its log, then restart it")

    def test_finds_a_service_that_is_another_one(self):
        self.device.start_bus()
        program = self.device.start("/usr/bin/python3", Path(__file__).with_name("fake_service.py"), "values")
        program.wait_for("ready")
        found = json.loads(self.doctor("--json", code=1))
        errors = [finding for finding in found if finding["Level"] == "error"]
        another = "is it another version, or another service under this name?"
        self.assertEqual([(finding["Subject"], finding["Text"], finding["Advice"]) for finding in errors], [
            *(("service", f"the object /{name} does not have the interface Interface.{interface}", another)
              for name, interface in (("EventlistRead", "EventlistRead"), ("EventlistWrite", "EventlistWrite"),
                                      ("AlarmlistRead", "AlarmlistRead"), ("AlarmlistWrite", "AlarmlistWrite"),
                                      ("HashRegister", "RegisterHash"))),
            ("lists", "the answer of the service cannot be read; is it another version?",
             "look at the log of the service; is it another version?")])

    def test_finds_events_of_the_future(self):
        self.device.start_bus()
        self.device.start_service()
        self.device.log("pump", timestamp="2099-03-14T09:00:00.000+01:00")
        found = self.findings("lists", code=0, level="warning")
        self.assertRegex(found[0][1], r"\Athe newest event lies \d+ s in the future\Z")
        self.assertEqual(found[0][2], "the clock of this device was set back, or that of a sender is wrong")

    def test_finds_files_that_nobody_takes(self):
        self.write("a.event.json", 300)
        self.write("b.event.json", 10)
        waiting = "2 files wait, the oldest for 5 min"
        self.assertEqual(self.findings("spool", code=3, level="error"),
                         [("error", waiting, "start eventlistd, which takes them")])
        self.device.start_bus()
        spool = self.device.spool
        self.device.spool = self.device.folder / "other"
        self.device.start_service()
        self.device.spool = spool
        self.assertEqual(self.findings("spool", code=1, level="error"), [
            ("error", waiting, "the service reads another folder (its option --spool), may not write into this one, or its "
                               "event processing is suppressed")])

    def test_finds_what_was_left_claimed_or_rejected_or_is_no_spool_file(self):
        self.write("a.event.json", 7300, "claimed")
        self.write("b.event.json", 1, "rejected")
        self.write("c.tmp", 172800)
        self.assertEqual(self.findings("spool", code=3, level="warning"), [
            ("warning", "1 files are claimed, the oldest for 2 h", "the service stores them when it starts; restart it"),
            ("warning", "1 files were rejected",
             "'eventlist spool validate' says why; mend the writer and remove them"),
            ("warning", "1 files are no spool files, the oldest for 2 d",
             "a writer was killed or writes wrong names; the service removes them after an hour")])

    def test_finds_a_spool_folder_that_is_missing_or_open_to_anybody(self):
        self.device.spool.chmod(0o777)
        owner = f"{self.device.spool.owner()}:{self.device.spool.group()}"
        self.assertEqual(self.findings("spool", code=3)[0], (
            "warning", f"'{self.device.spool}' has the rights 777 and belongs to {owner}; anybody may remove the events of "
                       "others", "chmod +t, or rights for one group alone"))
        self.device.spool.chmod(0o1777)
        self.assertEqual(self.findings("spool", code=3)[0][0], "ok")
        self.device.spool.rmdir()
        self.assertEqual(self.findings("spool", code=3), [
            ("warning", f"there is no folder '{self.device.spool}'",
             "the first module that writes a file makes it, if it may; otherwise make it for the users of the modules")])

    def test_finds_missing_and_broken_language_files(self):
        texts = self.device.folder / "texts"
        advice = "install the common language files, or name their folder with --texts"
        self.assertEqual(self.findings("texts", "--texts", texts, code=3),
                         [("error", f"there is no folder '{texts}'", advice)])
        texts.mkdir()
        self.assertEqual(self.findings("texts", "--texts", texts, code=3),
                         [("error", f"no language file in '{texts}'", advice)])
        (texts / "lang_xx.qm").write_bytes(b"no language file")
        (texts / "lang_de.qm").write_bytes((self.device.texts / "lang_de.qm").read_bytes())
        self.assertEqual(self.findings("texts", "--texts", texts, code=3, LC_ALL="de_DE.UTF-8"), [
            ("error", f"'{texts}/lang_xx.qm' is no usable language file",
             'make it anew, with "lrelease -idbased -nounfinished"'), ("ok", f"'{texts}' has lang_de", "")])
        self.assertEqual(self.findings("texts", code=3, level="warning", LC_ALL="sv_SE.UTF-8"), [
            ("warning", "your locale asks for lang_sv, which is not there", "set LC_MESSAGES, or add the language")])

    def test_finds_a_time_zone_that_is_none(self):
        self.assertEqual(self.findings("time", code=3, level="warning", TZ="Europe/Nowhere"), [
            ("warning", "TZ is 'Europe/Nowhere', which is no time zone: times are UTC",
             "set TZ to a name such as Europe/Berlin, and install its data (tzdata)")])
        for zone in ("Asia/Tokyo", ":Asia/Tokyo", "CET-1CEST", "<+03>-3", "/usr/share/zoneinfo/Asia/Tokyo"):
            self.assertEqual(self.findings("time", code=3, level="warning", TZ=zone), [], zone)

    def test_colours_on_a_terminal_alone_and_takes_no_words(self):
        words = ("doctor", "--spool", self.device.spool)
        self.assertIn("\x1b[1;31merror\x1b[0m    bus ", on_terminal(self.device, *words)[1])
        self.assertNotIn("\x1b", on_terminal(self.device, *words, NO_COLOR="1")[1])
        done = self.device.eventlist("doctor", "x")
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (2, "", "eventlist: 'x' is no option; see 'eventlist doctor --help'\n"))

    def test_keeps_its_exit_code_when_nobody_reads(self):
        program = self.device.start_eventlist("doctor", "--spool", self.device.spool)
        program.process.stdout.close()
        wait_until(lambda: program.process.poll() is not None, "it ends")
        self.assertEqual(program.process.returncode, 3)


if __name__ == "__main__":
    unittest.main(verbosity=2)
