#!/usr/bin/python3
"""What the tool says of itself: every command explains itself, and whoever guesses a name is led to it."""

import unittest

from device import Device

COMMANDS = ("list", "follow", "alarms", "ack", "log", "emergency", "types", "delete", "resolve", "spool list",
            "spool show", "spool validate", "spool resolve", "texts check", "doctor")
ALIASES = {"show": "list", "monitor": "follow", "tail": "follow", "acknowledge": "ack", "send": "log", "emit": "log",
           "texts validate": "texts check", "spool ls": "spool list", "spool cat": "spool show",
           "spool check": "spool validate", "status": "doctor"}
GROUPS = {"texts": ["check"], "spool": ["list", "show", "validate", "resolve"]}


class EventlistHelp(unittest.TestCase):
    def setUp(self):
        self.device = Device()
        self.addCleanup(self.device.__exit__)

    def help(self, *words):
        done = self.device.eventlist(*words)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_lists_every_command_and_nothing_else(self):
        overview = self.help("--help")
        commands = overview.split("Commands:\n")[1].split("\n\n")[0].splitlines()
        self.assertEqual([line[2:18].strip() for line in commands], list(COMMANDS))
        for words in (["help"], ["-h"]):
            self.assertEqual(self.help(*words), overview)

    def test_explains_every_command_with_examples_and_exit_codes(self):
        for command in COMMANDS:
            with self.subTest(command=command):
                text = self.help(*command.split(), "--help")
                self.assertTrue(text.startswith(f"Usage: eventlist {command} "))
                self.assertRegex(text, rf"\nExamples:\n(  .*\n)*  .*eventlist {command}\b")
                self.assertIn("\nExit codes: 0 ", text)
                self.assertIn("--help", text)
                self.assertEqual(text, self.help("help", *command.split()))
                self.assertEqual([line for line in text.splitlines() if len(line) > 100], [])

    def test_knows_the_names_of_other_tools(self):
        for alias, command in ALIASES.items():
            with self.subTest(alias=alias):
                text = self.help(*alias.split(), "--help")
                self.assertEqual(text, self.help(*command.split(), "--help"))
                self.assertIn(alias, text.split("\nAlso called: ")[1].splitlines()[0].split(", "))

    def test_explains_groups_of_commands(self):
        for group, members in GROUPS.items():
            with self.subTest(group=group):
                text = self.help(group, "--help")
                self.assertTrue(text.startswith(f"Usage: eventlist {group} COMMAND [options]\n"))
                self.assertEqual([line.split()[1] for line in text.splitlines() if line.startswith("  ")], members)
                self.assertEqual(text, self.help("help", group))
                done = self.device.eventlist(group)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (
                    2, "", f"eventlist: '{group}' needs one of its commands: {', '.join(members)}; see 'eventlist {group} "
                           "--help'\n"))
                done = self.device.eventlist(group, "nothing")
                self.assertEqual((done.returncode, done.stdout, done.stderr), (
                    2, "", f"eventlist: there is no command '{group} nothing'; see 'eventlist {group} --help'\n"))

    def test_explains_all_at_once(self):
        expected = "\n\n".join([self.help("--help"), *(self.help("help", *command.split()) for command in COMMANDS)])
        self.assertEqual(self.help("help", "--all"), expected)

    def test_says_which_command_there_is_not(self):
        for words in (["lst"], ["help", "lst"], ["--help", "lst"]):
            done = self.device.eventlist(*words)
            self.assertEqual((done.returncode, done.stdout, done.stderr),
                             (2, "", "eventlist: there is no command 'lst'; see 'eventlist --help'\n"))
        done = self.device.eventlist()
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (2, "", "eventlist: a command is missing; see 'eventlist --help'\n"))

    def test_shows_its_version(self):
        self.assertRegex(self.help("--version"), r"\Aeventlist \d+\.\d+\.\d+\n\Z")


if __name__ == "__main__":
    unittest.main(verbosity=2)
