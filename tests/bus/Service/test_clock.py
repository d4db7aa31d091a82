"""The clock of the device is set, forth and back, while the central service runs and while it does not."""

import os
import subprocess
import sys
import unittest

from service_harness import ServiceTest, wait_for

LIBRARIES = subprocess.run(["dpkg-query", "--listfiles", "libfaketime"], capture_output=True, text=True,
                           check=False).stdout.split()
FAKE_CLOCK = next((path for path in LIBRARIES if path.endswith("/libfaketimeMT.so.1")), None)
FUTURE = "@2031-05-06 07:08:09"
PAST = "@2021-02-03 04:05:06"


class Clock(ServiceTest):
    def setUp(self):
        super().setUp()
        self.service.kill()
        self.clock = os.path.join(self.folder, "clock")
        # Only the time of day: what counts milliseconds since the start is never set.
        self.service.environment = {"LD_PRELOAD": FAKE_CLOCK, "FAKETIME_TIMESTAMP_FILE": self.clock,
                                    "FAKETIME_NO_CACHE": "1", "FAKETIME_DONT_FAKE_MONOTONIC": "1"}

    def start_service(self):
        self.service.start()
        # What libfaketime leaves behind of a process that is killed.
        for name in ("faketime_shm_%d", "sem.faketime_sem_%d"):
            path = os.path.join("/dev/shm", name % self.service.process_id())
            self.addCleanup(lambda path=path: os.path.exists(path) and os.remove(path))

    def set_clock(self, time):
        with open(self.clock + ".new", "w", encoding="ascii") as file:
            file.write(time + "\n")
        os.rename(self.clock + ".new", self.clock)

    def own_times(self):
        """When the service was started, as it tells itself, the oldest first."""
        rows = self.client.part(modules=["EventlistHandler"]).rows
        return [row["DateTimeMsUTC"][:10] for row in sorted(rows, key=lambda row: int(row["EventlistId"]))]

    def log(self, number):
        self.client.log_event(user=str(number), timestamp="2026-03-14T09:26:53.589+01:00")

    def users(self):
        """In the order of their numbers in the list."""
        return [row["User"] for row in self.client.part_by_id(0, 2 ** 62, modules=["pump"], oldest_first=True).rows]

    def test_nothing_stands_still_or_is_lost_when_the_clock_is_set_back(self):
        self.set_clock(FUTURE)
        self.start_service()
        self.client.log_event(type_=0, state=1, alarm_id="hot")
        self.log(1)
        wait_for(lambda: self.users() == ["", "1"], "stored in the future")
        self.set_clock(PAST)
        for number in range(2, 200):
            self.log(number)
            if number % 20 == 0:
                # Stored now, and not when the old time has come again.
                wait_for(lambda number=number: self.users()[-1] == str(number), "stored in the past")
        wait_for(lambda: self.users() == [""] + [str(number) for number in range(1, 200)], "all stored, in order")
        self.client.acknowledge(["hot"], "anna")
        wait_for(lambda: self.client.alarms().rows[0]["AcknowledgedBy"] == "anna", "acknowledged in the past")

    def test_it_starts_before_the_time_of_its_last_event(self):
        self.set_clock(FUTURE)
        self.start_service()
        self.client.log_event(type_=0, state=1, alarm_id="hot")
        wait_for(lambda: len(self.users()) == 1, "stored in the future")
        self.assertEqual(self.service.stop(), 0)

        self.set_clock(PAST)
        self.start_service()
        self.log(1)
        wait_for(lambda: self.users() == ["", "1"], "in the order in which they came")
        self.assertEqual(self.own_times()[-2:], ["2031-05-06", "2021-02-03"])
        self.assertEqual([row["AlarmID"] for row in self.client.alarms().rows], ["hot"])
        self.client.log_event(type_=0, state=2, alarm_id="hot")
        self.client.acknowledge(["hot"], "anna")
        wait_for(lambda: not self.client.alarms().rows, "the alarm has gone")


if __name__ == "__main__":
    if FAKE_CLOCK is None:
        print("skipped: needs the package libfaketime")
        sys.exit(77)
    unittest.main()
