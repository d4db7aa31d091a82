#!/usr/bin/python3
"""`eventlist follow`: every new event once and in order, whatever is restarted meanwhile."""

import json
import signal
import unittest

from device import Device, wait_until


class EventlistFollow(unittest.TestCase):
    def setUp(self):
        self.device = self.enterContext(Device())
        self.device.start_service()

    @staticmethod
    def descriptions(program):
        return [json.loads(line)["Description"] for line in program.lines()]

    def follow(self, *words):
        """Starts to follow, and waits until it does."""
        program = self.device.start_eventlist("follow", "--json", "--language", "en", "--module", "M",
                                              "--module", "Marker", *words)
        # Only an event that comes shows that it listens; markers are taken away again below.
        def is_following():
            self.device.log("marker", module="Marker")
            program.read(0.2)
            return program.out
        wait_until(is_following, "the tool follows")
        return program

    def events(self, program):
        return [text for text in self.descriptions(program) if text != "marker"]

    @staticmethod
    def wait_for_count(program, text, count):
        def is_there():
            program.read()
            return program.err.count(text) == count
        wait_until(is_there, f"{text!r} is told {count} times; so far: {program.err!r}")

    def wait_for(self, program, text):
        program.wait_for(f'"Description":"{text}"')

    def test_begins_with_the_newest_events_and_prints_each_new_one(self):
        for number in range(5):
            self.device.log(f"old {number}", module="M")
        program = self.device.start_eventlist("follow", "--count", "2", "--language", "en", "--module", "M")
        program.wait_for("old 4")
        self.device.log("new 0", module="M")
        program.wait_for("new 0")
        self.device.log("other", module="N")
        self.device.log("new 1", kind=0, state=1, module="M")
        program.wait_for("new 1")
        lines = program.lines()
        self.assertRegex(lines[0], r"^ *ID +TIME +TYPE +STATE +MODULE +USER +DESCRIPTION$")
        self.assertEqual([line.split("  ")[-1].strip() for line in lines[1:]], ["old 3", "old 4", "new 0", "new 1"])
        self.assertEqual(program.err, "")

    def test_follows_by_every_name_that_a_user_of_other_tools_knows(self):
        self.device.log("old", module="M")
        programs = [self.device.start_eventlist(*words, "--language", "en", "--module", "M")
                    for words in (["monitor"], ["tail"], ["list", "-f"], ["show", "--follow"])]
        for program in programs:
            program.wait_for("old\n")
        self.device.log("new", module="M")
        for program in programs:
            program.wait_for("new\n")
            self.assertEqual(program.err, "")

    def test_prints_bursts_whole_and_in_order(self):
        program = self.follow()
        for number in range(1500):
            self.device.log(f"event {number}", module="M")
        self.wait_for(program, "event 1499")
        self.assertEqual(self.events(program), [f"event {number}" for number in range(1500)])

    def test_goes_on_after_a_restart_of_the_service(self):
        program = self.follow()
        for round_number in range(3):
            self.device.log(f"before {round_number}", module="M")
            self.wait_for(program, f"before {round_number}")
            self.device.kill_service()
            self.wait_for_count(program, "; waiting for it\n", round_number + 1)
            self.device.start_service()
            self.wait_for_count(program, "the service is there again\n", round_number + 1)
            self.device.log(f"after {round_number}", module="M")
            self.wait_for(program, f"after {round_number}")
        self.assertEqual(self.events(program), [f"{word} {round_number}" for round_number in range(3)
                                                for word in ("before", "after")])

    def test_misses_nothing_of_a_restart_that_is_too_short_to_be_seen(self):
        program = self.follow()
        for round_number in range(5):
            self.device.kill_service()
            self.device.start_service()
            self.device.log(f"after {round_number}", module="M")
            # The answer to a query comes after everything before it is stored.
            self.assertEqual(len(self.device.events("--module", "M")), round_number + 1)
        self.wait_for(program, "after 4")
        self.assertEqual(self.events(program), [f"after {round_number}" for round_number in range(5)])

    def test_goes_on_after_a_restart_of_the_bus(self):
        program = self.follow()
        self.device.log("before", module="M")
        self.wait_for(program, "before")
        self.device.kill_bus()
        program.wait_for("waiting for it", "err")
        self.device.start_bus()
        self.device.wait_for_service()
        self.device.log("after", module="M")
        self.wait_for(program, "after")
        self.assertEqual(self.events(program), ["before", "after"])

    def test_begins_anew_with_the_list_of_another_service(self):
        self.device.log("of the old list", module="M")
        program = self.follow()
        self.device.stop_service()
        program.wait_for("waiting for it", "err")
        for file in self.device.folder.glob("eventlist.sqlite*"):
            file.unlink()
        self.device.start_service()
        self.device.log("of the new list", module="M")
        self.wait_for(program, "of the new list")

    def test_waits_for_a_service_that_is_not_there_yet(self):
        self.device.stop_service()
        program = self.device.start_eventlist("follow", "--json", "--language", "en")
        program.wait_for("eventlist: the central service does not run: ", "err")
        program.wait_for("; waiting for it\n", "err")
        self.device.start_service()
        program.wait_for('"EventId":"EventlistHandler/PowerOnEvent"')
        self.assertEqual(program.stop(signal.SIGINT), -signal.SIGINT)

    def test_ends_in_silence_when_its_reader_goes_away(self):
        program = self.follow()
        program.process.stdout.close()
        self.assertEqual(program.wait(), 0)
        self.assertEqual(program.err, "")


if __name__ == "__main__":
    unittest.main(verbosity=2)
