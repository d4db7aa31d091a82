"""The service on a disk that is really full: it starts, waits, and goes on when there is room.

The disk is a small one in memory, in mounts of this process alone.
"""

import os
import subprocess
import sys
import unittest

from service_harness import ServiceTest, as_bytes, spool_entry, wait_for

OWN_MOUNTS = "EVENTLISTHANDLER_TEST_OWN_MOUNTS"


class FullDisk(ServiceTest):
    def setUp(self):
        super().setUp()
        self.assertEqual(self.service.stop(), 0)
        self.disk = os.path.dirname(self.service.database)
        for name in os.listdir(self.disk):
            os.remove(os.path.join(self.disk, name))
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", self.disk], check=True)
        self.addCleanup(subprocess.run, ["umount", self.disk], check=True)
        self.addCleanup(lambda: self.service.kill() if self.service.is_running() else None)

    def fill(self):
        with open(os.path.join(self.disk, "ballast"), "wb", buffering=0) as ballast:
            try:
                while ballast.write(b"x" * 4096) == 4096:
                    pass
            except OSError:
                pass

    def store(self, *descriptions):
        self.service.start()
        for description in descriptions:
            self.client.log_event(description=description)
        self.assertEqual(self.client.descriptions(), list(descriptions))

    def start_on_the_full_disk(self, expected, faults=2):
        """It is on the bus, keeps what comes, and stores it when there is room; what was there is still there."""
        self.fill()
        self.service.start()
        self.client.log_event(description="waits")
        self.client.connection.get_name_owner("org.freedesktop.DBus")
        self.write_spool("a.event.json", as_bytes(spool_entry(ModuleName="spooled", Description="waits too")))
        wait_for(lambda: any("events wait in memory" in line for line in self.service.lines), "the warning")
        self.assertEqual(self.spool_files(), ["a.event.json"])
        os.remove(os.path.join(self.disk, "ballast"))
        wait_for(lambda: any("works again" in line for line in self.service.lines), "recovery")
        wait_for(lambda: self.client.descriptions("spooled") == ["waits too"], "the spool file")
        self.assertEqual(self.client.descriptions(), [*expected, "waits"])
        rows = self.client.part(second=["GlobalFaultTexts/DataBaseFault"]).rows
        self.assertEqual(len(rows), faults)
        self.assertEqual(self.service.stop(), 0)

    def test_it_starts_after_an_orderly_end(self):
        self.store("first", "second")
        self.service.stop()
        self.start_on_the_full_disk(["first", "second"])

    def test_it_starts_after_a_kill(self):
        self.store("first", "second")
        self.service.kill()
        self.start_on_the_full_disk(["first", "second"])

    def test_it_starts_for_the_first_time(self):
        self.start_on_the_full_disk([])

    def test_it_starts_with_a_damaged_file_and_goes_on_counting(self):
        self.store("first", "second")
        last = int(self.client.complete().rows[0]["EventlistId"])
        self.service.stop()
        with open(self.service.database, "r+b") as file:
            file.write(b"no database" * 100)
        self.start_on_the_full_disk([], faults=4)
        self.service.start()
        self.assertGreater(min(map(int, self.client.complete().column("EventlistId"))), last)
        self.assertTrue([name for name in os.listdir(self.disk) if ".damaged-" in name])


def main():
    if os.environ.get(OWN_MOUNTS) == "1":
        unittest.main()
    probe = subprocess.run(["unshare", "-rm", "mount", "-t", "tmpfs", "tmpfs", "/mnt"], capture_output=True, check=False)
    if probe.returncode != 0:
        print("SKIP: a full disk needs mounts of its own:", probe.stderr.decode().strip())
        sys.exit(77)
    sys.exit(subprocess.run(["unshare", "-rm", sys.executable, *sys.argv], env=dict(os.environ, **{OWN_MOUNTS: "1"}),
                            check=False).returncode)


main()
