#!/usr/bin/python3
"""The demonstration: succeeds, leaves nothing behind, also after Ctrl-C and when a step fails."""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from device import Program, die_with_parent, wait_until

DEMO, BUILD = (Path(word).resolve() for word in sys.argv[1:3])
SPOOL = Path(os.environ["EVENTLISTHANDLER_SPOOL"])


def processes_of(marker):
    """Command lines of running processes that name the marker."""
    found = []
    for entry in Path("/proc").glob("[0-9]*/cmdline"):
        try:
            line = entry.read_bytes().replace(b"\0", b" ").decode("utf-8", "replace")
        except OSError:
            continue
        if marker in line and str(os.getpid()) != entry.parent.name:
            found.append(line)
    return found


class Demo(unittest.TestCase):
    def setUp(self):
        for file in SPOOL.glob("*.event.json"):
            file.unlink()

    def folder_of(self, said):
        """The folder of this demonstration, which it names; others may run beside it."""
        found = re.search(r"here in (/tmp/eventlist-demo-\w+)\.\n", said)
        self.assertIsNotNone(found, said)
        return Path(found.group(1))

    def check_nothing_is_left(self, folder):
        wait_until(lambda: not processes_of(str(folder)), f"nothing of {folder} runs any more")
        self.assertFalse(folder.exists())

    def test_shows_everything_and_leaves_nothing(self):
        done = subprocess.run([DEMO, BUILD], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False,
                              timeout=200, stdin=subprocess.DEVNULL, preexec_fn=die_with_parent)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        for words in ("Watching the machine", "Überwachung der Maschine", '"EventId": "MachineWatch/Readings"',
                      "Mesures\u00a0: charge", "panel: an active alarm stands in the list: yes",
                      "acknowledged by anna", "The alarm list is empty.", "shows the icon EventlistAlarmOn",
                      "panel: an alarm stands in the list: no", "shows the icon EventlistAlarmOff",
                      "Alarms acknowledged via eventlist: Memory use is above its limit",
                      "is missing", "Surchauffe de la pompe 3", "Nothing was left running."):
            self.assertIn(words, done.stdout)
        self.check_nothing_is_left(self.folder_of(done.stdout))
        self.assertEqual(list(SPOOL.glob("*.event.json")), [])

    def test_leaves_nothing_after_an_interruption(self):
        for how, code in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with self.subTest(how=how):
                program = Program([DEMO, BUILD, "--stay"])
                program.wait_for("Enter ends it.")
                folder = self.folder_of(program.out)
                self.assertTrue(processes_of(str(folder)))
                self.assertEqual(program.stop(how), code)
                self.check_nothing_is_left(folder)

    def test_leaves_nothing_when_it_is_interrupted_in_the_middle_of_a_step(self):
        for heading in ("1. A bus and the central service", "2. A module that watches this machine",
                        "3. The other road: a spool file"):
            with self.subTest(heading=heading):
                program = Program([DEMO, BUILD])
                program.wait_for(heading)
                program.wait_for("here in /tmp/eventlist-demo-")
                folder = self.folder_of(program.out)
                self.assertEqual(program.stop(signal.SIGINT), 130)
                self.assertNotIn("4. ", program.out)
                self.check_nothing_is_left(folder)

    def test_ends_with_an_error_and_leaves_nothing_when_a_step_fails(self):
        with tempfile.TemporaryDirectory() as broken:
            # The same build, but for a provider that cannot be started.
            for name in ("tools", "service", "texts", "CMakeCache.txt"):
                os.symlink(BUILD / name, Path(broken) / name)
            (Path(broken) / "examples").mkdir()
            for name in ("machinewatch", "panel", "emergency_event"):
                os.symlink(BUILD / "examples" / name, Path(broken) / "examples" / name)
            shutil.copy("/bin/false", Path(broken) / "examples" / "pump_provider")
            environment = dict(os.environ, DEMO_DEADLINE_S="3")
            done = subprocess.run([DEMO, broken], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                  check=False, timeout=200, stdin=subprocess.DEVNULL, env=environment,
                                  preexec_fn=die_with_parent)
        self.assertEqual(done.returncode, 1)
        self.assertIn("demo: waited in vain: the provider is on the bus", done.stderr)
        self.assertNotIn("Nothing was left running.", done.stdout)
        self.check_nothing_is_left(self.folder_of(done.stdout))

    def test_refuses_a_folder_without_a_build(self):
        done = subprocess.run([DEMO, "/"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("./run", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
