"""What the central service does when it, the bus or its database fails."""

import os
import random
import signal
import sqlite3
import subprocess
import unittest

from service_harness import (BUS_NAME, IS_CAMPAIGN, Client, ServiceTest, SignalRecorder, as_bytes, spool_entry,
                             wait_for)


class CommandLine(ServiceTest):
    def run_service(self, *arguments):
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.bus.address)
        return subprocess.run(arguments, env=environment, capture_output=True, timeout=30)

    def test_help_and_version_are_printed(self):
        program = self.service.command()[0]
        help_text = self.run_service(program, "--help")
        self.assertEqual(help_text.returncode, 0)
        for option in ["--database", "--spool", "--texts", "--max-rows", "--version"]:
            self.assertIn(option, help_text.stdout.decode())
        version = self.run_service(program, "--version")
        self.assertEqual((version.returncode, version.stdout), (0, b"eventlistd 1.0.0\n"))

    def test_wrong_arguments_are_refused(self):
        program = self.service.command()[0]
        for arguments in [["--nonsense"], ["--max-rows", "0"], ["--max-rows", "many"], ["extra"],
                          ["--database"]]:
            result = self.run_service(program, *arguments)
            self.assertEqual(result.returncode, 1, arguments)
            self.assertTrue(result.stderr.startswith(b"eventlistd: "), result.stderr)

    def test_a_second_one_cannot_have_the_name_nor_the_database(self):
        other = os.path.join(self.folder, "other.sqlite")
        command = self.service.command()
        command[command.index(self.service.database)] = other
        result = self.run_service(*command)
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"is taken", result.stderr)
        result = self.run_service(*self.service.command())
        self.assertEqual(result.returncode, 4)
        self.client.log_event()
        self.assertEqual(len(self.client.descriptions()), 1)

    def test_sigterm_and_sigint_end_it_with_everything_stored(self):
        for number, wanted in enumerate([signal.SIGTERM, signal.SIGINT]):
            self.client.log_event(description=str(number))
            self.client.connection.get_name_owner(BUS_NAME)
            self.client.alarm_state()
            os.kill(self.service.process_id(), wanted)
            self.assertEqual(self.service.wait_end(), 0)
            self.service.start()
        self.assertEqual(self.client.descriptions(), ["0", "1"])


class Kills(ServiceTest):
    """What a query has shown once is committed: it must be shown by every later one, under its number."""

    def rows_from(self, first):
        return [(int(row["EventlistId"]), int(row["Description"])) for row in
                self.client.part_by_id(first, 2 ** 62, modules=["kills"], number=20000, oldest_first=True,
                                       columns=["EventlistId", "Description"]).rows]

    def send(self, first, count):
        for number in range(first, first + count):
            self.client.log_event(description=str(number), module="kills")
        return first + count

    def test_nothing_committed_is_lost_or_doubled_by_kills_in_the_middle_of_traffic(self):
        kills = 1000 if IS_CAMPAIGN else 20
        rounds = random.Random(3)
        number = 0
        seen = []
        for _ in range(kills):
            number = self.send(number, rounds.randrange(50, 400))
            known = len(seen)
            begin = seen[max(0, known - 1000)][0] if seen else 0
            rows = self.rows_from(begin)
            self.assertEqual(rows[:len(seen[max(0, known - 1000):])], seen[max(0, known - 1000):])
            seen[max(0, known - 1000):] = rows
            # More on the way while it dies.
            number = self.send(number, rounds.randrange(0, 300))
            self.client.connection.flush()
            self.service.kill()
            self.service.start()
        stored, first = [], 0
        while rows := self.rows_from(first):
            stored += rows
            first = rows[-1][0] + 1
        self.assertEqual(stored[:len(seen)], seen)
        for column in zip(*stored):
            self.assertEqual(list(column), sorted(set(column)))
        print("%d kills: %d events sent, %d in the list, %d were seen before a kill and all are there, once"
              % (kills, number, len(stored), len(seen)))


class BusFailures(ServiceTest):
    def test_it_comes_back_after_restarts_of_the_daemon(self):
        for times in range(2, 6):
            self.client.log_event(description=str(times))
            self.client.descriptions()
            self.bus.kill()
            self.bus.start()
            self.service.wait_ready(times)
            self.client.close()
            self.client = Client(self.bus)
        self.assertEqual(self.client.descriptions(), ["2", "3", "4", "5"])
        recorder = SignalRecorder(self.bus)
        self.client.log_event(description="6")
        recorder.wait_for(lambda signals: "changedEventlist" in recorder.members(), "signal")
        self.client.register_hash("ab")
        self.client.log_event(icon="icon", source_hashes="ab")
        recorder.wait_for(lambda signals: "availableEventIcon" in recorder.members(), "icon")
        self.assertEqual(recorder.values("availableEventIcon"), [["icon"]])
        recorder.close()

    def test_spool_files_are_taken_without_a_bus(self):
        self.bus.kill()
        self.write_spool("a.event.json", as_bytes(spool_entry(Description="without a bus")))
        wait_for(lambda: not self.spool_files(), "the file taken")
        self.bus.start()
        self.service.wait_ready(2)
        self.client.close()
        self.client = Client(self.bus)
        wait_for(lambda: self.client.descriptions() == ["without a bus"], "the event")

    def test_it_waits_for_a_bus_that_comes_later(self):
        self.service.stop()
        self.bus.kill()
        self.service.launch()
        wait_for(lambda: any("Cannot be reached" in line for line in self.service.lines), "warning")
        self.bus.start()
        self.service.wait_ready(1)


class DatabaseFailures(ServiceTest):
    def faults(self):
        return [(row["EventId"], row["State"]) for row in
                self.client.part(second=["GlobalFaultTexts/DataBaseFault"]).rows]

    def damage(self, how):
        with open(self.service.database, "r+b") as file:
            how(file)

    def assert_put_aside(self, last_id):
        folder = os.path.dirname(self.service.database)
        aside = [name for name in os.listdir(folder) if ".damaged-" in name]
        self.assertTrue(aside)
        self.assertEqual(self.faults(), [("GlobalFaultTexts/DataBaseFault", "2"),
                                         ("GlobalFaultTexts/DataBaseFault", "1")])
        self.client.log_event(description="new")
        self.assertEqual(self.client.descriptions(), ["new"])
        ids = [int(value) for value in self.client.complete().column("EventlistId")]
        self.assertGreater(min(ids), last_id)
        self.assertTrue(any("put aside" in line for line in self.service.lines))
        state = self.client.alarm_state()
        self.assertEqual((state["FaultInAlarmlist"], state["ActiveFaultInAlarmlist"]), (1, 0))

    def test_a_damaged_file_is_put_aside_and_said_so(self):
        damages = {
            "no database": lambda file: (file.truncate(0), file.write(b"not a database" * 1000)),
            "header": lambda file: (file.seek(20), file.write(b"\xff" * 80)),
            "pages": lambda file: [(file.seek(page * 4096), file.write(b"\xa5" * 4096))
                                   for page in range(1, 12)],
            "cut": lambda file: file.truncate(9000)}
        for name, how in damages.items():
            with self.subTest(name):
                for number in range(100):
                    self.client.log_event(description=str(number) + "x" * 300)
                last = int(self.client.complete().rows[0]["EventlistId"])
                self.assertEqual(self.service.stop(), 0)
                self.damage(how)
                self.service.start()
                self.assert_put_aside(last)
                # A new start for the next damage.
                self.service.stop()
                for file in os.listdir(os.path.dirname(self.service.database)):
                    os.remove(os.path.join(os.path.dirname(self.service.database), file))
                self.service.start()

    def damage_at_random(self, rounds):
        size = os.path.getsize(self.service.database)
        with open(self.service.database, "r+b") as file:
            if rounds.random() < 0.2:
                file.truncate(rounds.randrange(size))
                return
            for _ in range(rounds.choice((1, 10, 100))):
                file.seek(rounds.randrange(size))
                file.write(rounds.randbytes(rounds.choice((1, 16, 4096))))

    def test_it_starts_with_any_damage_and_says_so_or_has_everything(self):
        rounds = random.Random(11)
        aside = 0
        for number in range(500 if IS_CAMPAIGN else 8):
            for event in range(60):
                self.client.log_event(description="%d %d %s" % (number, event, "x" * 300), module="old")
            before = self.client.complete().column("EventlistId")
            self.assertEqual(self.service.stop(), 0)
            self.damage_at_random(rounds)
            self.service.start()
            self.client.log_event(description=str(number))
            wait_for(lambda: str(number) in self.client.descriptions(), "the new event")
            after = self.client.complete().column("EventlistId")
            if any("put aside as" in line for line in self.service.lines):
                aside += 1
                self.assertGreater(min(map(int, after)), int(before[0]))
                self.assertEqual(len(self.faults()), 2)
            else:
                self.assertEqual(after[-len(before):], before)
            self.service.stop()
            folder = os.path.dirname(self.service.database)
            for name in os.listdir(folder):
                os.remove(os.path.join(folder, name))
            self.service.start()
        print("damaged files: %d put aside and said so, %d harmless" % (aside, number + 1 - aside))
        self.assertGreater(aside, 0)

    def test_only_the_last_damaged_files_are_kept(self):
        for _ in range(6):
            self.service.stop()
            self.damage(lambda file: (file.truncate(0), file.write(b"not a database" * 1000)))
            self.service.start()
        folder = os.path.dirname(self.service.database)
        aside = [name for name in os.listdir(folder)
                 if ".damaged-" in name and not name.endswith(("-wal", "-shm"))]
        self.assertEqual(len(aside), 3)

    def test_a_file_of_somebody_else_is_put_aside_whole(self):
        self.service.stop()
        for name in os.listdir(os.path.dirname(self.service.database)):
            os.remove(os.path.join(os.path.dirname(self.service.database), name))
        foreign = sqlite3.connect(self.service.database)
        foreign.execute("CREATE TABLE event(mine)")
        foreign.execute("INSERT INTO event VALUES('precious')")
        foreign.commit()
        foreign.close()
        self.service.start()
        folder = os.path.dirname(self.service.database)
        aside = [name for name in os.listdir(folder)
                 if ".damaged-" in name and not name.endswith(("-wal", "-shm"))]
        kept = sqlite3.connect(os.path.join(folder, aside[0]))
        self.assertEqual(kept.execute("SELECT mine FROM event").fetchall(), [("precious",)])
        kept.close()


class FullDisk(ServiceTest):
    """The file size limit of the process stands in for a full disk: it needs no rights."""

    def start_limited(self, blocks):
        command = self.service.command()
        script = "trap '' XFSZ; ulimit -S -f %d; exec \"$@\"" % blocks
        self.service.command = lambda *arguments: ["/bin/bash", "-c", script, "bash", *command]
        self.service.start()
        del self.service.command

    def test_events_wait_while_nothing_can_be_written_and_spool_files_stay(self):
        self.service.stop()
        self.start_limited(400)
        for number in range(300):
            self.client.log_event(description=str(number) + "x" * 3000)
        wait_for(lambda: any("takes nothing" in line for line in self.service.lines), "the warning")
        self.write_spool("a.event.json", as_bytes(spool_entry(ModuleName="spooled")))
        self.assertTrue(self.service.is_running())
        subprocess.run(["prlimit", "--pid", str(self.service.process_id()),
                        "--fsize=unlimited:unlimited"], check=True)
        wait_for(lambda: any("works again" in line for line in self.service.lines), "recovery")
        texts = [text.rstrip("x") for text in self.client.descriptions()]
        self.assertEqual(texts, [str(number) for number in range(300)])
        wait_for(lambda: self.client.descriptions("spooled"), "the spool file")
        wait_for(lambda: len(self.client.part(second=["GlobalFaultTexts/DataBaseFault"]).rows) == 2,
                 "the fault, and its end")


if __name__ == "__main__":
    unittest.main()
